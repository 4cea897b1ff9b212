// What the per-slot exports make of the rows that their network answers.
#include "exports/slot_exports_fixture.h"

#include <cmath>

namespace qorocv::testing {
namespace {

constexpr float kJustAbove = 0.7000001F;

class NetworkExport : public OneSlotExport {};

INSTANTIATE_TEST_SUITE_P(Exports, NetworkExport, ::testing::ValuesIn(kNetworkExports), nameOf);

TEST_P(NetworkExport, keepsTheKindOfNetworkThatASlotsFirstCallLoaded) {
  MadeModels models;
  models.caffeRows = {{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}};
  models.tensorflowRows = {{0.875F, 0.125F, 0.25F, 0.75F, 0.75F}};
  useModels(models);
  const auto path = photo(pictureWithFace());
  EXPECT_EQ(find(path, ofKind(kCaffe)).results[1], 0.25);
  EXPECT_EQ(find(path, ofKind(kTensorflow)).results[1], 0.25);
  EXPECT_EQ(find(path, ofKind(kTensorflow, inSlot(2))).results[1], 0.125);
  EXPECT_EQ(find(path, ofKind(kCaffe, inSlot(2))).results[1], 0.125);
}

class NetworkRows : public SlotExportsBase, public ::testing::Test {};

TEST_F(NetworkRows, giveTheNetworkTheColoursInTheOrderOfTheCallsKind) {
  // The box's left edge is the first plane of the network's input, over 1024.
  useModels(modelsSeeing({{1.F, {0.F, {1 / 1024.F, 0, 0}}, 0.F, 1.F, 1.F}}));
  const auto path = photo(cv::Mat(1024, 1024, CV_8UC3, cv::Scalar(130, 180, 140)));
  EXPECT_EQ(detect(kDun02, path, ofKind(kCaffe)).results[1], 52.0 / 1024);
  EXPECT_EQ(detect(kDun02, path, ofKind(kTensorflow)).results[1], 72.0 / 1024); // the same network
}

// The box-derived export and its rounding.
TEST_F(NetworkRows, takeTheMiddleAndTheBottomOfTheBoxForPoints) {
  useModels(modelsSeeing({{1.F, 10.0F / 256, 20.0F / 256, 41.0F / 256, 61.0F / 256}}));
  const Outcome outcome = detect(kDun02, photo(plainPicture({256, 256})));
  ASSERT_EQ(outcome.count, 9);
  const double expected[] = {10, 20, 41, 61, 25, 40, 25, 61}; // half of 31 and of 41, truncated
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(outcome.results[1 + i], expected[i] / 256) << i;
  }
}

TEST_F(NetworkRows, reportBoxesBeyondThePicture) {
  useModels(modelsSeeing({{1.F, -0.25F, -0.125F, 1.25F, 1.125F}}));
  for (const SlotExport& slotExport : kNetworkExports) {
    const Outcome outcome = detect(slotExport, photo(plainPicture({256, 256})));
    EXPECT_EQ(outcome.returned, 1) << slotExport.name;
    EXPECT_EQ(outcome.results[1], -0.25) << slotExport.name;
    EXPECT_EQ(outcome.results[2], -0.125) << slotExport.name;
    EXPECT_EQ(outcome.results[3], 1.25) << slotExport.name;
    EXPECT_EQ(outcome.results[4], 1.125) << slotExport.name;
  }
}

TEST_F(NetworkRows, countFromJustAboveTheThreshold) {
  useModels(modelsSeeing({{0.7F, 0.F, 0.F, 0.5F, 0.5F},
                          {kJustAbove, 0.25F, 0.25F, 0.75F, 0.75F},
                          {std::nanf(""), 0.F, 0.F, 0.5F, 0.5F}}));
  for (const SlotExport& slotExport : kNetworkExports) {
    const Outcome outcome = detect(slotExport, photo(plainPicture({256, 256})));
    EXPECT_EQ(outcome.returned, 1) << slotExport.name;
    EXPECT_EQ(outcome.results[1], 0.25) << slotExport.name;
  }
}

} // namespace
} // namespace qorocv::testing
