#include "heads/head_centre.h"

#include "arithmetic/processor_arithmetic.h"

namespace qorocv {

cv::Point2f headCentre(const LandmarkSet& landmarks, float headTop) {
  const cv::Point2f& noseBridge = landmarks[kNoseBridge];
  const cv::Point2f& chin = landmarks[kChin];
  const float top = noseBridge.y - headTop;
  const int centre = truncateToInt((chin.y - top) * 0.5F + top);
  return {noseBridge.x, static_cast<float>(centre)};
}

} // namespace qorocv
