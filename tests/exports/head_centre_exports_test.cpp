// The per-slot exports whose records hold the head's centre.
#include "exports/slot_exports_fixture.h"

namespace qorocv::testing {
namespace {

class HeadCentreExport : public OneSlotExport {};

INSTANTIATE_TEST_SUITE_P(Exports, HeadCentreExport,
                         ::testing::Values(kHaarTr02, kDunTr02, kHaarMask02, kDunMask01, kDunMask02,
                                           kDunTile),
                         nameOf);

TEST_P(HeadCentreExport, repeatsTheNoseBridgeBitForBit) {
  const Outcome outcome = find(photoOfFaces(5), scaledTo(333));
  ASSERT_EQ(outcome.count, 51);
  for (std::size_t face = 0; face < 5; ++face) {
    EXPECT_EQ(outcome.results[1 + 10 * face + 8], outcome.results[1 + 10 * face + 4]) << face;
  }
}

TEST_P(HeadCentreExport, sharesItsFirstEightValuesWithTheExportWithoutHeadCentre) {
  const auto path = photoOfFaces(2);
  const Outcome outcome = find(path);
  const Outcome plain = detect(isCascade() ? kInTread01 : kDun01, path);
  for (std::size_t face = 0; face < 2; ++face) {
    for (std::size_t i = 0; i < 8; ++i) {
      EXPECT_EQ(outcome.results[1 + 10 * face + i], plain.results[1 + 8 * face + i]) << face << i;
    }
  }
}

TEST_P(HeadCentreExport, neverReadsTheReservedArgument) {
  const auto path = photoOfFaces(1);
  const Outcome null = find(path);
  CallOptions options;
  options.reserved = -1;
  EXPECT_TRUE(sameOutputs(find(path, options), null));
}

} // namespace
} // namespace qorocv::testing
