// Pictures made smaller, as OpenCV does it for its cascade.
#pragma once

#include "faces/cascade_kernels.h"

#include <opencv2/core/mat.hpp>

namespace qorocv {

/// Fills `smaller` with the picture at that size: the bits of cv::resize with INTER_LINEAR_EXACT.
/// Both have 8 bits and one channel; the picture is at least 16 columns and two rows large.
void resizeExactly(const cv::Mat& picture, const CascadeKernels& kernels, cv::Mat& smaller);

} // namespace qorocv
