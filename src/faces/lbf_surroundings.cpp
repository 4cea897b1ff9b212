#include "faces/lbf_surroundings.h"

#include <algorithm>

namespace qorocv {

namespace {

struct Span {
  double start;
  double length;
};

// Half the length is an integer division.
Span clippedSpan(int start, int length, int pictureLength) {
  const int half = length / 2;
  const double from = std::max(0., static_cast<double>(start) - half);
  const double to = std::min(pictureLength - 1., static_cast<double>(start) + length + half);
  return {from, to - from};
}

} // namespace

LbfSurroundings lbfSurroundingsOf(const cv::Rect& box, const cv::Size& picture) {
  const Span columns = clippedSpan(box.x, box.width, picture.width);
  const Span rows = clippedSpan(box.y, box.height, picture.height);
  return {columns.start, rows.start, columns.length, rows.length};
}

bool leavesNothingToRead(const cv::Rect& box, const cv::Size& picture) {
  const LbfSurroundings surroundings = lbfSurroundingsOf(box, picture);
  const bool outside = surroundings.width < 0 || surroundings.height < 0;
  const bool empty = surroundings.width == 0 || surroundings.height == 0;
  return box.width > 0 && empty && !outside;
}

} // namespace qorocv
