// Boxes that the landmark fitter cannot fit.
#include "exports/slot_exports_fixture.h"
#include "support/annotations.h"

#include <opencv2/imgcodecs.hpp>

namespace qorocv::testing {
namespace {

class FailedFit : public SlotExportsBase, public ::testing::Test {};

// A box of no height leaves the fitter nothing to read.
const std::vector<DetectionRow> kFaceAndFlatBox{{1.F, 0.25F, 0.25F, 0.75F, 0.75F},
                                                {1.F, 0.25F, 0.5F, 0.75F, 0.5F}};

TEST_F(FailedFit, ofOneBoxIsAFailedFitOfAll) {
  useModels(modelsSeeing(kFaceAndFlatBox));
  for (const SlotExport& slotExport :
       {kDun01, kDun01Debug, kDunTr02, kDunMask01, kDunMask02, kDunTile}) {
    const Outcome outcome = detect(slotExport, photo(plainPicture({256, 256})));
    EXPECT_EQ(outcome.returned, 2) << slotExport.name;
    EXPECT_EQ(outcome.count, 0) << slotExport.name;
    EXPECT_EQ(outcome.written(), 0U) << slotExport.name;
  }
}

TEST_F(FailedFit, doesNotMatterWhereNothingIsFitted) {
  useModels(modelsSeeing(kFaceAndFlatBox));
  const Outcome outcome = detect(kDun02, photo(plainPicture({256, 256})));
  EXPECT_EQ(outcome.returned, 2);
  EXPECT_EQ(outcome.count, 17);
}

TEST_F(FailedFit, isThatOfEveryFaceInAPictureOnePixelWideOrHigh) {
  useModels(modelsSeeing({{1.F, 0.F, 0.F, 1.F, 1.F}}));
  for (const cv::Size size : {cv::Size(1, 200), cv::Size(200, 1)}) {
    const Outcome outcome = detect(kDun01, photo(plainPicture(size)));
    EXPECT_EQ(outcome.returned, 1) << size;
    EXPECT_EQ(outcome.count, 0) << size;
  }
}

TEST_F(FailedFit, throwsWhatTheFitterThrows) {
  useModels(modelsSeeing({{1.F, 0.5F, 0.25F, 0.5F, 0.75F}})); // no width
  EXPECT_THROW(detect(kDun01, photo(plainPicture({256, 256}))), cv::Exception);
  useModels(modelsSeeing({{1.F, 3.F, 0.25F, 3.25F, 0.75F}})); // far outside
  EXPECT_THROW(detect(kDun01, photo(plainPicture({256, 256})), inSlot(2)), cv::Exception);
}

TEST_F(FailedFit, stillHasItsBoxesDrawnByTheNetworksDebugExport) {
  useModels(modelsSeeing(kFaceAndFlatBox));
  detect(kDun01Debug, photo(plainPicture({256, 256})), copiedTo(copyPath()));
  const cv::Mat copy = cv::imread(copyPath().string());
  EXPECT_GT(pixelsOf(copy, kGreen), 500);
  EXPECT_EQ(pixelsOf(copy, kRed), 0);
}

} // namespace
} // namespace qorocv::testing
