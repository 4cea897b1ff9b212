// Which windows of a row OpenCV's cascade detection never looks at.
#pragma once

#include <cstdint>

namespace qorocv {

/// A window that the first stage rejects hides the window to its right: OpenCV steps over that one,
/// whatever it holds, and so it hides nothing in turn. Of a run of rejected windows the second,
/// fourth and so on are hidden, and behind a run of odd length one more.
///
/// Takes 64 windows of a row at a time from left to right, the leftmost in bit 0.
class HiddenWindows {
public:
  /// Bits of the hidden windows among those that follow.
  std::uint64_t among(std::uint64_t rejected) {
    const std::uint64_t first = firstIsHidden_ ? 1 : 0;
    const std::uint64_t runs = rejected & ~first;
    const std::uint64_t starts = runs & ~(runs << 1U);
    // Adding its lowest bit to a run of ones turns it to zeros and carries into the zero behind it.
    const std::uint64_t runsFromOdd = runs & (runs + (starts & kEven));
    const std::uint64_t runsFromEven = runs & ~runsFromOdd;
    const std::uint64_t hidden =
        ((runsFromEven << 1U) & ~kEven) | ((runsFromOdd << 1U) & kEven) | first;
    firstIsHidden_ = ((runs & ~hidden) >> 63U) != 0;
    return hidden;
  }

private:
  static constexpr std::uint64_t kEven = 0x5555555555555555U;

  bool firstIsHidden_ = false; // hidden by the last window of those before
};

} // namespace qorocv
