// Integer results exactly as the x86-64 instructions give them, also where C++ leaves the outcome
// open, so that a wild coordinate from a model gives every build the same numbers.
#pragma once

#include <cfloat>
#include <cstdint>
#include <limits>

namespace qorocv {

static_assert(FLT_EVAL_METHOD == 0, "single precision must not be widened between two operations");

/// `value` without its fraction. What fits no 32-bit integer, NaN included, gives the smallest one.
constexpr int truncateToInt(float value) {
  constexpr float limit = 2147483648.0F; // 2^31, the first float above every int
  if (value >= -limit && value < limit) {
    return static_cast<int>(value);
  }
  return std::numeric_limits<int>::min();
}

/// a + b, wrapping round at 32 bits.
constexpr int wrappingSum(int a, int b) {
  return static_cast<int>(static_cast<std::int64_t>(a) + b);
}

/// a - b, wrapping round at 32 bits.
constexpr int wrappingDifference(int a, int b) {
  return static_cast<int>(static_cast<std::int64_t>(a) - b);
}

} // namespace qorocv
