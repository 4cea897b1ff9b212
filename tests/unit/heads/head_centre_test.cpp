#include "heads/head_centre.h"

#include <gtest/gtest.h>

namespace qorocv {
namespace {

// A face with its nose bridge at x 110.
LandmarkSet landmarks(float noseBridgeY, float chinY) {
  LandmarkSet points(kLandmarkCount);
  points[kNoseBridge] = {110.0F, noseBridgeY};
  points[kChin] = {115.0F, chinY};
  return points;
}

TEST(HeadCentre, liesHalfwayBetweenTheTopOfTheHeadAndTheChinAboveTheNoseBridge) {
  // The top is at 120, the middle at 190.5, truncated.
  EXPECT_EQ(headCentre(landmarks(200.0F, 261.0F), 80.0F), cv::Point2f(110.0F, 190.0F));
}

TEST(HeadCentre, liesHalfwayBetweenNoseBridgeAndChinForAHeadThatEndsAtTheNoseBridge) {
  EXPECT_EQ(headCentre(landmarks(200.0F, 261.0F), 0.0F).y, 230.0F);
}

TEST(HeadCentre, liesOnTheNoseBridgeForAHeadAsHighAboveItAsTheChinIsBelow) {
  EXPECT_EQ(headCentre(landmarks(200.75F, 261.0F), 60.25F).y, 200.0F);
}

TEST(HeadCentre, truncatesTowardsZeroAboveThePicture) {
  EXPECT_EQ(headCentre(landmarks(-10.25F, 3.0F), 13.25F).y, -10.0F);
}

} // namespace
} // namespace qorocv
