#include "group_photo.h"

#include "merge.h"

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <future>
#include <thread>

namespace qorfaces {

namespace {

namespace client = qorocv::client;

using TileResult = client::Result<client::Tile>;

// The cell last in the list is the photograph itself, for faces larger than tiles.
std::vector<client::Cell> cellsOf(const Grid& grid) {
  std::vector<client::Cell> cells;
  for (int row = 1; row <= grid.rows; ++row) {
    for (int column = 1; column <= grid.columns; ++column) {
      cells.push_back({column, grid.columns, row, grid.rows});
    }
  }
  cells.push_back({1, 1, 1, 1});
  return cells;
}

client::Result<client::Photo> together(const std::vector<TileResult>& results) {
  client::Photo group{results.front()->photo.width, results.front()->photo.height, 0, {}};
  std::vector<Tile> tiles;
  for (const TileResult& result : results) {
    if (!result) {
      return result.error();
    }
    group.found += std::max(0, result->photo.found - QOROCV460_MAX_RECORDS);
    tiles.push_back({result->place.leftTop, result->place.rightBottom, result->photo.faces});
  }
  group.faces = mergeTiles(tiles);
  group.found += static_cast<int>(group.faces.size());
  return group;
}

} // namespace

client::Result<client::Photo> findInTiles(const std::string& photo, const Grid& grid,
                                          const client::Request& request) {
  const std::vector<client::Cell> cells = cellsOf(grid);
  // The first tile alone: a photograph that cannot be read is said to be so once.
  std::vector<TileResult> results{
      client::analyseTile(photo, cells[0], request, QOROCV460_FIRST_SLOT)};
  if (!results.front()) {
    return results.front().error();
  }
  cv::setNumThreads(1); // the processors have their threads already
  client::SlotPool pool(static_cast<int>(std::max(1U, std::thread::hardware_concurrency())));
  std::vector<std::future<TileResult>> coming;
  for (std::size_t i = 1; i < cells.size(); ++i) {
    coming.push_back(pool.submit(
        [&, i](int slot) { return client::analyseTile(photo, cells[i], request, slot); }));
  }
  for (std::future<TileResult>& result : coming) {
    results.push_back(result.get());
  }
  return together(results);
}

client::Result<client::Photo> findInTiles(const std::string& photo, const Grid& grid,
                                          const client::Request& request, int slot) {
  std::vector<TileResult> results;
  for (const client::Cell& cell : cellsOf(grid)) {
    results.push_back(client::analyseTile(photo, cell, request, slot));
    if (!results.back()) {
      return results.back().error();
    }
  }
  return together(results);
}

void dropHeadCentres(std::vector<client::Face>& faces) {
  for (client::Face& face : faces) {
    face.headCentre.reset();
    face.headTopMeasured = false;
  }
}

} // namespace qorfaces
