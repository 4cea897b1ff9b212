// A group photograph looked at tile by tile.
#pragma once

#include "grid.h"
#include "merge.h"

#include <optional>
#include <string>
#include <vector>

namespace qorfaces {

struct GroupPhoto {
  int width; // in pixels
  int height;
  int unlisted;            // boxes beyond the 30 that the library lists of a tile
  std::vector<Face> faces; // each once, with head centres
};

/// Looks at every tile of the grid and at the whole photograph, with the SSD network of the kind,
/// on as many threads and slots as there are processors, and merges what they find. Nothing where
/// the photograph cannot be read. Throws std::exception for what the library throws.
std::optional<GroupPhoto> findInTiles(const std::string& photo, const Grid& grid, int modelKind,
                                      int maxSide);

} // namespace qorfaces
