#include "faces/window_contrasts.h"

namespace qorocv {

namespace {

// Modulo 2^32, which the squares of a wide picture need.
void sumToTheLeft(const ColumnSums& columns, ColumnSums& left) {
  std::uint32_t pixels = 0;
  std::uint32_t squares = 0;
  for (std::size_t x = 0; x < columns.pixels.size(); ++x) {
    pixels += static_cast<std::uint32_t>(columns.pixels[x]);
    squares += static_cast<std::uint32_t>(columns.squares[x]);
    left.pixels[x + 1] = static_cast<std::int32_t>(pixels);
    left.squares[x + 1] = static_cast<std::int32_t>(squares);
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
  sumToTheLeft(columns_, left_);
  kernels_.toFactors(left_, scale_.step, scale_.windows, even_.data(), odd_.data());
  return {even_.data(), odd_.data()};
}

} // namespace qorocv
