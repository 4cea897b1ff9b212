// How much contrast there is in the windows of a row.
#pragma once

#include "faces/cascade_kernels.h"
#include "faces/cascade_scales.h"
#include "faces/wrapped_integral.h"

#include <opencv2/core/mat.hpp>

#include <array>
#include <vector>

namespace qorocv {

/// The factors of the windows of one row after another. Pixels at a window's border do not count.
class WindowContrasts {
public:
  /// Starts above the first row. `picture` and its `integral` must outlive this.
  WindowContrasts(const cv::Mat& picture, const WrappedIntegral& integral,
                  const CascadeScale& scale, const CascadeKernels& kernels);

  /// The factors of the windows whose corners lie in the pixel row `y`, which is not above the one
  /// asked for before. Behind the last window they are 0 for as many as make whole units of 64.
  WindowFactors ofRow(int y);

private:
  void moveSquares(const std::uint8_t* leaving, const std::uint8_t* entering);

  const cv::Mat& picture_;
  const WrappedIntegral& integral_;
  const CascadeScale& scale_;
  const CascadeKernels& kernels_;
  const NormPoints points_;
  int y_ = 0; // the row of windows that the squares tell of
  // Sums of squares over the rows of those windows, of two columns each: from the second column of
  // the picture on, which is the first that counts in the first window, and from the third.
  std::array<std::vector<std::int32_t>, 2> pairs_;
  std::vector<float> even_;
  std::vector<float> odd_;
};

} // namespace qorocv
