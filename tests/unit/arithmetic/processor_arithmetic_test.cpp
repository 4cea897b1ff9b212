#include "arithmetic/processor_arithmetic.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qorocv {
namespace {

constexpr int kSmallest = -2147483647 - 1;

TEST(TruncateToInt, dropsTheFractionTowardsZero) {
  EXPECT_EQ(truncateToInt(249.75F), 249);
  EXPECT_EQ(truncateToInt(-249.75F), -249);
  EXPECT_EQ(truncateToInt(-0.5F), 0);
}

TEST(TruncateToInt, keepsTheLargestFloatThatFits) {
  EXPECT_EQ(truncateToInt(2147483520.F), 2147483520);
}

TEST(TruncateToInt, givesTheSmallestIntegerForWhatFitsNone) {
  EXPECT_EQ(truncateToInt(2147483648.F), kSmallest);
  EXPECT_EQ(truncateToInt(-3e9F), kSmallest);
  EXPECT_EQ(truncateToInt(std::nanf("")), kSmallest);
  EXPECT_EQ(truncateToInt(-2147483648.F), kSmallest);
}

TEST(WrappingSum, goesRoundAt32Bits) {
  EXPECT_EQ(wrappingSum(2147483647, 1), kSmallest);
}

TEST(WrappingSum, isTheSumWhereThatFits) {
  EXPECT_EQ(wrappingSum(3, 4), 7);
}

TEST(WrappingDifference, goesRoundAt32Bits) {
  EXPECT_EQ(wrappingDifference(100, kSmallest), kSmallest + 100);
}

} // namespace
} // namespace qorocv
