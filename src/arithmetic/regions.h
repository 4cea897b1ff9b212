// Rectangles by any numbers. OpenCV's own checks add left and width, which models can make so large
// that the sum wraps round.
#pragma once

#include <opencv2/core/types.hpp>

namespace qorocv {

/// Whether a region lies in a picture of this size; one without columns or rows may.
inline bool liesIn(const cv::Size& picture, const cv::Rect& region) {
  return region.x >= 0 && region.y >= 0 && region.width >= 0 && region.height >= 0 &&
         region.x <= picture.width - region.width && region.y <= picture.height - region.height;
}

} // namespace qorocv
