#include "call/tile.h"

#include "arithmetic/processor_arithmetic.h"
#include "call/photograph.h"

#include <algorithm>
#include <cmath>

namespace qorocv {

namespace {

int roundToInt(float value) {
  return truncateToInt(std::round(value));
}

// A view of the photograph's pixels.
cv::Mat cutTile(const cv::Mat& photograph, const GridCell& cell, const TileReport& report) {
  const TileSpan columns = tileSpan(photograph.cols, cell.column, cell.columns);
  const TileSpan rows = tileSpan(photograph.rows, cell.row, cell.rows);
  *report.left = columns.start;
  *report.top = rows.start;
  return photograph(cv::Range(rows.start, rows.end), cv::Range(columns.start, columns.end));
}

} // namespace

TileSpan tileSpan(int length, int index, int count) {
  const auto whole = static_cast<float>(length);
  const float halfCell = whole / static_cast<float>(2.0 * count);
  const auto cellsBefore = static_cast<float>(wrappingDifference(index, 1));

  const int start = roundToInt(2.0F * (cellsBefore * halfCell));
  const int end = roundToInt(static_cast<float>(start) + 3.0F * halfCell);
  if (end > length) {
    return {std::max(roundToInt(whole - 3.0F * halfCell), 0), length};
  }
  return {std::max(start, 0), end};
}

int detectFacesInTile(const FaceExport& kind, const HostCall& call, const SlotChoice& choice,
                      const GridCell& cell, const TileReport& report) {
  const Opened opened = openPhotograph(call);
  if (opened.photograph.empty()) {
    return opened.refusal;
  }
  reportSize(opened.photograph, report.photographWidth, report.photographHeight);
  return detectFacesIn(cutTile(opened.photograph, cell, report), kind, call, choice);
}

} // namespace qorocv
