#include "faces/lbf_landmarker.h"

#include "faces/lbf_fitter.h"
#include "faces/shared_lbf_model.h"

#include <optional>
#include <utility>
#include <vector>

namespace qorocv {

namespace {

cv::Ptr<cv::face::Facemark> makeQuietFacemark() {
  cv::face::FacemarkLBF::Params parameters;
  // It would report on standard output what it reads.
  parameters.verbose = false;
  return cv::face::FacemarkLBF::create(parameters);
}

} // namespace

LbfLandmarker::LbfLandmarker() : opencv_(makeQuietFacemark()) {}

void LbfLandmarker::loadModel(cv::String path) {
  model_ = sharedLbfModel(path);
  if (!model_) {
    opencv_->loadModel(path);
  }
}

bool LbfLandmarker::fit(cv::InputArray picture, cv::InputArray boxes,
                        cv::OutputArrayOfArrays landmarks) {
  if (!model_) {
    return opencv_->fit(picture, boxes, landmarks);
  }
  if (boxes.empty()) {
    return false;
  }
  std::vector<cv::Rect> list;
  boxes.copyTo(list);
  auto faces = fitLbf(*model_, picture.getMat(), list);
  if (!faces) {
    return false;
  }
  CV_Assert(landmarks.kind() == cv::_InputArray::STD_VECTOR_VECTOR && landmarks.type() == CV_32FC2);
  *static_cast<std::vector<LandmarkSet>*>(landmarks.getObj()) = std::move(*faces);
  return true;
}

} // namespace qorocv
