// From the faces of overlapping tiles to the faces of the photograph.
#pragma once

#include "analysis.h"

#include <vector>

namespace qorfaces {

/// A tile's place in its photograph, and the faces found in it, surest first; all in fractions of
/// the photograph.
struct Tile {
  Point leftTop;
  Point rightBottom;
  std::vector<Face> faces;
};

/// Every face once.
///
/// Within a tile a box that overlaps a surer one is dropped (non-maximum suppression). Across tiles
/// two boxes are one face if their intersection covers half of the smaller one: a face that one
/// tile's edge cuts lies within the whole face that the next tile shows. Of the two the better
/// stays: one that no inner edge of its tile cuts, then the one of the tile that comes first.
std::vector<Face> mergeTiles(const std::vector<Tile>& tiles);

} // namespace qorfaces
