// The person cut out of a photograph.
#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace qorfaces {

/// The picture (8-bit BGR) with the person mask, stretched to it, for its alpha: BGRA, transparent
/// where there is no person. `mask` holds QOROCV460_MASK_BYTES.
cv::Mat cutOut(const cv::Mat& picture, const std::vector<unsigned char>& mask);

} // namespace qorfaces
