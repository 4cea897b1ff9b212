#include "faces/wrapped_integral.h"

namespace qorocv {

namespace {

constexpr int kCacheLine = 32; // numbers in a line of the processor's cache

// A group of windows that begins at the last one of all reads this far behind its points.
constexpr int kReadBehind = 64;

int divideUp(int number, int divisor) {
  return (number + divisor - 1) / divisor;
}

// Rows are as long as an odd number of lines: with many powers of two in that, the points of a
// window would fall into the same few places of the cache and drive one another out.
int strideFor(int points) {
  return (divideUp(points, kCacheLine) | 1) * kCacheLine;
}

} // namespace

WrappedIntegral::WrappedIntegral(const cv::Mat& picture, int step, const CascadeKernels& kernels)
    : isSplit_(step == 2) {
  const int stride = strideFor(picture.cols + 2);
  stride_ = stride;
  half_ = stride / 2;
  sums_.create(picture.rows + 1 + divideUp(kReadBehind, stride), stride, CV_16UC1);
  sums_.row(0).setTo(0);
  for (int y = 0; y < picture.rows; ++y) {
    const auto* const above = sums_.ptr<std::uint16_t>(y);
    auto* const sums = sums_.ptr<std::uint16_t>(y + 1);
    if (isSplit_) {
      kernels.sumSplitRow(picture.ptr(y), picture.cols, above, sums, half_);
    } else {
      kernels.sumRow(picture.ptr(y), picture.cols, above, sums);
    }
  }
}

} // namespace qorocv
