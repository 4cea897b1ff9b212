#include "drawing/landmark_drawing.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cmath>

namespace qorocv {
namespace {

const cv::Vec3b kLightBlue(255, 200, 0);
const cv::Vec3b kRed(0, 0, 255);
const cv::Vec3b kBlack(0, 0, 0);

// The scales at which the landmarks were found, and two of the modes.
constexpr float kUnscaled = 1.0F;
constexpr float kTwice = 2.0F;
constexpr int kInLightBlue = 1;
constexpr int kInRed = 2;

cv::Mat blackPicture() {
  return cv::Mat::zeros(200, 200, CV_8UC3);
}

bool isPainted(const cv::Mat& picture, cv::Rect where) {
  return cv::sum(picture(where))[0] + cv::sum(picture(where))[2] > 0;
}

cv::Vec3b pixel(const cv::Mat& picture, int x, int y) {
  return picture.at<cv::Vec3b>(y, x);
}

// Every run lies on a row of its own, 20 apart, its points 10 apart from x = 10 on; all else at the
// corner (199, 199).
struct RunOnARow {
  int first;
  int last;
  bool closed;
};

std::vector<cv::Point2f> runOnARow(const RunOnARow& run, float x, float y) {
  std::vector<cv::Point2f> points(68, cv::Point2f(-500.0F, 180.0F));
  for (int i = run.first; i <= run.last; ++i) {
    points[static_cast<std::size_t>(i)] = {x + 10.0F * static_cast<float>(i - run.first), y};
  }
  return points;
}

constexpr RunOnARow kRuns[] = {{0, 16, false},  {17, 21, false}, {22, 26, false},
                               {27, 30, false}, {30, 35, true},  {36, 41, true},
                               {42, 47, true},  {48, 59, true},  {60, 67, true}};

TEST(DrawLandmarks, drawsEachRunOfAFullSetFromItsFirstToItsLastPoint) {
  for (const RunOnARow& run : kRuns) {
    cv::Mat picture = blackPicture();
    drawLandmarks(picture, runOnARow(run, 10.0F, 100.0F), kUnscaled, kInLightBlue);
    const int end = 10 + 10 * (run.last - run.first);
    for (int x = 10; x <= end; ++x) {
      EXPECT_EQ(pixel(picture, x, 100), kLightBlue) << "run " << run.first << " at " << x;
    }
  }
}

TEST(DrawLandmarks, leavesGapsBetweenTheRuns) {
  // Neighbouring runs share no line: brow to brow, eye to eye, lip to lip.
  std::vector<cv::Point2f> points(68, cv::Point2f(10.0F, 10.0F));
  for (std::size_t i = 22; i <= 26; ++i) {
    points[i] = {150.0F, 150.0F};
  }
  cv::Mat picture = blackPicture();
  drawLandmarks(picture, points, kUnscaled, kInLightBlue);
  EXPECT_FALSE(isPainted(picture, {20, 20, 120, 120}));
}

TEST(DrawLandmarks, closesExactlyTheRunsThatGoRound) {
  for (const RunOnARow& run : kRuns) {
    // A right angle: the closing line would run across from the end to the start.
    std::vector<cv::Point2f> points(68, cv::Point2f(-500.0F, 180.0F));
    for (int i = run.first; i <= run.last; ++i) {
      points[static_cast<std::size_t>(i)] = i == run.first  ? cv::Point2f(20.0F, 20.0F)
                                            : i == run.last ? cv::Point2f(180.0F, 180.0F)
                                                            : cv::Point2f(20.0F, 180.0F);
    }
    cv::Mat picture = blackPicture();
    drawLandmarks(picture, points, kUnscaled, kInLightBlue);
    EXPECT_EQ(isPainted(picture, {95, 95, 10, 10}), run.closed) << "run " << run.first;
  }
}

TEST(DrawLandmarks, pointThirtyJoinsTheBridgeAndTheLowerNose) {
  std::vector<cv::Point2f> points(68, cv::Point2f(-500.0F, 180.0F));
  points[29] = {100.0F, 20.0F};
  points[30] = {100.0F, 100.0F};
  points[31] = {100.0F, 180.0F};
  cv::Mat picture = blackPicture();
  drawLandmarks(picture, points, kUnscaled, kInLightBlue);
  EXPECT_EQ(pixel(picture, 100, 60), kLightBlue);
  EXPECT_EQ(pixel(picture, 100, 140), kLightBlue);
}

TEST(DrawLandmarks, everyModeButOneIsRed) {
  for (const int mode : {kInRed, 0, -1}) {
    cv::Mat picture = blackPicture();
    drawLandmarks(picture, runOnARow({0, 16, false}, 10.0F, 100.0F), kUnscaled, mode);
    EXPECT_EQ(pixel(picture, 50, 100), kRed) << mode;
  }
}

TEST(DrawLandmarks, dividesByTheScale) {
  cv::Mat picture = blackPicture();
  drawLandmarks(picture, runOnARow({0, 4, false}, 20.0F, 101.0F), kTwice, kInLightBlue);
  EXPECT_EQ(pixel(picture, 20, 50), kLightBlue);
  EXPECT_EQ(pixel(picture, 20, 101), kBlack);
}

TEST(DrawLandmarks, truncatesWhatTheScaleLeaves) {
  cv::Mat picture = blackPicture();
  // (20, 101) / 2 is (10, 50.5), drawn at (10, 50).
  drawLandmarks(picture, runOnARow({0, 4, false}, 20.0F, 101.0F), kTwice, kInLightBlue);
  cv::Mat expected = blackPicture();
  drawLandmarks(expected, runOnARow({0, 4, false}, 20.0F, 100.0F), kTwice, kInLightBlue);
  EXPECT_EQ(cv::norm(picture, expected, cv::NORM_INF), 0.0);
}

const std::vector<cv::Point2f> kFivePoints{{20, 20}, {60, 20}, {100, 20}, {140, 20}, {180, 20}};

void expectDotsOnFivePoints(const cv::Mat& picture) {
  for (int x = 20; x <= 180; x += 40) {
    EXPECT_EQ(pixel(picture, x, 20), kLightBlue);
    EXPECT_EQ(pixel(picture, x + 3, 20), kLightBlue);
    EXPECT_EQ(pixel(picture, x + 4, 20), kBlack);
    EXPECT_EQ(pixel(picture, x, 17), kLightBlue);
    EXPECT_EQ(pixel(picture, x, 16), kBlack);
  }
}

TEST(DrawLandmarks, drawsADotOnEveryPointOfAnotherSet) {
  cv::Mat picture = blackPicture();
  drawLandmarks(picture, kFivePoints, kUnscaled, kInLightBlue);
  expectDotsOnFivePoints(picture);
}

TEST(DrawLandmarks, drawsTheSameDotsAtEveryScale) {
  cv::Mat picture = blackPicture();
  drawLandmarks(picture, kFivePoints, kTwice, kInLightBlue);
  expectDotsOnFivePoints(picture);
}

TEST(DrawLandmarks, drawsTheSameDotsInEveryMode) {
  cv::Mat picture = blackPicture();
  drawLandmarks(picture, kFivePoints, kTwice, kInRed);
  expectDotsOnFivePoints(picture);
}

TEST(DrawLandmarks, roundsADotsCentreHalfToEven) {
  cv::Mat picture = blackPicture();
  drawLandmarks(picture, {{20.5F, 61.5F}}, kUnscaled, kInLightBlue);
  EXPECT_EQ(pixel(picture, 17, 62), kLightBlue); // centre (20, 62)
  EXPECT_EQ(pixel(picture, 24, 62), kBlack);
}

TEST(DrawLandmarks, drawsNothingForAnEmptySet) {
  cv::Mat picture = blackPicture();
  drawLandmarks(picture, {}, kUnscaled, kInLightBlue);
  EXPECT_FALSE(isPainted(picture, {0, 0, 200, 200}));
}

TEST(DrawLandmarkPolyline, isAnAntiAliasedLineOfTwoPixels) {
  cv::Mat picture = blackPicture();
  drawLandmarkPolyline(picture, {{10, 10}, {190, 100}}, 0, 1, false, kUnscaled, kInLightBlue);
  cv::Mat expected = blackPicture();
  cv::line(expected, {10, 10}, {190, 100}, cv::Scalar(255, 200, 0), 2, cv::LINE_AA);
  EXPECT_EQ(cv::norm(picture, expected, cv::NORM_INF), 0.0);
}

TEST(DrawLandmarkPolyline, drawsNothingBackwards) {
  cv::Mat picture = blackPicture();
  drawLandmarkPolyline(picture, {{10, 10}, {190, 100}}, 1, 0, false, kUnscaled, kInLightBlue);
  EXPECT_FALSE(isPainted(picture, {0, 0, 200, 200}));
}

} // namespace
} // namespace qorocv
