#include "faces/window_contrasts.h"

namespace qorocv {

namespace {

// Modulo 2^32, which the squares of a wide picture need.
void sumToTheLeft(const std::vector<std::int32_t>& columns, std::vector<std::int32_t>& left) {
  std::uint32_t sum = 0;
  for (std::size_t x = 0; x < columns.size(); ++x) {
    sum += static_cast<std::uint32_t>(columns[x]);
    left[x + 1] = static_cast<std::int32_t>(sum);
  }
}

} // namespace

WindowContrasts::WindowContrasts(const cv::Mat& picture, const CascadeScale& scale,
                                 const CascadeKernels& kernels)
    : picture_(picture), scale_(scale), kernels_(kernels) {
  const auto columns = static_cast<std::size_t>(picture.cols);
  columns_ = {std::vector<std::int32_t>(columns), std::vector<std::int32_t>(columns)};
  left_ = {std::vector<std::int32_t>(columns + 1), std::vector<std::int32_t>(columns + 1)};
  const auto pairs = (static_cast<std::size_t>(scale.windows) + 63) / 64 * 32;
  even_.resize(pairs);
  odd_.resize(pairs);
  for (int y = 1; y <= kNormWindow; ++y) {
    kernels.addRow(columns_, picture.ptr(y));
  }
}

WindowFactors WindowContrasts::ofRow(int y) {
  for (; y_ < y; ++y_) {
    kernels_.moveRow(columns_, picture_.ptr(y_ + 1), picture_.ptr(y_ + 1 + kNormWindow));
  }
  sumToTheLeft(columns_.pixels, left_.pixels);
  sumToTheLeft(columns_.squares, left_.squares);
  kernels_.toFactors(left_, scale_.step, scale_.windows, even_.data(), odd_.data());
  return {even_.data(), odd_.data()};
}

} // namespace qorocv
