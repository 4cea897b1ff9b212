// The sizes at which a cascade looks at a picture, and the windows that it looks at in each.
#pragma once

#include <opencv2/core/types.hpp>

#include <vector>

namespace qorocv {

/// The picture made smaller, so that the cascade's window finds larger faces.
struct CascadeScale {
  float factor = 1;  // by which the picture is smaller
  cv::Size picture;  // size of the smaller picture
  int step = 1;      // pixels from window to window, and from row to row
  int windows = 0;   // in a row
  int pixelRows = 0; // windows start in the first of these
};

/// Scales from 1 on, each 1.1 times the one before, while the window fits into a picture of this
/// size; none where it never does.
std::vector<CascadeScale> cascadeScales(const cv::Size& picture);

/// The box in the picture of the window whose corner lies at `corner` in the smaller picture.
cv::Rect boxOfWindow(const CascadeScale& scale, const cv::Point& corner);

} // namespace qorocv
