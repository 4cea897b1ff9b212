#include "faces/exact_resize.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qorocv {

namespace {

// Between which two pixels in a row or column a pixel of the smaller picture lies.
struct Taps {
  int first;
  int weightOfSecond; // of kBlendUnit
};

// OpenCV's own steps. Beyond the outermost pixels it takes these alone.
Taps tapsAt(int position, double scale, int pixels) {
  const double place = scale * (position + 0.5) - 0.5;
  const int first = cvFloor(place);
  if (first < 0) {
    return {0, 0};
  }
  if (first >= pixels - 1) {
    return {pixels - 2, kBlendUnit};
  }
  return {first, cvRound((place - first) * kBlendUnit)};
}

double scaleOf(int from, int to) {
  return 1. / (static_cast<double>(to) / from);
}

// Two loads of 16 bytes, from two places in a row, are to hold what eight columns are blended of,
// the first load for the first four of them.
void planLoads(ColumnBlend& blend, int pixels) {
  constexpr int kLoaded = 16;
  blend.takesTwoLoads = true;
  blend.shuffles.fill(ColumnBlend::kNothing);
  for (std::size_t half = 0; half < 2; ++half) {
    const int from = std::min(blend.firsts[half * 4], pixels - kLoaded);
    blend.loads[half] = from;
    for (std::size_t i = half * 4; i < half * 4 + 4; ++i) {
      const int first = blend.firsts[i] - from;
      blend.takesTwoLoads = blend.takesTwoLoads && first + 1 < kLoaded;
      blend.shuffles[half * kLoaded + i * 2] = static_cast<std::uint8_t>(first);
      blend.shuffles[half * kLoaded + i * 2 + 1] = static_cast<std::uint8_t>(first + 1);
    }
  }
}

std::vector<ColumnBlend> columnBlends(int from, int to) {
  const double scale = scaleOf(from, to);
  std::vector<ColumnBlend> blends(static_cast<std::size_t>(to + 7) / 8);
  for (std::size_t i = 0; i < blends.size() * 8; ++i) {
    // Those behind the last column are blended, too, and not used.
    const Taps taps = tapsAt(std::min(static_cast<int>(i), to - 1), scale, from);
    ColumnBlend& blend = blends[i / 8];
    blend.firsts[i % 8] = taps.first;
    blend.weights[i % 8 * 2] = static_cast<std::int16_t>(kBlendUnit - taps.weightOfSecond);
    blend.weights[i % 8 * 2 + 1] = static_cast<std::int16_t>(taps.weightOfSecond);
  }
  for (ColumnBlend& blend : blends) {
    planLoads(blend, from);
  }
  return blends;
}

// A row of the picture with its columns blended; the same row is often needed twice.
struct BlendedRow {
  int number = -1;
  std::vector<std::int16_t> columns;
};

} // namespace

void resizeExactly(const cv::Mat& picture, const CascadeKernels& kernels, cv::Mat& smaller) {
  if (smaller.size() == picture.size()) {
    picture.copyTo(smaller);
    return;
  }
  const std::vector<ColumnBlend> blends = columnBlends(picture.cols, smaller.cols);
  BlendedRow upper;
  BlendedRow lower;
  upper.columns.resize(blends.size() * 8);
  lower.columns.resize(blends.size() * 8);
  const auto fill = [&](BlendedRow& row, int number) {
    if (row.number != number) {
      kernels.blendColumns(blends, picture.ptr(number), row.columns.data());
      row.number = number;
    }
  };
  const double scale = scaleOf(picture.rows, smaller.rows);
  for (int y = 0; y < smaller.rows; ++y) {
    const Taps taps = tapsAt(y, scale, picture.rows);
    if (lower.number == taps.first) {
      std::swap(upper, lower);
    }
    fill(upper, taps.first);
    fill(lower, taps.first + 1);
    kernels.blendRows(upper.columns.data(), lower.columns.data(), taps.weightOfSecond, smaller.cols,
                      smaller.ptr(y));
  }
}

} // namespace qorocv
