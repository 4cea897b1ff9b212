// Windows from anywhere in an integral image, copied to stand side by side.
#pragma once

#include "faces/cascade_model.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace qorocv {

/// Windows that are looked at together.
constexpr int kGroup = 32;

using GroupCorners = std::array<const std::uint16_t*, kGroup>;

/// What a group of windows sees: its points row by row, and of each point the numbers of all
/// windows side by side.
struct WindowPatch {
  static constexpr int kColumns = 24; // more than needed: they are copied in fours
  static constexpr int kRows = kCascadeWindow + 1;

  static constexpr int offset(int x, int y) { return (y * kColumns + x) * kGroup; }

  // No vector of windows lies across two lines of the processor's cache.
  alignas(64) std::array<std::uint16_t, std::size_t{kRows} * kColumns * kGroup> numbers;
};

/// Where windows to be copied have their points, in quads: four that are `columnStep` columns apart
/// and stand side by side in memory.
struct PatchSource {
  static constexpr std::size_t kQuads = WindowPatch::kColumns / 4;

  int columnStep = 1;
  std::array<int, kQuads> firstColumns{};
  std::array<std::ptrdiff_t, kQuads * WindowPatch::kRows> offsets{}; // row by row
};

} // namespace qorocv
