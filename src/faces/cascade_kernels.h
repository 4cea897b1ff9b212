// The loops that cascade detection spends its time in, compiled for each instruction set.
#pragma once

#include "faces/cascade_model.h"
#include "faces/column_blend.h"
#include "faces/instruction_set.h"
#include "faces/placed_stumps.h"
#include "faces/window_patch.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qorocv {

/// Whether this program has kernels at all. They are written for the vectors of GCC and clang, and
/// for numbers whose lower half comes first in memory.
#if defined(__GNUC__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
#define QOROCV_HAS_CASCADE_KERNELS 1
#else
#define QOROCV_HAS_CASCADE_KERNELS 0
#endif

/// What the features of windows are multiplied by, those of even windows apart from those of odd
/// ones: 1 / (area * standard deviation) of the window's pixels, and 0 where there is next to no
/// contrast in it.
struct WindowFactors {
  const float* even;
  const float* odd;

  // In one expression GCC 12 reads an index that it has not computed where it checks for overflows.
  float of(int window) const {
    const float* const factors = window % 2 == 0 ? even : odd;
    return factors[window / 2];
  }
  WindowFactors from(int window) const { return {even + window / 2, odd + window / 2}; }
};

/// Where a window has the points of an integral image between which its contrast is taken, counted
/// from its corner: at the top, half-way down and at the bottom. The sum of the pixels of either
/// half stays within 16 bits.
struct NormPoints {
  std::array<std::ptrdiff_t, 3> left;
  std::array<std::ptrdiff_t, 3> right;
};

struct CascadeKernels {
  /// A row with eight columns for each blend. The blended pixels are kBlendUnit times as large, less
  /// 2^15, with which they fit into 16 signed bits.
  void (*blendColumns)(const std::vector<ColumnBlend>& blends, const std::uint8_t* row,
                       std::int16_t* blended);

  /// Pixels of two such rows, rounded.
  void (*blendRows)(const std::int16_t* upper, const std::int16_t* lower, int weightOfLower,
                    int columns, std::uint8_t* pixels);

  /// The windows of a group with contrast.
  std::uint32_t (*contrasting)(const WindowFactors& factors);

  /// The windows of a group, of those in `alive`, that pass a stage. `corner` is that of the first
  /// one, the others follow it.
  std::uint32_t (*passing)(const PlacedStages& placed, const Stage& stage,
                           const std::uint16_t* corner, const WindowFactors& factors,
                           std::uint32_t alive);

  /// Fills the patch with what the first `count` windows see. Whole vectors are copied, so that all
  /// corners have to be those of some window.
  void (*copyPatch)(const GroupCorners& corners, int count, const PatchSource& source,
                    WindowPatch& patch);

  /// The row of an integral image modulo 2^16 below `above`, with a point more than there are
  /// pixels; both have room for points in multiples of 32. The second one puts even columns first
  /// and the odd ones behind `half` points.
  void (*sumRow)(const std::uint8_t* pixels, int width, const std::uint16_t* above,
                 std::uint16_t* sums);
  void (*sumSplitRow)(const std::uint8_t* pixels, int width, const std::uint16_t* above,
                      std::uint16_t* sums, std::ptrdiff_t half);

  /// Adds the squares of two pixels each of a row, and takes those of another row away.
  void (*moveSquares)(std::int32_t* pairs, int count, const std::uint8_t* leaving,
                      const std::uint8_t* entering);

  /// The factors of a group of windows, whose first one has its corner in an integral image at
  /// `corner`. A window's squares are those of nine pairs in a row. Pairs begin every second column;
  /// at step 1 `evenPairs` are those of even windows, at step 2 the two are the same.
  void (*toFactors)(const std::uint16_t* corner, const NormPoints& points,
                    const std::int32_t* evenPairs, const std::int32_t* oddPairs, float* even,
                    float* odd);
};

/// The kernels for an instruction set that is available. All sets give the same results.
const CascadeKernels& cascadeKernels(InstructionSet set);

} // namespace qorocv
