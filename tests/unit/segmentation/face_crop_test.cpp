#include "segmentation/face_crop.h"

#include <gtest/gtest.h>

#include <limits>

namespace qorocv {
namespace {

constexpr int kLowest = std::numeric_limits<int>::min();
const cv::Size kPicture(100, 80);

TEST(FaceCrop, isThreeTimesTheFaceBothWays) {
  EXPECT_EQ(faceCrop({40, 30, 10, 20}, kPicture), cv::Rect(30, 10, 30, 60));
}

TEST(FaceCrop, endsWhereThePictureEnds) {
  EXPECT_EQ(faceCrop({0, 30, 10, 20}, kPicture), cv::Rect(0, 10, 20, 60));
  EXPECT_EQ(faceCrop({40, 0, 10, 20}, kPicture), cv::Rect(30, 0, 30, 40));
  EXPECT_EQ(faceCrop({90, 30, 10, 20}, kPicture), cv::Rect(80, 10, 20, 60));
  EXPECT_EQ(faceCrop({40, 60, 10, 20}, kPicture), cv::Rect(30, 40, 30, 40));
  EXPECT_EQ(faceCrop({0, 0, 100, 80}, kPicture), cv::Rect(0, 0, 100, 80));
}

TEST(FaceCrop, isEmptyForAFaceThatSticksOut) {
  EXPECT_TRUE(faceCrop({-1, 30, 10, 20}, kPicture).empty());
  EXPECT_TRUE(faceCrop({40, -1, 10, 20}, kPicture).empty());
  EXPECT_TRUE(faceCrop({91, 30, 10, 20}, kPicture).empty());
  EXPECT_TRUE(faceCrop({40, 61, 10, 20}, kPicture).empty());
  EXPECT_TRUE(faceCrop({kLowest, 0, -1, 10}, kPicture).empty());
  EXPECT_TRUE(faceCrop({2147483600, 0, 100, 10}, kPicture).empty());
}

TEST(FaceCrop, isEmptyForAnEmptyFace) {
  EXPECT_EQ(faceCrop({40, 30, 0, 20}, kPicture), cv::Rect());
  EXPECT_EQ(faceCrop({40, 30, 10, 0}, kPicture), cv::Rect());
}

} // namespace
} // namespace qorocv
