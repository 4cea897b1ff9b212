// Whose detectors are in each other's way.
#include "safe/guard.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace qorocv::safe {
namespace {

TEST(Work, ofEachSlotAndOfTheSharedPairIsInNobodysWay) {
  const Work pair(kSharedPair);
  const Work one(slotOf(1));
  const Work two(slotOf(2));
  const Work three(slotOf(3));
  const Work four(slotOf(4));
  const Work five(slotOf(5));
  const Work six(slotOf(6));
  const Work seven(slotOf(7));
  const Work eight(slotOf(8));
  EXPECT_NO_THROW(Work(slotOf(9)));
}

TEST(Work, withDetectorsThatAreAtWorkIsRefused) {
  for (int slot = QOROCV460_FIRST_SLOT; slot <= QOROCV460_LAST_SLOT; ++slot) {
    const Work work(slotOf(slot));
    EXPECT_THROW(Work(slotOf(slot)), std::runtime_error) << slot;
  }
  const Work work(kSharedPair);
  EXPECT_THROW(Work{kSharedPair}, std::runtime_error);
}

TEST(Work, withAllDetectorsIsInTheWayOfEach) {
  const Work all(kAllDetectors);
  EXPECT_THROW(Work{kSharedPair}, std::runtime_error);
  for (int slot = QOROCV460_FIRST_SLOT; slot <= QOROCV460_LAST_SLOT; ++slot) {
    EXPECT_THROW(Work(slotOf(slot)), std::runtime_error) << slot;
  }
}

TEST(Work, endsWithItsCall) {
  { const Work work(slotOf(1)); }
  EXPECT_NO_THROW(Work(slotOf(1)));
}

TEST(SlotOf, takesTheFirstSlotForEveryOtherNumber) {
  for (const int number : {0, -1, 10, 2147483647}) {
    EXPECT_EQ(slotOf(number), slotOf(1)) << number;
  }
}

} // namespace
} // namespace qorocv::safe
