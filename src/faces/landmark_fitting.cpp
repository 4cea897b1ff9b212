#include "faces/landmark_fitting.h"

#include <algorithm>

namespace qorocv {

namespace {

// One side of the crop that the fitter makes, by its own arithmetic: half the length is an integer
// division, and the clipped end is the last pixel, not one past it. Negative outside the picture.
double cropLength(int start, int length, int pictureLength) {
  const int half = length / 2;
  const double from = std::max(0., static_cast<double>(start) - half);
  const double to = std::min(pictureLength - 1., static_cast<double>(start) + length + half);
  return to - from;
}

} // namespace

bool leavesNothingToRead(const cv::Rect& box, const cv::Size& picture) {
  if (box.width <= 0) {
    return false;
  }
  const double width = cropLength(box.x, box.width, picture.width);
  const double height = cropLength(box.y, box.height, picture.height);
  return width >= 0 && height >= 0 && (width == 0 || height == 0);
}

std::optional<std::vector<LandmarkSet>> fitLandmarks(const Landmarker& landmarker,
                                                     const cv::Mat& picture,
                                                     const std::vector<cv::Rect>& boxes) {
  const auto unfittable = std::find_if(boxes.begin(), boxes.end(), [&](const cv::Rect& box) {
    return leavesNothingToRead(box, picture.size());
  });
  // The boxes before an unfittable one are fitted all the same: what throws for them must throw.
  const std::vector<cv::Rect> fittable(boxes.begin(), unfittable);
  std::vector<LandmarkSet> landmarks;
  const bool fitted = landmarker->fit(picture, fittable, landmarks);
  if (!fitted || unfittable != boxes.end()) {
    return std::nullopt;
  }
  return landmarks;
}

} // namespace qorocv
