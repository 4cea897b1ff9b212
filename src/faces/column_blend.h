// How the columns of a smaller picture are blended of those of a larger one.
#pragma once

#include <array>
#include <cstdint>

namespace qorocv {

/// The sum of the two weights of a blend.
constexpr int kBlendUnit = 256;

/// Eight columns, each of which is blended of a pixel and its right neighbour.
struct ColumnBlend {
  static constexpr std::uint8_t kNothing = 0x80;

  std::array<int, 8> firsts;            // the left ones of the pixels
  std::array<std::int16_t, 16> weights; // of the left and the right one

  // For processors that pick bytes out of a register: the same pixels in 16 bytes from each of two
  // places on, none of them behind the row. Those of the first place are picked out by the first
  // 16 of `shuffles`, with nothing where the second ones come.
  bool takesTwoLoads; // otherwise they lie too far apart
  std::array<int, 2> loads;
  std::array<std::uint8_t, 32> shuffles;
};

} // namespace qorocv
