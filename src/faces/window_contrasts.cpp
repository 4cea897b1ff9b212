#include "faces/window_contrasts.h"

#include <algorithm>

namespace qorocv {

namespace {

NormPoints normPoints(const WrappedIntegral& integral) {
  constexpr int kFirst = 1;
  constexpr int kLast = kFirst + kNormWindow;
  constexpr int kMiddle = kFirst + kNormWindow / 2;
  const auto left = [&](int y) { return integral.offset(kFirst, y); };
  const auto right = [&](int y) { return integral.offset(kLast, y); };
  return {{left(kFirst), left(kMiddle), left(kLast)},
          {right(kFirst), right(kMiddle), right(kLast)}};
}

} // namespace

WindowContrasts::WindowContrasts(const cv::Mat& picture, const WrappedIntegral& integral,
                                 const CascadeScale& scale, const CascadeKernels& kernels)
    : picture_(picture), integral_(integral), scale_(scale), kernels_(kernels),
      points_(normPoints(integral)) {
  const auto whole = (static_cast<std::size_t>(scale.windows) + 63) / 64 * 64;
  for (std::vector<std::int32_t>& pairs : pairs_) {
    pairs.resize(whole + kNormWindow / 2); // at step 2, where there is one for each window
  }
  even_.resize(whole / 2);
  odd_.resize(whole / 2);
  const cv::Mat nothing = cv::Mat::zeros(1, picture.cols, CV_8UC1);
  for (int y = 1; y <= kNormWindow; ++y) {
    moveSquares(nothing.ptr(), picture.ptr(y));
  }
}

void WindowContrasts::moveSquares(const std::uint8_t* leaving, const std::uint8_t* entering) {
  const int phases = scale_.step == 1 ? 2 : 1;
  for (int first = 1; first <= phases; ++first) {
    kernels_.moveSquares(pairs_[static_cast<std::size_t>(first) - 1].data(),
                         (picture_.cols - first) / 2, leaving + first, entering + first);
  }
}

WindowFactors WindowContrasts::ofRow(int y) {
  for (; y_ < y; ++y_) {
    moveSquares(picture_.ptr(y_ + 1), picture_.ptr(y_ + 1 + kNormWindow));
  }
  const std::int32_t* const evenPairs = pairs_.front().data();
  const std::int32_t* const oddPairs = scale_.step == 1 ? pairs_.back().data() : evenPairs;
  for (int first = 0; first < scale_.windows; first += kGroup) {
    const int pair = first * scale_.step / 2;
    kernels_.toFactors(integral_.window(y, first), points_, evenPairs + pair, oddPairs + pair,
                       even_.data() + first / 2, odd_.data() + first / 2);
  }
  const int odds = scale_.windows / 2;
  std::fill(even_.begin() + (scale_.windows - odds), even_.end(), 0.F);
  std::fill(odd_.begin() + odds, odd_.end(), 0.F);
  return {even_.data(), odd_.data()};
}

} // namespace qorocv
