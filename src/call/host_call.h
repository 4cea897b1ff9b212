// What a host asks of a detection export, as it passed it.
#pragma once

namespace qorocv {

/// The arguments that every detection export takes.
struct HostCall {
  /// UTF-8.
  const char* imagePath;
  /// Room for the number of landmark sets and 30 records.
  double* results;
  /// In: at least 1. Out: how many values were written, 0 for none.
  int* resultCount;
  /// Length in pixels to scale the longer side to; below 1 keeps the photograph's size.
  int maxSide;
  /// Out: columns and rows of the photograph, or of the tile of it that was looked at.
  int* width;
  int* height;
};

/// Which slot a host names, and which kind of network it wants there.
struct SlotChoice {
  int slot = 0;
  int modelKind = 0;
};

/// What a host wants to see of a call besides its numbers.
struct AnnotationRequest {
  /// UTF-8. A copy is written there if the path's local form has two bytes or more.
  const char* outputPath;
  /// In a window, until a key is pressed.
  bool show;
};

/// True where the host gave an array, a count variable and a capacity of at least 1. The size
/// variables are not looked at: the host always gives them.
inline bool isComplete(const HostCall& call) {
  return call.results != nullptr && call.resultCount != nullptr && *call.resultCount >= 1;
}

} // namespace qorocv
