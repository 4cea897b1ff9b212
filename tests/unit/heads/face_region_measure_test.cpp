// The measure on painted pictures whose answer is worked out by hand. The band is 120 x 200 pixels
// and shrinks to 12 x 100, so that strip row k is the mean of band rows 2k and 2k + 1.
#include "heads/face_region_measure.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace qorocv {
namespace {

constexpr int kLeft = 50;
constexpr int kBandWidth = 120;
constexpr float kNoseBridgeY = 200.0F;

// BGR of a hue (0 to 179), full or as given.
cv::Scalar colour(int hue, int saturation = 255, int value = 255) {
  cv::Mat pixel(1, 1, CV_8UC3, cv::Scalar(hue, saturation, value));
  cv::cvtColor(pixel, pixel, cv::COLOR_HSV2BGR);
  const auto bgr = pixel.at<cv::Vec3b>(0, 0);
  cv::cvtColor(pixel, pixel, cv::COLOR_BGR2HSV);
  EXPECT_EQ(pixel.at<cv::Vec3b>(0, 0)[0], hue) << "no colour of exactly this hue";
  return {static_cast<double>(bgr[0]), static_cast<double>(bgr[1]), static_cast<double>(bgr[2])};
}

const cv::Scalar kBlue(255, 0, 0); // hue 120
const cv::Scalar kRed(0, 0, 255);  // hue 0

// A picture that is `above` down to row `border` and `below` under it.
cv::Mat twoColours(int border, const cv::Scalar& above = kBlue, const cv::Scalar& below = kRed) {
  cv::Mat picture(300, 300, CV_8UC3, below);
  picture.rowRange(0, border).setTo(above);
  return picture;
}

LandmarkSet landmarks(float noseBridgeY, float chinY) {
  LandmarkSet points(68);
  points[27] = {110.0F, noseBridgeY};
  points[8] = {112.0F, chinY};
  return points;
}

float measure(const cv::Mat& picture, float chinY = 260.0F,
              cv::Rect face = {kLeft, 150, kBandWidth, 130}) {
  return faceRegionMeasure(picture, face, landmarks(kNoseBridgeY, chinY));
}

constexpr float kNoseToChin = 60.0F; // with the chin at 260

TEST(FaceRegionMeasure, isTheHeightOfWhatIsNotBackground) {
  // Rows 0 to 59 of the strip are blue; 40 of 100 lie below.
  EXPECT_EQ(measure(twoColours(120)), 80.0F);
}

TEST(FaceRegionMeasure, isTheNoseToChinLengthWhereNoRowIsOfOneColour) {
  cv::Mat picture = twoColours(300);
  picture.colRange(kLeft + 60, 300).setTo(kRed);
  EXPECT_EQ(measure(picture), kNoseToChin);
}

TEST(FaceRegionMeasure, isZeroWhereEverythingIsBackground) {
  EXPECT_EQ(measure(twoColours(300)), 0.0F);
}

TEST(FaceRegionMeasure, endsAtTheLowestUniformRow) {
  cv::Mat picture = twoColours(100);
  picture.rowRange(140, 142).setTo(kBlue); // row 70 of the strip
  EXPECT_EQ(measure(picture), 58.0F);      // 29 of 100
}

TEST(FaceRegionMeasure, keepsThreeTimesTheNoseToChinLength) {
  // 45 of 100 rows are 90 pixels, exactly three times 30.
  EXPECT_EQ(measure(twoColours(110), kNoseBridgeY + 30.0F), 90.0F);
}

TEST(FaceRegionMeasure, isTheNoseToChinLengthBeyondThreeTimesThat) {
  EXPECT_EQ(measure(twoColours(110), kNoseBridgeY + 29.0F), 29.0F);
}

TEST(FaceRegionMeasure, isTheNoseToChinLengthWhereTheBandLeavesThePicture) {
  const cv::Mat picture = twoColours(120);
  EXPECT_EQ(measure(picture, 260.0F, {-5, 150, kBandWidth, 130}), kNoseToChin);
  EXPECT_EQ(measure(picture, 260.0F, {181, 150, kBandWidth, 130}), kNoseToChin);
  EXPECT_EQ(measure(picture, 260.0F, {180, 150, kBandWidth, 130}), 80.0F);
  EXPECT_EQ(measure(picture, 260.0F, {200, 150, 2147483600, 130}), kNoseToChin); // the sum wraps
  EXPECT_EQ(faceRegionMeasure(picture, {kLeft, 0, kBandWidth, 9}, landmarks(301.0F, 320.0F)),
            19.0F);
}

TEST(FaceRegionMeasure, isTheNoseToChinLengthWhereTheBandIsEmpty) {
  const cv::Mat picture = twoColours(120);
  EXPECT_EQ(measure(picture, 260.0F, {kLeft, 150, 0, 130}), kNoseToChin);
  for (const float noseBridgeY : {0.0F, 0.9F, -0.9F, -7.0F}) {
    EXPECT_EQ(faceRegionMeasure(picture, {kLeft, 0, kBandWidth, 9}, landmarks(noseBridgeY, 40.0F)),
              40.0F - noseBridgeY);
  }
}

TEST(FaceRegionMeasure, looksAtTheColumnsOfTheFaceOnly) {
  cv::Mat picture = twoColours(120);
  picture.colRange(0, kLeft).setTo(kRed);
  picture.colRange(kLeft + kBandWidth, 300).setTo(kRed);
  EXPECT_EQ(measure(picture), 80.0F);
}

TEST(FaceRegionMeasure, truncatesTheHeightOfTheBand) {
  EXPECT_EQ(
      faceRegionMeasure(twoColours(120), {kLeft, 150, kBandWidth, 130}, landmarks(200.75F, 260.0F)),
      80.0F);
}

TEST(FaceRegionMeasure, takesTheBackgroundsHueFromRowTen) {
  cv::Mat picture = twoColours(120);
  picture.rowRange(0, 20).setTo(kRed); // strip rows 0 to 9
  EXPECT_EQ(measure(picture), 80.0F);
  picture.rowRange(20, 22).setTo(kRed); // and row 10: now red is background
  EXPECT_EQ(measure(picture), 0.0F);
}

TEST(FaceRegionMeasure, takesTheBackgroundsHueFromColumnSix) {
  cv::Mat picture = twoColours(120);
  picture.rowRange(20, 22).setTo(kRed);
  picture(cv::Rect(kLeft + 60, 20, 10, 2)).setTo(kBlue);
  EXPECT_EQ(measure(picture), 80.0F);
  picture(cv::Rect(kLeft + 50, 20, 10, 2)).setTo(kBlue);
  picture(cv::Rect(kLeft + 60, 20, 10, 2)).setTo(kRed);
  EXPECT_EQ(measure(picture), 0.0F);
}

TEST(FaceRegionMeasure, takesHuesUpToTenAwayForBackground) {
  EXPECT_EQ(measure(twoColours(120, colour(60), colour(70))), 0.0F);
  EXPECT_EQ(measure(twoColours(120, colour(60), colour(50))), 0.0F);
  EXPECT_EQ(measure(twoColours(120, colour(60), colour(71))), 80.0F);
  EXPECT_EQ(measure(twoColours(120, colour(60), colour(49))), 80.0F);
}

TEST(FaceRegionMeasure, doesNotWrapRoundTheHueCircle) {
  EXPECT_EQ(measure(twoColours(120, colour(3), colour(178))), 80.0F);
  EXPECT_EQ(measure(twoColours(120, colour(175), colour(2))), 80.0F);
  EXPECT_EQ(measure(twoColours(120, colour(3), colour(0))), 0.0F);
  EXPECT_EQ(measure(twoColours(120, colour(175), colour(179))), 0.0F);
}

TEST(FaceRegionMeasure, doesNotMindTheValue) {
  EXPECT_EQ(measure(twoColours(120, colour(120), colour(120, 255, 20))), 0.0F);
}

TEST(FaceRegionMeasure, doesNotMindTheSaturation) {
  const cv::Scalar paleBlue(250, 200, 200);
  EXPECT_EQ(measure(twoColours(120, colour(120), paleBlue)), 0.0F);
}

TEST(FaceRegionMeasure, scansAStripThatRoundingMadeNinetyNineRowsHigh) {
  // 198 * (100.0f / 198) is just under 100. Rows 0 to 59 of 99 are blue, 39 lie below; of 100 rows
  // it would have been 40, and 79.2 pixels.
  EXPECT_EQ(
      faceRegionMeasure(twoColours(120), {kLeft, 150, kBandWidth, 130}, landmarks(198.0F, 260.0F)),
      78.0F);
}

TEST(FaceRegionMeasure, takesColumnSixOfAStripThatRoundingMadeElevenColumnsWide) {
  // 74 * (12.0f / 74) is just under 12. Column 6 of 11 lies on columns 43 and 44 of the band; of 12
  // it would lie on 39 and 40.
  cv::Mat picture = twoColours(120);
  picture.rowRange(20, 22).setTo(kRed);
  picture(cv::Rect(kLeft + 43, 20, 2, 2)).setTo(kBlue);
  EXPECT_EQ(measure(picture, 260.0F, {kLeft, 150, 74, 130}), 80.0F);
}

TEST(FaceRegionMeasure, leavesThePictureAsItWas) {
  const cv::Mat picture = twoColours(120);
  const cv::Mat before = picture.clone();
  measure(picture);
  EXPECT_EQ(cv::norm(picture, before, cv::NORM_INF), 0.0);
}

} // namespace
} // namespace qorocv
