#include "group_photo.h"

#include "records.h"

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>

namespace qorfaces {

namespace {

/// A tile to look at: one of a grid's.
struct Cell {
  Grid grid;
  int column; // from 1
  int row;
};

struct TileResult {
  int found = QOROCV460_UNREADABLE;
  int width = 0; // of the photograph
  int height = 0;
  Tile tile{};
  std::exception_ptr error;
};

// The tile last in the list is the photograph itself, for faces larger than tiles.
std::vector<Cell> cellsOf(const Grid& grid) {
  std::vector<Cell> cells;
  for (int row = 1; row <= grid.rows; ++row) {
    for (int column = 1; column <= grid.columns; ++column) {
      cells.push_back({grid, column, row});
    }
  }
  cells.push_back({{1, 1}, 1, 1});
  return cells;
}

TileResult lookAt(const std::string& photo, const Cell& cell, int modelKind, int maxSide,
                  int slot) {
  Call call;
  TileResult result;
  int left = 0;
  int top = 0;
  result.found = findQORMulitFacesDUNInTread_TR02(
      photo.c_str(), call.results.data(), &call.count, cell.column, cell.grid.columns, cell.row,
      cell.grid.rows, &call.width, &call.height, &left, &top, modelKind, slot, maxSide, 0,
      &result.width, &result.height);
  if (result.found == QOROCV460_UNREADABLE) {
    return result;
  }
  const auto inPhoto = [&](const Point& inTile) {
    return Point{(left + inTile.x * call.width) / result.width,
                 (top + inTile.y * call.height) / result.height};
  };
  result.tile = {inPhoto({0, 0}), inPhoto({1, 1}), facesOf(call, Layout::headCentre)};
  for (Face& face : result.tile.faces) {
    for (Point* const point :
         {&face.leftTop, &face.rightBottom, &face.noseBridge, &face.chin, &*face.headCentre}) {
      *point = inPhoto(*point);
    }
  }
  return result;
}

} // namespace

std::optional<GroupPhoto> findInTiles(const std::string& photo, const Grid& grid, int modelKind,
                                      int maxSide) {
  const std::vector<Cell> cells = cellsOf(grid);
  std::vector<TileResult> results(cells.size());
  std::atomic<std::size_t> next{0};
  const auto work = [&](int slot) {
    for (std::size_t i = next++; i < cells.size(); i = next++) {
      try {
        results[i] = lookAt(photo, cells[i], modelKind, maxSide, slot);
      } catch (...) {
        results[i].error = std::current_exception();
      }
    }
  };

  // The first tile alone: a photograph that cannot be read is said to be so once.
  results[0] = lookAt(photo, cells[0], modelKind, maxSide, QOROCV460_FIRST_SLOT);
  if (results[0].found == QOROCV460_UNREADABLE) {
    return std::nullopt;
  }
  next = 1;
  cv::setNumThreads(1); // the processors have their threads already
  const int processors = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
  std::vector<std::thread> threads;
  for (int slot = QOROCV460_FIRST_SLOT; slot <= std::min<int>(processors, QOROCV460_LAST_SLOT);
       ++slot) {
    threads.emplace_back(work, slot);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }

  GroupPhoto group{results[0].width, results[0].height, 0, {}};
  std::vector<Tile> tiles;
  for (const TileResult& result : results) {
    if (result.error) {
      std::rethrow_exception(result.error);
    }
    if (result.found == QOROCV460_UNREADABLE) {
      return std::nullopt; // gone since the first tile
    }
    group.unlisted += std::max(0, result.found - QOROCV460_MAX_RECORDS);
    tiles.push_back(result.tile);
  }
  group.faces = mergeTiles(tiles);
  return group;
}

} // namespace qorfaces
