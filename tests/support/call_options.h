// What a host may ask for in a call, and words for it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace qorocv::testing {

constexpr int kCaffe = 1;
constexpr int kTensorflow = 2;

/// Each export takes those that it has an argument for.
struct CallOptions {
  int slot = 1;
  int maxSide = 0;
  int modelKind = kCaffe;
  std::string outputPath{};
  bool show = false;
  std::intptr_t reserved = 0;
  int tileCol = 1; // by default a grid's only tile is the photograph
  int gridCols = 1;
  int tileRow = 1;
  int gridRows = 1;
};

// These put into words what a test asks for, one around the other where it asks for more.

inline CallOptions inSlot(int slot, CallOptions options = {}) {
  options.slot = slot;
  return options;
}
inline CallOptions scaledTo(int maxSide, CallOptions options = {}) {
  options.maxSide = maxSide;
  return options;
}
/// Of so many columns or rows of a grid.
struct Of {
  int count;
};
inline CallOptions inColumn(int column, Of columns, CallOptions options = {}) {
  options.tileCol = column;
  options.gridCols = columns.count;
  return options;
}
inline CallOptions inRow(int row, Of rows, CallOptions options = {}) {
  options.tileRow = row;
  options.gridRows = rows.count;
  return options;
}
inline CallOptions ofKind(int modelKind, CallOptions options = {}) {
  options.modelKind = modelKind;
  return options;
}
inline CallOptions copiedTo(const std::filesystem::path& copy, CallOptions options = {}) {
  options.outputPath = copy.u8string();
  return options;
}
inline CallOptions shown(CallOptions options = {}) {
  options.show = true;
  return options;
}

} // namespace qorocv::testing
