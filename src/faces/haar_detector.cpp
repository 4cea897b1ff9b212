#include "faces/haar_detector.h"

#include <opencv2/imgproc.hpp>

namespace qorocv {

std::vector<cv::Rect> detectFacesHaar(cv::CascadeClassifier cascade, const cv::Mat& picture) {
  constexpr double scaleFactor = 1.1;
  constexpr int minNeighbours = 3;

  cv::Mat grey;
  cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY, 0);
  std::vector<cv::Rect> faces;
  cascade.detectMultiScale(grey, faces, scaleFactor, minNeighbours, 0, cv::Size(), cv::Size());
  return faces;
}

} // namespace qorocv
