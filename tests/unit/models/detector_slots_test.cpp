// Which members of a slot each lazy rule replaces, keeps or reloads.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "models/detector_slots.h"
#include "models/model_registry.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace qorocv {
namespace {

using testing::TemporaryDirectory;

class DetectorSlots : public ::testing::Test {
protected:
  void SetUp() override {
    testing::writeMadeModels(models_.path());
    ASSERT_EQ(modelRegistry().placeAt(models_.asPrefix()), 0);
  }
  void remove(const char* model) const { std::filesystem::remove(models_ / model); }
  void restore() const { testing::writeMadeModels(models_.path()); }

  TemporaryDirectory models_;
};

// What the made networks say in their only row.
constexpr float kCaffeConfidence = 0.875F;
constexpr float kTensorflowConfidence = 0.75F;

// The confidence in the only row of the slot's network.
float confidence(cv::dnn::Net net) {
  const int shape[] = {1, 3, 300, 300};
  net.setInput(cv::Mat::zeros(4, shape, CV_32F), "data");
  return net.forward("detection_out").ptr<float>()[2];
}

bool fits(const Landmarker& landmarker) {
  std::vector<std::vector<cv::Point2f>> sets;
  const std::vector<cv::Rect> boxes{{20, 20, 40, 40}};
  return landmarker->fit(testing::plainPicture({100, 100}), boxes, sets) && sets.size() == 1;
}

TEST_F(DetectorSlots, areAllEmptyWhenTheLibraryIsLoaded) {
  for (int number = 1; number <= 9; ++number) {
    const DetectorSlot& slot = selectSlot(number);
    EXPECT_TRUE(slot.net.empty()) << number;
    EXPECT_TRUE(slot.cascade.empty()) << number;
    EXPECT_TRUE(slot.landmarker.empty()) << number;
    EXPECT_EQ(slot.segmenter, nullptr) << number;
  }
}

TEST_F(DetectorSlots, slotsOneToNineAreDistinct) {
  for (int a = 1; a <= 9; ++a) {
    for (int b = a + 1; b <= 9; ++b) {
      EXPECT_NE(&selectSlot(a), &selectSlot(b)) << a << " and " << b;
    }
  }
}

TEST_F(DetectorSlots, everyOtherNumberSelectsSlotOne) {
  for (const int number : {0, 10, 11, -1, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ(&selectSlot(number), &selectSlot(1)) << number;
  }
}

TEST_F(DetectorSlots, sharedPairIsLoadedOnceLazily) {
  const Landmarker first = ensureSharedDetectors().landmarker;
  EXPECT_FALSE(ensureSharedDetectors().cascade.empty());
  EXPECT_EQ(ensureSharedDetectors().landmarker, first);
  EXPECT_TRUE(fits(first));
}

TEST_F(DetectorSlots, reloadReplacesTheSharedPair) {
  const Landmarker first = ensureSharedDetectors().landmarker;
  reloadSharedDetectors();
  EXPECT_NE(ensureSharedDetectors().landmarker, first);
  EXPECT_TRUE(fits(ensureSharedDetectors().landmarker));
}

TEST_F(DetectorSlots, sharedPairIsReloadedWhileItsCascadeIsMissing) {
  remove(testing::kMadeCascade);
  const Landmarker first = ensureSharedDetectors().landmarker;
  EXPECT_TRUE(ensureSharedDetectors().cascade.empty());
  EXPECT_NE(ensureSharedDetectors().landmarker, first);
  restore();
  EXPECT_FALSE(ensureSharedDetectors().cascade.empty());
}

TEST_F(DetectorSlots, independentRuleLoadsBothIntoAFreshSlot) {
  DetectorSlot& slot = selectSlot(3);
  ensureSlotCascade(slot, CascadeRule::independent);
  EXPECT_FALSE(slot.cascade.empty());
  EXPECT_TRUE(fits(slot.landmarker));
  EXPECT_TRUE(slot.net.empty());
}

TEST_F(DetectorSlots, independentRuleLoadsNothingTwice) {
  DetectorSlot& slot = selectSlot(3);
  ensureSlotCascade(slot, CascadeRule::independent);
  const Landmarker first = slot.landmarker;
  remove(testing::kMadeLandmarks);
  remove(testing::kMadeCascade);
  ensureSlotCascade(slot, CascadeRule::independent);
  EXPECT_FALSE(slot.cascade.empty());
  EXPECT_EQ(slot.landmarker, first);
}

TEST_F(DetectorSlots, independentRuleTouchesNoOtherSlot) {
  ensureSlotCascade(selectSlot(3), CascadeRule::independent);
  EXPECT_TRUE(selectSlot(2).cascade.empty());
  EXPECT_TRUE(selectSlot(4).landmarker.empty());
}

TEST_F(DetectorSlots, independentRuleKeepsALandmarkerThatCameWithTheNetwork) {
  DetectorSlot& slot = selectSlot(2);
  ensureSlotNet(slot, 1);
  const Landmarker first = slot.landmarker;
  ensureSlotCascade(slot, CascadeRule::independent);
  EXPECT_FALSE(slot.cascade.empty());
  EXPECT_EQ(slot.landmarker, first);
}

TEST_F(DetectorSlots, combinedRuleReplacesALandmarkerThatCameWithTheNetwork) {
  DetectorSlot& slot = selectSlot(5);
  ensureSlotNet(slot, 1);
  const Landmarker first = slot.landmarker;
  ensureSlotCascade(slot, CascadeRule::combined);
  EXPECT_FALSE(slot.cascade.empty());
  EXPECT_NE(slot.landmarker, first);
}

TEST_F(DetectorSlots, combinedRuleDoesNothingWhereTheCascadeIsLoaded) {
  DetectorSlot& slot = selectSlot(5);
  ensureSlotCascade(slot, CascadeRule::combined);
  const Landmarker first = slot.landmarker;
  ensureSlotCascade(slot, CascadeRule::combined);
  EXPECT_EQ(slot.landmarker, first);
}

TEST_F(DetectorSlots, combinedRuleReplacesTheLandmarkerAgainWhileTheCascadeIsMissing) {
  remove(testing::kMadeCascade);
  DetectorSlot& slot = selectSlot(5);
  ensureSlotCascade(slot, CascadeRule::combined);
  const Landmarker first = slot.landmarker;
  EXPECT_TRUE(fits(first));
  EXPECT_TRUE(slot.cascade.empty());
  ensureSlotCascade(slot, CascadeRule::combined);
  EXPECT_NE(slot.landmarker, first);
}

TEST_F(DetectorSlots, independentRuleKeepsTheLandmarkerWhileTheCascadeIsMissing) {
  remove(testing::kMadeCascade);
  DetectorSlot& slot = selectSlot(1);
  ensureSlotCascade(slot, CascadeRule::independent);
  const Landmarker first = slot.landmarker;
  ensureSlotCascade(slot, CascadeRule::independent);
  EXPECT_TRUE(slot.cascade.empty());
  EXPECT_EQ(slot.landmarker, first);
}

TEST_F(DetectorSlots, combinedRuleReadsTheLandmarkModelBeforeTheCascade) {
  remove(testing::kMadeLandmarks);
  DetectorSlot& slot = selectSlot(5);
  EXPECT_THROW(ensureSlotCascade(slot, CascadeRule::combined), cv::Exception);
  EXPECT_TRUE(slot.cascade.empty());
  restore();
  ensureSlotCascade(slot, CascadeRule::combined);
  EXPECT_FALSE(slot.cascade.empty());
  EXPECT_TRUE(fits(slot.landmarker));
}

TEST_F(DetectorSlots, independentRuleReadsTheCascadeBeforeTheLandmarkModel) {
  remove(testing::kMadeLandmarks);
  DetectorSlot& slot = selectSlot(1);
  EXPECT_THROW(ensureSlotCascade(slot, CascadeRule::independent), cv::Exception);
  EXPECT_FALSE(slot.cascade.empty());
}

TEST_F(DetectorSlots, netRuleReadsCaffeForKindOne) {
  DetectorSlot& slot = selectSlot(1);
  ensureSlotNet(slot, 1);
  EXPECT_EQ(confidence(slot.net), kCaffeConfidence);
}

TEST_F(DetectorSlots, netRuleReadsTensorflowForEveryOtherKind) {
  int number = 1;
  for (const int kind : {0, 2, -1}) {
    DetectorSlot& slot = selectSlot(number++);
    ensureSlotNet(slot, kind);
    EXPECT_EQ(confidence(slot.net), kTensorflowConfidence) << kind;
  }
}

TEST_F(DetectorSlots, netRuleGivesALandmarkerToEveryKind) {
  int number = 1;
  for (const int kind : {1, 0, 2, -1}) {
    DetectorSlot& slot = selectSlot(number++);
    ensureSlotNet(slot, kind);
    EXPECT_TRUE(fits(slot.landmarker)) << kind;
  }
}

TEST_F(DetectorSlots, netRuleLoadsNoCascade) {
  int number = 1;
  for (const int kind : {1, 0, 2, -1}) {
    DetectorSlot& slot = selectSlot(number++);
    ensureSlotNet(slot, kind);
    EXPECT_TRUE(slot.cascade.empty()) << kind;
  }
}

TEST_F(DetectorSlots, netRuleKeepsTheKindOfItsFirstLoad) {
  DetectorSlot& slot = selectSlot(9);
  ensureSlotNet(slot, 1);
  ensureSlotNet(slot, 2);
  EXPECT_EQ(confidence(slot.net), kCaffeConfidence);
}

TEST_F(DetectorSlots, netRuleKeepsTheLandmarkerOfItsFirstLoad) {
  DetectorSlot& slot = selectSlot(9);
  ensureSlotNet(slot, 1);
  const Landmarker first = slot.landmarker;
  ensureSlotNet(slot, 2);
  EXPECT_EQ(slot.landmarker, first);
}

TEST_F(DetectorSlots, netRuleReplacesALandmarkerThatCameWithTheCascade) {
  DetectorSlot& slot = selectSlot(4);
  ensureSlotCascade(slot, CascadeRule::independent);
  const Landmarker first = slot.landmarker;
  ensureSlotNet(slot, 2);
  EXPECT_NE(slot.landmarker, first);
}

TEST_F(DetectorSlots, netRuleReadsTheLandmarkModelBeforeTheNetwork) {
  remove(testing::kMadeTensorflowWeights);
  DetectorSlot& slot = selectSlot(6);
  EXPECT_THROW(ensureSlotNet(slot, 2), cv::Exception);
  EXPECT_TRUE(slot.net.empty());
  EXPECT_TRUE(fits(slot.landmarker));
}

TEST_F(DetectorSlots, netRuleReadsTheLandmarkModelAgainAfterAFailure) {
  remove(testing::kMadeTensorflowWeights);
  DetectorSlot& slot = selectSlot(6);
  EXPECT_THROW(ensureSlotNet(slot, 2), cv::Exception);
  const Landmarker first = slot.landmarker;
  restore();
  ensureSlotNet(slot, 2);
  EXPECT_FALSE(slot.net.empty());
  EXPECT_NE(slot.landmarker, first);
}

TEST_F(DetectorSlots, netOnlyRuleMakesNoLandmarker) {
  DetectorSlot& slot = selectSlot(7);
  ensureSlotNetOnly(slot, 1);
  EXPECT_TRUE(slot.landmarker.empty());
}

TEST_F(DetectorSlots, netOnlyRuleNeedsNoLandmarkModel) {
  remove(testing::kMadeLandmarks);
  DetectorSlot& slot = selectSlot(7);
  ensureSlotNetOnly(slot, 1);
  EXPECT_EQ(confidence(slot.net), kCaffeConfidence);
  EXPECT_TRUE(slot.landmarker.empty());
}

TEST_F(DetectorSlots, netOnlyRuleKeepsTheKindOfItsFirstLoad) {
  DetectorSlot& slot = selectSlot(7);
  ensureSlotNetOnly(slot, 1);
  ensureSlotNetOnly(slot, 2);
  EXPECT_EQ(confidence(slot.net), kCaffeConfidence);
}

TEST_F(DetectorSlots, netRuleGivesTheLandmarkerThatTheNetOnlyRuleLeftOut) {
  DetectorSlot& slot = selectSlot(7);
  ensureSlotNetOnly(slot, 1);
  ensureSlotNet(slot, 2);
  EXPECT_EQ(confidence(slot.net), kCaffeConfidence);
  ASSERT_FALSE(slot.landmarker.empty());
  const Landmarker first = slot.landmarker;
  EXPECT_TRUE(fits(first));
  ensureSlotNet(slot, 2);
  EXPECT_EQ(slot.landmarker, first);
}

TEST_F(DetectorSlots, landmarkerOfACascadeServesANetworkThatCameAlone) {
  DetectorSlot& slot = selectSlot(8);
  ensureSlotNetOnly(slot, 1);
  ensureSlotCascade(slot, CascadeRule::independent);
  const Landmarker first = slot.landmarker;
  ensureSlotNet(slot, 1);
  EXPECT_EQ(slot.landmarker, first);
}

TEST_F(DetectorSlots, segmenterRuleReadsTheSegmentationModel) {
  DetectorSlot& slot = selectSlot(3);
  ensureSlotSegmenter(slot);
  ASSERT_NE(slot.segmenter, nullptr);
  EXPECT_EQ(slot.segmenter->modelPath, modelRegistry().path(Model::personSegmentation));
  EXPECT_EQ(slot.segmenter->backendId, cv::dnn::DNN_BACKEND_OPENCV);
  EXPECT_EQ(slot.segmenter->targetId, cv::dnn::DNN_TARGET_CPU);
}

TEST_F(DetectorSlots, segmenterRuleKeepsTheFirst) {
  DetectorSlot& slot = selectSlot(3);
  ensureSlotSegmenter(slot);
  const std::shared_ptr<PPHS> first = slot.segmenter;
  ASSERT_NE(first, nullptr);
  modelRegistry().placeAt("nowhere/");
  ensureSlotSegmenter(slot);
  EXPECT_EQ(slot.segmenter, first);
}

TEST_F(DetectorSlots, segmenterRuleTouchesNoOtherSlot) {
  ensureSlotSegmenter(selectSlot(3));
  EXPECT_EQ(selectSlot(4).segmenter, nullptr);
}

TEST_F(DetectorSlots, segmenterRuleTouchesNoOtherMember) {
  DetectorSlot& slot = selectSlot(3);
  ensureSlotSegmenter(slot);
  EXPECT_TRUE(slot.net.empty());
  EXPECT_TRUE(slot.cascade.empty());
  EXPECT_TRUE(slot.landmarker.empty());
}

TEST_F(DetectorSlots, segmenterRuleLeavesTheSlotWithoutOneUntilTheModelIsThere) {
  remove(testing::kMadeSegmentation);
  DetectorSlot& slot = selectSlot(3);
  EXPECT_THROW(ensureSlotSegmenter(slot), cv::Exception);
  EXPECT_EQ(slot.segmenter, nullptr);
  restore();
  ensureSlotSegmenter(slot);
  EXPECT_NE(slot.segmenter, nullptr);
}

TEST_F(DetectorSlots, changedModelPathsLeaveLoadedDetectorsAlone) {
  DetectorSlot& slot = selectSlot(1);
  ensureSlotCascade(slot, CascadeRule::combined);
  ensureSlotNet(slot, 1);
  const Landmarker first = slot.landmarker;
  modelRegistry().placeAt("nowhere/");
  ensureSlotCascade(slot, CascadeRule::combined);
  ensureSlotNet(slot, 1);
  EXPECT_EQ(slot.landmarker, first);
  EXPECT_FALSE(slot.cascade.empty());
}

} // namespace
} // namespace qorocv
