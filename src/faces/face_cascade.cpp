#include "faces/face_cascade.h"

namespace qorocv {

namespace {

std::vector<cv::Rect> detectWith(cv::CascadeClassifier classifier, const cv::Mat& grey) {
  constexpr double scaleFactor = 1.1;
  constexpr int minNeighbours = 3;

  std::vector<cv::Rect> faces;
  classifier.detectMultiScale(grey, faces, scaleFactor, minNeighbours, 0, cv::Size(), cv::Size());
  return faces;
}

} // namespace

FaceCascade FaceCascade::read(const cv::FileNode& cascade) {
  FaceCascade read;
  read.engine_ = makeCascadeEngine(cascade);
  if (!read.engine_) {
    read.classifier_.read(cascade);
  }
  return read;
}

std::vector<cv::Rect> FaceCascade::detect(const cv::Mat& grey) const {
  return engine_ ? engine_->detect(grey, bestInstructionSet()) : detectWith(classifier_, grey);
}

} // namespace qorocv
