// The grid whose tiles of a group photograph are looked at.
#pragma once

#include <optional>
#include <string>

namespace qorfaces {

// Tiles smaller than this see no more faces, only more pixels of each; a typing error sees none.
constexpr int kMostTiles = 50;

struct Grid {
  int columns; // 1 to kMostTiles
  int rows;
};

/// The grid of a text such as 6x4; nothing where it is none.
std::optional<Grid> gridOf(const std::string& text);

} // namespace qorfaces
