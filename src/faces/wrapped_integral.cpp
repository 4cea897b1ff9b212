#include "faces/wrapped_integral.h"

namespace qorocv {

namespace {

std::uint16_t wrapped(unsigned sum) {
  return static_cast<std::uint16_t>(sum);
}

void sumRow(const uchar* pixels, int width, const std::uint16_t* above, std::uint16_t* sums) {
  unsigned sum = 0;
  for (int x = 0; x < width; ++x) {
    sums[x] = wrapped(above[x] + sum);
    sum += pixels[x];
  }
  sums[width] = wrapped(above[width] + sum);
}

// The same with even and odd columns apart.
void sumSplitRow(const uchar* pixels, int width, const std::uint16_t* above, std::uint16_t* sums,
                 std::ptrdiff_t half) {
  unsigned sum = 0;
  const int pairs = width / 2;
  for (int pair = 0; pair < pairs; ++pair) {
    const unsigned even = *pixels++;
    const unsigned odd = *pixels++;
    sums[pair] = wrapped(above[pair] + sum);
    sums[half + pair] = wrapped(above[half + pair] + sum + even);
    sum += even + odd;
  }
  sums[pairs] = wrapped(above[pairs] + sum);
  if (width % 2 != 0) {
    sums[half + pairs] = wrapped(above[half + pairs] + sum + *pixels);
  }
}

} // namespace

WrappedIntegral::WrappedIntegral(const cv::Mat& picture, int step)
    : isSplit_(step == 2), half_((picture.cols + 2) / 2),
      stride_(isSplit_ ? 2 * half_ : picture.cols + 1),
      sums_(static_cast<std::size_t>(stride_ * (picture.rows + 1) + kReadable)) {
  for (int y = 0; y < picture.rows; ++y) {
    const std::uint16_t* const above = sums_.data() + y * stride_;
    std::uint16_t* const sums = sums_.data() + (y + 1) * stride_;
    if (isSplit_) {
      sumSplitRow(picture.ptr(y), picture.cols, above, sums, half_);
    } else {
      sumRow(picture.ptr(y), picture.cols, above, sums);
    }
  }
}

} // namespace qorocv
