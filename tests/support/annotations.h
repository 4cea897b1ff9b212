// The colours in which exports draw what they found.
#pragma once

#include <opencv2/core.hpp>

namespace qorocv::testing {

const cv::Scalar kGreen(0, 255, 0);       // boxes
const cv::Scalar kLightBlue(255, 200, 0); // landmarks of the cascade's faces
const cv::Scalar kRed(0, 0, 255);         // landmarks of the networks' faces

/// How many pixels of a picture have exactly this colour.
inline int pixelsOf(const cv::Mat& picture, const cv::Scalar& colour) {
  cv::Mat mask;
  cv::inRange(picture, colour, colour, mask);
  return cv::countNonZero(mask);
}

} // namespace qorocv::testing
