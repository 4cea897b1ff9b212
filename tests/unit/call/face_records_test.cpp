#include "frame/face_records.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qorocv {
namespace {

constexpr double kCanary = -12345.5;
constexpr Fractions kWholePicture{1.0F, 1000.0F, 500.0F};

// Landmark i at (i, 100 + i).
LandmarkSet numberedLandmarks() {
  LandmarkSet landmarks;
  for (int i = 0; i < 68; ++i) {
    landmarks.emplace_back(static_cast<float>(i), static_cast<float>(100 + i));
  }
  return landmarks;
}

struct Written {
  std::vector<double> results;
  int count;
};

Written write(std::size_t faces, RecordPoints points, std::size_t room) {
  std::vector<double> results(room, kCanary);
  std::vector<cv::Rect> boxes;
  for (std::size_t k = 0; k < faces; ++k) {
    boxes.emplace_back(static_cast<int>(10 * k), 20, 31, 41);
  }
  const std::vector<LandmarkSet> sets(faces, numberedLandmarks());
  const int count = writeRecords(results.data(), cv::Mat(), boxes, sets, points, kWholePicture);
  return {results, count};
}

TEST(Fractions, divideByTheScaleFirstAndThenByTheSideInSinglePrecision) {
  // 1000 pixels scaled to 333: the product of both divisors, or double precision on the way, would
  // give 0x1.899c1p-9.
  const Fractions fractions{0.333F, 1000.0F, 1000.0F};
  EXPECT_EQ(fractions.ofWidth(1.0F), 0x1.899c0ep-9);
  EXPECT_EQ(fractions.ofHeight(16.0F), 0x1.899c0ep-5);
}

TEST(Fractions, widenTheFloatAsItIs) {
  const Fractions fractions{0.25F, 1600.0F, 1200.0F};
  EXPECT_EQ(fractions.ofWidth(100.0F), 0.25);
  EXPECT_EQ(fractions.ofHeight(50.0F), 0x1.555556p-3); // a sixth, as a float
}

TEST(WriteRecords, putsTheBoxAndTwoLandmarksIntoEightValues) {
  const Written written = write(1, twoLandmarks, 10);
  EXPECT_EQ(written.count, 9);
  const double expected[] = {1.0,
                             0.0F / 1000.0F,
                             20.0F / 500.0F,
                             31.0F / 1000.0F,
                             61.0F / 500.0F,
                             27.0F / 1000.0F,
                             127.0F / 500.0F,
                             8.0F / 1000.0F,
                             108.0F / 500.0F,
                             kCanary};
  for (std::size_t i = 0; i < 10; ++i) {
    EXPECT_EQ(written.results[i], expected[i]) << i;
  }
}

TEST(WriteRecords, putsAll68LandmarksInto140Values) {
  const Written written = write(1, allLandmarks, 142);
  EXPECT_EQ(written.count, 141);
  EXPECT_EQ(written.results[5], 0.0);
  EXPECT_EQ(written.results[6], static_cast<double>(100.0F / 500.0F));
  EXPECT_EQ(written.results[139], static_cast<double>(67.0F / 1000.0F));
  EXPECT_EQ(written.results[140], static_cast<double>(167.0F / 500.0F));
  EXPECT_EQ(written.results[141], kCanary);
}

TEST(WriteRecords, takesTheMiddleAndTheBottomOfABoxWithoutLandmarks) {
  const Written written = write(1, twoBoxPoints, 9);
  EXPECT_EQ(written.count, 9);
  EXPECT_EQ(written.results[5], static_cast<double>(15.0F / 1000.0F)); // half of 31, truncated
  EXPECT_EQ(written.results[6],
            static_cast<double>(40.0F / 500.0F)); // 20 and half of 41, truncated
  EXPECT_EQ(written.results[7], static_cast<double>(15.0F / 1000.0F));
  EXPECT_EQ(written.results[8], static_cast<double>(61.0F / 500.0F));
}

TEST(WriteRecords, writesNoMoreThanThirtyRecordsButTheWholeNumber) {
  for (const std::size_t faces : {std::size_t{31}, std::size_t{35}}) {
    const Written written = write(faces, twoLandmarks, 242);
    EXPECT_EQ(written.count, 241);
    EXPECT_EQ(written.results[0], static_cast<double>(faces));
    EXPECT_EQ(written.results[233],
              static_cast<double>(290.0F / 1000.0F)); // the thirtieth box's left
    EXPECT_EQ(written.results[241], kCanary);
  }
}

TEST(WriteRecords, writesThirtyFacesWhole) {
  const Written written = write(30, allLandmarks, 4202);
  EXPECT_EQ(written.count, 4201);
  EXPECT_NE(written.results[4200], kCanary);
  EXPECT_EQ(written.results[4201], kCanary);
}

TEST(WriteRecords, writesOnlyTheNumberForNoFace) {
  const Written written = write(0, twoLandmarks, 2);
  EXPECT_EQ(written.count, 1);
  EXPECT_EQ(written.results[0], 0.0);
  EXPECT_EQ(written.results[1], kCanary);
}

} // namespace
} // namespace qorocv
