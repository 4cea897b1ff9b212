// Detection on one tile of a large photograph. Tiles are one and a half cells of the host's grid
// wide and high, so that a face which one cell border cuts lies whole in some tile.
#pragma once

#include "call/detection.h"

namespace qorocv {

/// One cell of a grid over a photograph, column and row counted from 1.
struct GridCell {
  int column;
  int columns;
  int row;
  int rows;
};

/// Where a tile begins and ends along one side of the photograph, in its pixels; end exclusive.
struct TileSpan {
  int start;
  int end;
};

/// The tile of cell `index` (from 1) of `count` along a side of `length` pixels. One that would
/// reach beyond the end is moved back, as far as the start. Computed in single precision. The
/// numbers are not checked: cells below 1 and counts below 1 can give spans that end before they
/// start.
TileSpan tileSpan(int length, int index, int count);

/// What the host learns about a tile's place: its left and top edge in the photograph, and the
/// photograph's size. The tile's own size is what the HostCall reports.
struct TileReport {
  int* left;
  int* top;
  int* photographWidth;
  int* photographHeight;
};

/// detectFaces on the tile of a cell; the tile stands for the photograph in everything that the
/// call reports. Throws cv::Exception where the tile is no part of the photograph.
int detectFacesInTile(const FaceExport& kind, const HostCall& call, const SlotChoice& choice,
                      const GridCell& cell, const TileReport& report);

} // namespace qorocv
