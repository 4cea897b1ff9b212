// How much contrast there is in the windows of a row.
#pragma once

#include "faces/cascade_kernels.h"
#include "faces/cascade_scales.h"

#include <opencv2/core/mat.hpp>

#include <vector>

namespace qorocv {

/// The factors of the windows of one row after another. Pixels at a window's border do not count.
class WindowContrasts {
public:
  /// Starts above the first row. `picture` must outlive this.
  WindowContrasts(const cv::Mat& picture, const CascadeScale& scale, const CascadeKernels& kernels);

  /// The factors of the windows whose corners lie in the pixel row `y`, which is not above the one
  /// asked for before. Behind the last window they are 0 for as many as make whole units of 64.
  WindowFactors ofRow(int y);

private:
  const cv::Mat& picture_;
  const CascadeScale& scale_;
  const CascadeKernels& kernels_;
  int y_ = 0;          // the row of windows that `columns_` tells of
  ColumnSums columns_; // over the rows of those windows
  ColumnSums left_;    // of all columns to the left
  std::vector<float> even_;
  std::vector<float> odd_;
};

} // namespace qorocv
