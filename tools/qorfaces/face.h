// What qorfaces knows of a face.
#pragma once

#include <optional>
#include <vector>

namespace qorfaces {

/// A position as fractions of the photograph's width and height.
struct Point {
  double x;
  double y;
};

struct Face {
  Point leftTop;
  Point rightBottom;
  Point noseBridge;
  Point chin;
  std::optional<Point> headCentre; // where it was asked for
  std::vector<Point> landmarks;    // all 68, where they were asked for
};

} // namespace qorfaces
