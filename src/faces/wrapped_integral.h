// The integral image that features are read from.
#pragma once

#include "faces/cascade_kernels.h"

#include <opencv2/core/mat.hpp>

#include <cstddef>
#include <cstdint>

namespace qorocv {

/// Sums of the pixels above and to the left of each point, modulo 2^16. A sum that stays within 16
/// bits comes out exactly all the same, and twice as many fit into a vector register.
///
/// At step 2 only every second column starts a window. There the even columns of a row stand side
/// by side, and the odd ones after them: neighbouring windows then read neighbouring numbers, as
/// they do at step 1.
class WrappedIntegral {
public:
  /// Of an 8-bit picture of one channel.
  WrappedIntegral(const cv::Mat& picture, int step, const CascadeKernels& kernels);

  /// Where the point (x, y) lies, counted from the point (0, 0). For an x that a window starts at,
  /// the points of the window lie at the same distances from it.
  std::ptrdiff_t offset(int x, int y) const {
    return y * stride_ + (isSplit_ ? (x % 2) * half_ + x / 2 : x);
  }

  /// The corner of a window in the row of points `y`, windows counted from the left. A group of
  /// windows that begins at the last one of all can be read: behind the points lie numbers that
  /// tell nothing.
  const std::uint16_t* window(int y, int number) const {
    return sums_.ptr<std::uint16_t>(y) + number;
  }

private:
  bool isSplit_;
  std::ptrdiff_t stride_;
  std::ptrdiff_t half_; // where the odd columns begin
  cv::Mat sums_;        // and some more to read behind the last row
};

} // namespace qorocv
