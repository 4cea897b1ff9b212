#include "faces/lbf_landmarker.h"

#include "faces/lbf_fitter.h"
#include "faces/lbf_surroundings.h"
#include "faces/shared_lbf_model.h"

#include <algorithm>
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

// As OpenCV fits, but for a box that brings it down, which is a failed fit. The boxes before it are
// fitted all the same: what throws for them must throw.
std::optional<std::vector<LandmarkSet>> fitByOpenCv(cv::face::Facemark& opencv,
                                                    const cv::Mat& picture,
                                                    const std::vector<cv::Rect>& boxes) {
  const auto unreadable = std::find_if(boxes.begin(), boxes.end(), [&](const cv::Rect& box) {
    return leavesNothingToRead(box, picture.size());
  });
  const std::vector<cv::Rect> readable(boxes.begin(), unreadable);
  std::vector<LandmarkSet> landmarks;
  const bool fitted = opencv.fit(picture, readable, landmarks);
  if (!fitted || unreadable != boxes.end()) {
    return std::nullopt;
  }
  return landmarks;
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
  if (boxes.empty()) {
    return false;
  }
  std::vector<cv::Rect> list;
  boxes.copyTo(list);
  auto faces = model_ ? fitLbf(*model_, picture.getMat(), list)
                      : fitByOpenCv(*opencv_, picture.getMat(), list);
  if (!faces) {
    return false;
  }
  CV_Assert(landmarks.kind() == cv::_InputArray::STD_VECTOR_VECTOR && landmarks.type() == CV_32FC2);
  *static_cast<std::vector<LandmarkSet>*>(landmarks.getObj()) = std::move(*faces);
  return true;
}

} // namespace qorocv
