#include "grid.h"

#include <charconv>
#include <system_error>

namespace qorfaces {

std::optional<Grid> gridOf(const std::string& text) {
  const char* const end = text.data() + text.size();
  Grid grid{};
  const auto [cross, columnsError] = std::from_chars(text.data(), end, grid.columns);
  if (columnsError != std::errc() || cross == end || *cross != 'x') {
    return std::nullopt;
  }
  const auto [rest, rowsError] = std::from_chars(cross + 1, end, grid.rows);
  if (rowsError != std::errc() || rest != end) {
    return std::nullopt;
  }
  const auto fits = [](int number) { return number >= 1 && number <= kMostTiles; };
  return fits(grid.columns) && fits(grid.rows) ? std::optional(grid) : std::nullopt;
}

} // namespace qorfaces
