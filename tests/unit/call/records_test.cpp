#include "call/records.h"

#include <gtest/gtest.h>

#include <stdexcept>

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

// Face k has its box at (10 k, 20), 31 x 41.
cv::Rect numberedBox(std::size_t k) {
  return {static_cast<int>(10 * k), 20, 31, 41};
}

template <typename RecordOf>
Written writeInto(std::size_t room, std::size_t faces, RecordOf recordOf) {
  std::vector<double> results(room, kCanary);
  const int count = writeRecords(results.data(), faces, kWholePicture, recordOf);
  return {results, count};
}

Written write(std::size_t faces, FaceRecord (*record)(const Face&), std::size_t room) {
  const LandmarkSet landmarks = numberedLandmarks();
  return writeInto(room, faces, [&](std::size_t k) {
    return record({cv::Mat(), numberedBox(k), landmarks});
  });
}

TEST(Fractions, divideInSinglePrecisionByTheScaleBeforeTheSide) {
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
  const Written written = write(1, twoLandmarkRecord, 10);
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
  const Written written = write(1, allLandmarkRecord, 142);
  EXPECT_EQ(written.count, 141);
  EXPECT_EQ(written.results[5], 0.0);
  EXPECT_EQ(written.results[6], static_cast<double>(100.0F / 500.0F));
  EXPECT_EQ(written.results[139], static_cast<double>(67.0F / 1000.0F));
  EXPECT_EQ(written.results[140], static_cast<double>(167.0F / 500.0F));
  EXPECT_EQ(written.results[141], kCanary);
}

TEST(WriteRecords, takesTheMiddleAndTheBottomOfABoxWithoutLandmarks) {
  const Written written = writeInto(9, 1, [](std::size_t k) { return boxRecord(numberedBox(k)); });
  EXPECT_EQ(written.count, 9);
  EXPECT_EQ(written.results[5], static_cast<double>(15.0F / 1000.0F)); // half of 31, truncated
  EXPECT_EQ(written.results[6],
            static_cast<double>(40.0F / 500.0F)); // 20 and half of 41, truncated
  EXPECT_EQ(written.results[7], static_cast<double>(15.0F / 1000.0F));
  EXPECT_EQ(written.results[8], static_cast<double>(61.0F / 500.0F));
}

TEST(WriteRecords, writesNoMoreThanThirtyRecordsButTheWholeNumber) {
  for (const std::size_t faces : {std::size_t{31}, std::size_t{35}}) {
    const Written written = write(faces, twoLandmarkRecord, 242);
    EXPECT_EQ(written.count, 241);
    EXPECT_EQ(written.results[0], static_cast<double>(faces));
    EXPECT_EQ(written.results[233],
              static_cast<double>(290.0F / 1000.0F)); // the thirtieth box's left
    EXPECT_EQ(written.results[241], kCanary);
  }
}

TEST(WriteRecords, writesThirtyFacesWhole) {
  const Written written = write(30, allLandmarkRecord, 4202);
  EXPECT_EQ(written.count, 4201);
  EXPECT_NE(written.results[4200], kCanary);
  EXPECT_EQ(written.results[4201], kCanary);
}

TEST(WriteRecords, writesOnlyTheNumberForNoFace) {
  const Written written = write(0, twoLandmarkRecord, 2);
  EXPECT_EQ(written.count, 1);
  EXPECT_EQ(written.results[0], 0.0);
  EXPECT_EQ(written.results[1], kCanary);
}

TEST(WriteRecords, writesNothingOfARecordWhosePointsAreNotToBeHad) {
  std::vector<double> results(20, kCanary);
  const auto secondThrows = [](std::size_t k) {
    if (k == 1) {
      throw std::runtime_error("no points");
    }
    return boxRecord(numberedBox(k));
  };
  EXPECT_THROW(writeRecords(results.data(), 2, kWholePicture, secondThrows), std::runtime_error);
  EXPECT_EQ(results[0], 2.0);
  EXPECT_NE(results[8], kCanary);
  for (std::size_t i = 9; i < results.size(); ++i) {
    EXPECT_EQ(results[i], kCanary) << i;
  }
}

TEST(HeadCentreRecord, putsTheCentreBehindNoseBridgeAndChin) {
  const LandmarkSet landmarks = numberedLandmarks();
  const FaceRecord record = headCentreRecord({cv::Mat(), numberedBox(1), landmarks}, 20.0F);
  // The nose bridge is at y 127, the chin at 108: halfway between 107 and 108, truncated.
  const std::vector<cv::Point2f> expected{landmarks[27], landmarks[8], {27.0F, 107.0F}};
  EXPECT_EQ(record.box, numberedBox(1));
  EXPECT_EQ(record.points, expected);
}

TEST(HeadCentreRecord, goesByTheColoursAboveTheFaceWhereNoMaskIsMade) {
  // The background ends 80 pixels above the nose bridge.
  cv::Mat picture(300, 200, CV_8UC3, cv::Scalar(200, 40, 40));
  picture.rowRange(120, 300).setTo(cv::Scalar(40, 40, 200));
  LandmarkSet landmarks(kLandmarkCount);
  landmarks[kNoseBridge] = {110.0F, 200.0F};
  landmarks[kChin] = {115.0F, 261.0F};
  const FaceRecord record = headCentreRecordByColour({picture, {60, 150, 96, 130}, landmarks});
  ASSERT_EQ(record.points.size(), 3U);
  EXPECT_EQ(record.points[2], cv::Point2f(110.0F, 190.0F));
}

} // namespace
} // namespace qorocv
