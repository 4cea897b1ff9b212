// The head measures on painted masks. Picture and mask have the same size here, so that a mask's
// values reach the measure as they were painted.
#include "heads/mask_measures.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qorocv {
namespace {

constexpr int kSide = 192;
constexpr int kNose = 100;      // the nose bridge's row
constexpr float kLength = 20.F; // from nose bridge to chin
const cv::Rect kFace(60, 80, 40, 50);

cv::Scalar grey(int value) {
  return {static_cast<double>(value), static_cast<double>(value), static_cast<double>(value), 255};
}

cv::Mat background() {
  return {kSide, kSide, CV_8UC4, grey(0)};
}

// A person in the columns of the face, from `rows` rows above the nose bridge down.
cv::Mat personReaching(int rows, int value = 255) {
  cv::Mat mask = background();
  mask(cv::Rect(kFace.x, kNose - rows, kFace.width, kSide - kNose + rows)).setTo(grey(value));
  return mask;
}

LandmarkSet landmarksAt(float noseBridge, float chin) {
  LandmarkSet landmarks(kLandmarkCount);
  landmarks[kNoseBridge] = {80, noseBridge};
  landmarks[kChin] = {80, chin};
  return landmarks;
}

const LandmarkSet kLandmarks = landmarksAt(kNose, kNose + kLength);

float headTop(const cv::Mat& mask, const cv::Rect& face = kFace,
              const LandmarkSet& landmarks = kLandmarks) {
  PictureMask pictureMask(mask, {kSide, kSide});
  return headTopDistance(face, landmarks, pictureMask);
}

TEST(HeadTopDistance, countsThePersonsRowsAboveTheNoseBridge) {
  EXPECT_EQ(headTop(personReaching(25)), 25.0F);
  EXPECT_EQ(headTop(personReaching(1)), 1.0F);
}

TEST(HeadTopDistance, isNothingWhereTheBackgroundBeginsAtTheNoseBridge) {
  EXPECT_EQ(headTop(personReaching(0)), 0.0F);
  EXPECT_EQ(headTop(background()), 0.0F);
}

TEST(HeadTopDistance, stopsAtTheLowestRowOfBackground) {
  cv::Mat mask = personReaching(50);
  mask.row(kNose - 11).setTo(grey(0));
  EXPECT_EQ(headTop(mask), 10.0F);
}

TEST(HeadTopDistance, takesThreeForBackground) {
  EXPECT_EQ(headTop(personReaching(25, 3)), 0.0F);
}

TEST(HeadTopDistance, takesFourForAPerson) {
  EXPECT_EQ(headTop(personReaching(25, 4)), 25.0F);
}

TEST(HeadTopDistance, seesAPersonInAnySinglePixelOfARow) {
  for (const int column : {kFace.x, kFace.x + kFace.width / 2, kFace.x + kFace.width - 1}) {
    cv::Mat mask = background();
    mask(cv::Rect(column, kNose - 7, 1, 7)).setTo(grey(255));
    EXPECT_EQ(headTop(mask), 7.0F) << column;
  }
  cv::Mat beside = background();
  beside(cv::Rect(kFace.x - 1, 0, 1, kNose)).setTo(grey(255));
  beside(cv::Rect(kFace.x + kFace.width, 0, 1, kNose)).setTo(grey(255));
  EXPECT_EQ(headTop(beside), 0.0F);
}

TEST(HeadTopDistance, seesAPersonInAnyColumnOfAFaceOfAnyWidth) {
  for (const int width : {1, 63, 64, 65, 127, 128, 129, kSide}) {
    for (int column = 0; column < width; ++column) {
      cv::Mat mask = background();
      mask(cv::Rect(column, kNose - 7, 1, 7)).setTo(grey(4));
      EXPECT_EQ(headTop(mask, {0, 80, width, 50}), 7.0F) << column << " of " << width;
    }
  }
}

TEST(HeadTopDistance, isTheFacesLengthWhereThePersonReachesTheTopEdge) {
  EXPECT_EQ(headTop(personReaching(kNose), kFace, landmarksAt(kNose, kNose + 90)), 90.0F);
}

TEST(HeadTopDistance, keepsThreeFaceLengths) {
  EXPECT_EQ(headTop(personReaching(75), kFace, landmarksAt(kNose, kNose + 25)), 75.0F);
}

TEST(HeadTopDistance, isTheFacesLengthBeyondThreeOfThem) {
  EXPECT_EQ(headTop(personReaching(76), kFace, landmarksAt(kNose, kNose + 25)), 25.0F);
}

TEST(HeadTopDistance, roundsTheShareOfTheBandBeforeItComparesTheLength) {
  // 0.6F is a little more than 0.6, and a hundred times that is more than three face lengths.
  EXPECT_EQ(headTop(personReaching(60)), kLength);
}

TEST(HeadTopDistance, isTheFacesLengthWithoutARowAboveTheNoseBridge) {
  EXPECT_EQ(headTop(background(), kFace, landmarksAt(0.75F, 20.75F)), 20.0F);
}

TEST(HeadTopDistance, isTheFacesLengthWhereTheBandLeavesThePicture) {
  EXPECT_EQ(headTop(background(), {-1, 80, 40, 50}), kLength);
  EXPECT_EQ(headTop(background(), {kSide - 39, 80, 40, 50}), kLength);
  EXPECT_EQ(headTop(background(), {kSide - 40, 80, 40, 50}), 0.0F); // just inside
  EXPECT_EQ(headTop(background(), kFace, landmarksAt(kSide + 1, kSide + 31)), 30.0F);
  EXPECT_EQ(headTop(background(), kFace, landmarksAt(-1, 29)), 30.0F);
  EXPECT_EQ(headTop(background(), {60, 80, -1, 50}), kLength);
}

TEST(HeadTopDistance, isNothingForAFaceWithoutColumns) {
  EXPECT_EQ(headTop(personReaching(25), {60, 80, 0, 50}), 0.0F);
}

TEST(HeadTopDistance, isTheFacesLengthWithoutAMask) {
  EXPECT_EQ(headTop(cv::Mat()), kLength);
}

TEST(HeadTopDistance, passesANotANumberOn) {
  EXPECT_TRUE(std::isnan(headTop(background(), kFace, landmarksAt(std::nanf(""), 20))));
  EXPECT_EQ(headTop(personReaching(25), kFace, landmarksAt(kNose, std::nanf(""))), 25.0F);
}

TEST(HeadTopDistance, readsTheMaskAtThePicturesSize) {
  PictureMask mask(personReaching(30), {2 * kSide, 3 * kSide});
  const LandmarkSet landmarks = landmarksAt(3 * kNose, 3 * kNose + 60);
  // 90 rows, and the traces above 3 that enlarging leaves along the outline.
  EXPECT_EQ(headTopDistance({140, 240, 40, 150}, landmarks, mask), 91.0F);
  EXPECT_EQ(mask.pixels().size(), cv::Size(2 * kSide, 3 * kSide));
}

TEST(PictureMask, IsMadeOnce) {
  PictureMask mask(personReaching(30), {300, 200});
  const uchar* const first = mask.pixels().data;
  EXPECT_EQ(mask.pixels().data, first);
  EXPECT_TRUE(PictureMask().empty());
}

// The crop's mask has the crop's size, as above; the crop begins at (20, 30) of a larger picture.
const cv::Rect kCrop(20, 30, kSide, kSide);

float headTopInCrop(const cv::Mat& mask, const cv::Rect& faceInCrop = kFace,
                    const LandmarkSet& landmarks = landmarksAt(30 + kNose, 30 + kNose + kLength)) {
  return headTopDistanceInCrop(faceInCrop + kCrop.tl(), landmarks, mask, kCrop);
}

constexpr float kFallback = 30 + kLength; // the crop's top edge and the face's length

TEST(HeadTopDistanceInCrop, countsThePersonsRowsAboveTheNoseBridge) {
  EXPECT_EQ(headTopInCrop(personReaching(25)), 25.0F);
  EXPECT_EQ(headTopInCrop(personReaching(0)), 0.0F);
}

TEST(HeadTopDistanceInCrop, takesOnlyNoughtForBackground) {
  EXPECT_EQ(headTopInCrop(personReaching(25, 1)), 25.0F);
  EXPECT_EQ(headTopInCrop(personReaching(25, 0)), 0.0F);
}

TEST(HeadTopDistanceInCrop, fallsBackToTheCropsTopEdgePlusTheFacesLength) {
  EXPECT_EQ(headTopInCrop(personReaching(kNose)), kFallback);
}

TEST(HeadTopDistanceInCrop, keepsThreeFaceLengths) {
  EXPECT_EQ(headTopInCrop(personReaching(60)), 60.0F);
}

TEST(HeadTopDistanceInCrop, fallsBackBeyondThreeFaceLengths) {
  EXPECT_EQ(headTopInCrop(personReaching(61)), kFallback);
}

TEST(HeadTopDistanceInCrop, fallsBackForANoseBridgeAtOrAboveTheCropsTopEdge) {
  EXPECT_EQ(headTopInCrop(background(), kFace, landmarksAt(30.5F, 50.5F)), kFallback);
  EXPECT_EQ(headTopInCrop(background(), kFace, landmarksAt(7, 27)), kFallback);
}

TEST(HeadTopDistanceInCrop, isNothingForAFaceWithoutColumns) {
  EXPECT_EQ(headTopInCrop(personReaching(25), {60, 80, 0, 50}), 0.0F);
}

TEST(HeadTopDistanceInCrop, keepsALengthThatItCannotCompare) {
  EXPECT_EQ(headTopInCrop(personReaching(25), kFace, landmarksAt(30 + kNose, std::nanf(""))),
            25.0F);
}

TEST(HeadTopDistanceInCrop, throwsForANoseBridgeThatIsNotANumber) {
  // Such a row is the least integer there is, and wraps to far below the crop.
  EXPECT_THROW(headTopInCrop(personReaching(25), kFace, landmarksAt(std::nanf(""), 150)),
               cv::Exception);
  // From a crop at the top edge nothing is subtracted: no row above, and no length to fall back to.
  const cv::Rect atTheTop(kCrop.x, 0, kSide, kSide);
  EXPECT_TRUE(std::isnan(headTopDistanceInCrop(
      kFace + cv::Point(kCrop.x, 0), landmarksAt(std::nanf(""), 150), background(), atTheTop)));
}

TEST(HeadTopDistanceInCrop, throwsWhereTheBandLeavesTheCropOrThereIsNoMask) {
  EXPECT_THROW(headTopInCrop(background(), {-1, 80, 40, 50}), cv::Exception);
  EXPECT_THROW(headTopInCrop(background(), {kSide - 39, 80, 40, 50}), cv::Exception);
  EXPECT_THROW(headTopInCrop(background(), kFace, landmarksAt(30 + kSide + 1, 300)), cv::Exception);
  EXPECT_THROW(headTopInCrop(cv::Mat()), cv::Exception);
}

} // namespace
} // namespace qorocv
