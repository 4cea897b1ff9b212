// Where portraits are cut, on heads and photographs laid out by hand.
#include "portrait_crop.h"

#include <gtest/gtest.h>

#include <limits>

namespace qorfaces {
namespace {

// From the top of the head, at y 140, to the chin are 120 pixels.
const Head kHead{{300, 200}, 260};

PortraitShape shape(double aspect, double head) {
  PortraitShape result;
  result.aspect = aspect;
  result.head = head;
  return result;
}

TEST(AspectOf, readsAShape) {
  EXPECT_EQ(aspectOf("4:5"), 0.8);
  EXPECT_EQ(aspectOf("1:1"), 1.0);
  EXPECT_EQ(aspectOf("35:45"), 35.0 / 45);
  EXPECT_EQ(aspectOf("16:9"), 16.0 / 9);
}

TEST(AspectOf, refusesWhatIsNoShape) {
  for (const char* const text : {"", ":", "4", "4:", ":5", "4:0", "0:5", "-4:5", "4:-5", "4:5:6",
                                 "4x5", "4.5:6", " 4:5", "4:5 ", "a:b", "99999999999:1"}) {
    EXPECT_EQ(aspectOf(text), std::nullopt) << text;
  }
}

TEST(AspectOf, refusesAShapeMoreThanTenTimesAsLongAsWide) {
  EXPECT_EQ(aspectOf("10:1"), 10.0);
  EXPECT_EQ(aspectOf("11:1"), std::nullopt);
  EXPECT_EQ(aspectOf("1:11"), std::nullopt);
}

TEST(IsDoubtful, saysWhetherATopIsWhereNoHeadsTopIs) {
  // The nose bridge at 200, the chin 100 below it, the top from 40 to 300 above it.
  EXPECT_TRUE(isDoubtful({{0, 230}, 300}, 200));  // at 160
  EXPECT_FALSE(isDoubtful({{0, 219}, 300}, 200)); // at 138
  EXPECT_FALSE(isDoubtful({{0, 200}, 300}, 200)); // at 100
  EXPECT_FALSE(isDoubtful({{0, 141}, 300}, 200)); // at -18
  EXPECT_TRUE(isDoubtful({{0, 139}, 300}, 200));  // at -22
  EXPECT_TRUE(isDoubtful({{0, 100}, 300}, 200));  // at -100
  EXPECT_TRUE(isDoubtful({{0, 200}, 300}, std::numeric_limits<double>::quiet_NaN()));
}

TEST(CropAround, givesTheHeadItsShareOfTheHeight) {
  // 120 are 0.6 of 200; four fifths of that are 160.
  EXPECT_EQ(cropAround(kHead, shape(0.8, 0.6)), cv::Rect(220, 100, 160, 200));
  // 120 are half of 240.
  EXPECT_EQ(cropAround(kHead, shape(1, 0.5)), cv::Rect(180, 80, 240, 240));
}

TEST(CropAround, leavesNothingButTheHeadWhereItTakesTheWholeHeight) {
  EXPECT_EQ(cropAround(kHead, shape(0.5, 1)), cv::Rect(270, 140, 60, 120));
}

TEST(CropAround, goesBeyondThePhotographWhereTheHeadIsAtItsEdge) {
  EXPECT_EQ(cropAround({{10, 20}, 80}, shape(0.8, 0.6)), cv::Rect(-70, -80, 160, 200));
}

TEST(CropAround, roundsToWholePixels) {
  // 2 x 15.25 / 0.5 = 61 high and 48.8 wide, from 69.5 and from 75.6.
  EXPECT_EQ(cropAround({{100, 100}, 115.25}, shape(0.8, 0.5)), cv::Rect(76, 70, 49, 61));
}

TEST(CropAround, refusesAChinThatIsNotBelowTheCentre) {
  EXPECT_EQ(cropAround({{100, 100}, 100}, shape(0.8, 0.6)), std::nullopt);
  EXPECT_EQ(cropAround({{100, 100}, 90}, shape(0.8, 0.6)), std::nullopt);
  EXPECT_EQ(cropAround({{100, 100}, 100.9}, shape(0.8, 0.6)), std::nullopt);
}

TEST(CropAround, refusesWhatNoPictureHolds) {
  EXPECT_EQ(cropAround({{100, 100}, 40000}, shape(0.8, 0.6)), std::nullopt);
  EXPECT_EQ(cropAround({{100, 100}, 2000}, shape(10, 0.6)), std::nullopt); // 63,333 wide
  const double none = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(cropAround({{100, 100}, none}, shape(0.8, 0.6)), std::nullopt);
  EXPECT_EQ(cropAround({{none, 100}, 150}, shape(0.8, 0.6)), std::nullopt);
}

TEST(Leaves, saysWhetherAPartIsMissing) {
  EXPECT_FALSE(leaves({0, 0, 100, 50}, {100, 50}));
  EXPECT_FALSE(leaves({10, 10, 20, 20}, {100, 50}));
  EXPECT_TRUE(leaves({-1, 0, 100, 50}, {100, 50}));
  EXPECT_TRUE(leaves({0, -1, 100, 50}, {100, 50}));
  EXPECT_TRUE(leaves({1, 0, 100, 50}, {100, 50}));
  EXPECT_TRUE(leaves({0, 1, 100, 50}, {100, 50}));
  EXPECT_TRUE(leaves({200, 0, 10, 10}, {100, 50}));
}

// Six wide, four high; each pixel holds its column and row.
cv::Mat numbered() {
  cv::Mat picture(4, 6, CV_8UC3);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      picture.at<cv::Vec3b>(y, x) = {static_cast<uchar>(x), static_cast<uchar>(y), 7};
    }
  }
  return picture;
}

TEST(CutPortrait, takesThePixelsOfTheCrop) {
  const cv::Mat portrait = cutPortrait(numbered(), {2, 1, 3, 2}, {});
  ASSERT_EQ(portrait.size(), cv::Size(3, 2));
  EXPECT_EQ(portrait.at<cv::Vec3b>(0, 0), cv::Vec3b(2, 1, 7));
  EXPECT_EQ(portrait.at<cv::Vec3b>(1, 2), cv::Vec3b(4, 2, 7));
}

TEST(CutPortrait, goesOnWithTheOutermostPixels) {
  const cv::Mat portrait = cutPortrait(numbered(), {-2, -1, 10, 7}, {});
  ASSERT_EQ(portrait.size(), cv::Size(10, 7));
  EXPECT_EQ(portrait.at<cv::Vec3b>(0, 0), cv::Vec3b(0, 0, 7));
  EXPECT_EQ(portrait.at<cv::Vec3b>(1, 2), cv::Vec3b(0, 0, 7));
  EXPECT_EQ(portrait.at<cv::Vec3b>(3, 5), cv::Vec3b(3, 2, 7));
  EXPECT_EQ(portrait.at<cv::Vec3b>(6, 9), cv::Vec3b(5, 3, 7));
}

TEST(CutPortrait, padsWithTheCropsOwnEdgeOnly) {
  // To the right of this crop the photograph goes on; below it ends.
  const cv::Mat portrait = cutPortrait(numbered(), {1, 2, 2, 5}, {});
  ASSERT_EQ(portrait.size(), cv::Size(2, 5));
  EXPECT_EQ(portrait.at<cv::Vec3b>(4, 1), cv::Vec3b(2, 3, 7));
}

TEST(CutPortrait, endsWithThePhotographWhereItIsClipped) {
  PortraitShape clipped;
  clipped.edge = CropEdge::clip;
  const cv::Mat portrait = cutPortrait(numbered(), {-2, -1, 5, 3}, clipped);
  ASSERT_EQ(portrait.size(), cv::Size(3, 2));
  EXPECT_EQ(portrait.at<cv::Vec3b>(1, 2), cv::Vec3b(2, 1, 7));
}

TEST(CutPortrait, isEmptyBesideThePhotograph) {
  EXPECT_TRUE(cutPortrait(numbered(), {6, 0, 3, 3}, {}).empty());
}

TEST(CutPortrait, isAsHighAsAsked) {
  PortraitShape tall;
  tall.cropHeight = 1200;
  // Rounded pixels make this crop 0.75 wide to 1 high; the portrait has the shape that was asked for.
  EXPECT_EQ(cutPortrait(numbered(), {0, 0, 3, 4}, tall).size(), cv::Size(960, 1200));
  tall.cropHeight = 2;
  EXPECT_EQ(cutPortrait(numbered(), {0, 0, 3, 4}, tall).size(), cv::Size(2, 2));
}

TEST(CutPortrait, keepsTheScaleWhereItIsClipped) {
  PortraitShape clipped;
  clipped.edge = CropEdge::clip;
  clipped.cropHeight = 80; // ten times the crop
  EXPECT_EQ(cutPortrait(numbered(), {2, 1, 6, 8}, clipped).size(), cv::Size(40, 30));
}

} // namespace
} // namespace qorfaces
