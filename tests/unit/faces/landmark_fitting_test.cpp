#include "faces/landmark_fitting.h"
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "models/detector_slots.h"
#include "models/model_registry.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

namespace qorocv {
namespace {

class FitLandmarks : public ::testing::Test {
protected:
  void SetUp() override {
    testing::writeMadeModels(models_.path());
    modelRegistry().placeAt(models_.asPrefix());
    ensureSlotCascade(selectSlot(1), CascadeRule::combined);
  }
  static std::optional<std::vector<LandmarkSet>> fit(const std::vector<cv::Rect>& boxes,
                                                     cv::Size picture = {100, 100}) {
    return fitLandmarks(selectSlot(1).landmarker, testing::plainPicture(picture), boxes);
  }

  testing::TemporaryDirectory models_;
};

TEST_F(FitLandmarks, givesOneSetPerBoxInTheirOrder) {
  const auto sets = fit({{10, 10, 40, 40}, {50, 20, 20, 20}});
  ASSERT_TRUE(sets);
  ASSERT_EQ(sets->size(), 2U);
  const testing::LandmarkShape shape = testing::defaultMeanShape();
  EXPECT_EQ((*sets)[0].size(), 68U);
  EXPECT_EQ((*sets)[0][8].y, static_cast<float>(30 + shape[8].y * 20));
  EXPECT_EQ((*sets)[1][8].y, static_cast<float>(30 + shape[8].y * 10));
}

TEST_F(FitLandmarks, failsForNoBox) {
  EXPECT_FALSE(fit({}));
}

TEST_F(FitLandmarks, failsForEveryBoxThatLeavesNothingToRead) {
  EXPECT_FALSE(fit({{10, 20, 30, 0}}));
  EXPECT_FALSE(fit({{104, 10, 10, 10}}));
  EXPECT_FALSE(fit({{10, 104, 10, 10}}));
  EXPECT_FALSE(fit({{-15, 10, 10, 10}}));
  EXPECT_FALSE(fit({{0, 10, 5, 5}}, {1, 100}));
  EXPECT_FALSE(fit({{10, 0, 5, 5}}, {100, 1}));
}

TEST_F(FitLandmarks, fitsTheBoxesNextToThose) {
  EXPECT_TRUE(fit({{10, 20, 30, 1}}));
  EXPECT_TRUE(fit({{103, 10, 10, 10}}));
  EXPECT_TRUE(fit({{-14, 10, 10, 10}}));
  EXPECT_TRUE(fit({{0, 0, 2, 2}}, {2, 2}));
}

TEST_F(FitLandmarks, failsAsAWholeForOneSuchBox) {
  EXPECT_FALSE(fit({{10, 10, 40, 40}, {10, 20, 30, 0}, {20, 20, 40, 40}}));
}

TEST_F(FitLandmarks, throwsWhatTheFitterThrows) {
  EXPECT_THROW(fit({{10, 20, 0, 5}}), cv::Exception);
  EXPECT_THROW(fit({{105, 10, 10, 10}}), cv::Exception);
  EXPECT_THROW(fit({{10, 200, 30, 0}}), cv::Exception);
}

TEST_F(FitLandmarks, throwsForTheBoxThatComesFirst) {
  const cv::Rect outside(105, 10, 10, 10);
  const cv::Rect flat(10, 20, 30, 0);
  EXPECT_THROW(fit({outside, flat}), cv::Exception);
  EXPECT_FALSE(fit({flat, outside}));
}

} // namespace
} // namespace qorocv
