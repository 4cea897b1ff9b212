// Where tiles lie, in numbers worked out by hand.
#include "call/tile.h"

#include <gtest/gtest.h>

#include <limits>

namespace qorocv {
namespace {

constexpr int kLowest = std::numeric_limits<int>::min();

struct SpanCase {
  int length;
  int index;
  int count;
  int start;
  int end;
};

TEST(TileSpan, isOneAndAHalfCellsWithinThePhotograph) {
  const SpanCase cases[] = {
      {1000, 1, 1, 0, 1000},                             // 1500 wide, moved back to -500, held at 0
      {1000, 1, 2, 0, 750},     {1000, 2, 2, 250, 1000}, // begins at 500, moved back
      {900, 1, 3, 0, 450},      {900, 2, 3, 300, 750},   {900, 3, 3, 450, 900},
      {2048, 4, 4, 1280, 2048}, {1150, 2, 4, 288, 719}, // half a cell is 143.75: begins at 287.5, ends at 288 + 431.25
      {101, 1, 2, 0, 76},                               // 75.75
      {101, 2, 2, 25, 101},                             // 25.25
      {7, 2, 3, 2, 6},                                  // 2.33; 2 + 3.5, rounded away from zero
      {1, 1, 1, 0, 1},          {1, 5, 9, 0, 0}, // begins at 0.44, ends at 0.17: fewer pixels than cells
  };
  for (const SpanCase& expected : cases) {
    const TileSpan span = tileSpan(expected.length, expected.index, expected.count);
    EXPECT_EQ(span.start, expected.start) << expected.length << ' ' << expected.index;
    EXPECT_EQ(span.end, expected.end) << expected.length << ' ' << expected.index;
  }
}

TEST(TileSpan, beyondTheGridIsTheLastTile) {
  for (const int index : {3, 4, 100, 1000000}) {
    const TileSpan span = tileSpan(1000, index, 2);
    EXPECT_EQ(span.start, 250) << index;
    EXPECT_EQ(span.end, 1000) << index;
  }
}

TEST(TileSpan, beforeTheGridEndsBeforeTheFirstTileDoes) {
  EXPECT_EQ(tileSpan(1000, 0, 2).start, 0); // begins at -500
  EXPECT_EQ(tileSpan(1000, 0, 2).end, 250);
  EXPECT_EQ(tileSpan(1000, -1, 2).end, -250); // no span at all
}

TEST(TileSpan, withoutCellsIsNone) {
  for (const int index : {0, 1, 2}) {
    const TileSpan span = tileSpan(1000, index, 0);
    EXPECT_LT(span.end, span.start) << index;
  }
  EXPECT_EQ(tileSpan(1000, 1, 0).end, kLowest);
}

TEST(TileSpan, takesAnyNumber) {
  for (const int index : {kLowest, -1, 0, 1, std::numeric_limits<int>::max()}) {
    for (const int count : {kLowest, -1, 0, 1, std::numeric_limits<int>::max()}) {
      const TileSpan span = tileSpan(1000, index, count);
      EXPECT_GE(span.start, 0) << index << ' ' << count;
      EXPECT_LE(span.end, 1000) << index << ' ' << count;
    }
  }
}

} // namespace
} // namespace qorocv
