#include "faces/landmark_fitting.h"

namespace qorocv {

std::optional<std::vector<LandmarkSet>> fitLandmarks(const Landmarker& landmarker,
                                                     const cv::Mat& picture,
                                                     const std::vector<cv::Rect>& boxes) {
  std::vector<LandmarkSet> landmarks;
  if (!landmarker->fit(picture, boxes, landmarks)) {
    return std::nullopt;
  }
  return landmarks;
}

} // namespace qorocv
