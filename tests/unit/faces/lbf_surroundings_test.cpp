#include "faces/lbf_surroundings.h"

#include <gtest/gtest.h>

namespace qorocv {
namespace {

TEST(LeavesNothingToRead, holdsForABoxOfNoHeightInThePicture) {
  EXPECT_TRUE(leavesNothingToRead({10, 20, 30, 0}, {100, 100}));
  EXPECT_FALSE(leavesNothingToRead({10, 20, 30, 1}, {100, 100}));
}

TEST(LeavesNothingToRead, holdsForEveryBoxInAPictureOnePixelWideOrHigh) {
  EXPECT_TRUE(leavesNothingToRead({0, 10, 5, 5}, {1, 100}));
  EXPECT_TRUE(leavesNothingToRead({10, 0, 5, 5}, {100, 1}));
  EXPECT_FALSE(leavesNothingToRead({0, 0, 2, 2}, {2, 2}));
}

TEST(LeavesNothingToRead, holdsWhereTheSurroundingsBeginOnTheLastPixel) {
  // Half of 10 is 5: they begin at 99 of 0 to 99.
  EXPECT_TRUE(leavesNothingToRead({104, 10, 10, 10}, {100, 100}));
  EXPECT_FALSE(leavesNothingToRead({103, 10, 10, 10}, {100, 100}));
  EXPECT_TRUE(leavesNothingToRead({10, 104, 10, 10}, {100, 100}));
  EXPECT_FALSE(leavesNothingToRead({10, 103, 10, 10}, {100, 100}));
}

TEST(LeavesNothingToRead, holdsWhereTheSurroundingsEndOnTheFirstPixel) {
  EXPECT_TRUE(leavesNothingToRead({-15, 10, 10, 10}, {100, 100}));
  EXPECT_FALSE(leavesNothingToRead({-14, 10, 10, 10}, {100, 100}));
  EXPECT_TRUE(leavesNothingToRead({10, -15, 10, 10}, {100, 100}));
}

TEST(LeavesNothingToRead, halvesAnOddSideDownwards) {
  EXPECT_TRUE(leavesNothingToRead({104, 10, 11, 10}, {100, 100}));
  EXPECT_TRUE(leavesNothingToRead({99, 10, 1, 10}, {100, 100}));
}

TEST(LeavesNothingToRead, isFalseWhereTheFitterThrows) {
  EXPECT_FALSE(leavesNothingToRead({10, 20, 0, 0}, {100, 100}));    // no width
  EXPECT_FALSE(leavesNothingToRead({105, 10, 10, 10}, {100, 100})); // outside on the right
  EXPECT_FALSE(leavesNothingToRead({-16, 10, 10, 10}, {100, 100})); // outside on the left
  EXPECT_FALSE(leavesNothingToRead({10, 200, 30, 0}, {100, 100}));  // no height, and outside
  EXPECT_FALSE(leavesNothingToRead({10, 200, 30, 5}, {1, 100}));    // one pixel wide, and outside
}

} // namespace
} // namespace qorocv
