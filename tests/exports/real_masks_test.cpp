// Person masks and tiles with real models on real photographs.
#include "support/shared_files.h"
#include "support/slot_exports.h"

#include <gtest/gtest.h>
#include <opencv2/core/utility.hpp>

#include <algorithm>

namespace qorocv::testing {
namespace {

class RealMasks : public RealModelsTest {};

// From one column or row of a mask to another, as fractions.
struct Columns {
  double from, to;
};
struct Rows {
  double from, to;
};
constexpr Columns kAllColumns{0, 1};
constexpr Rows kAllRows{0, 1};

/// The share of persons in a part of a mask.
double personShare(const std::vector<unsigned char>& mask, Columns columns, Rows rows) {
  constexpr int side = QOROCV460_MASK_SIDE;
  const cv::Mat pixels(side, side, CV_8UC4, const_cast<unsigned char*>(mask.data()));
  const auto pixel = [](double fraction) { return static_cast<int>(fraction * side); };
  const cv::Rect part(cv::Point(pixel(columns.from), pixel(rows.from)),
                      cv::Point(pixel(columns.to), pixel(rows.to)));
  cv::Mat blue;
  cv::extractChannel(pixels(part), blue, 0);
  return static_cast<double>(cv::countNonZero(blue)) / part.area();
}

constexpr double kNearlyAll = 0.95;
constexpr double kHardlyAny = 0.05;

TEST_F(RealMasks, coverTheAstronaut) {
  const auto mask = detect(kDunMask01, realPhoto("astronaut.jpg")).mask.inside();
  EXPECT_GT(personShare(mask, Columns{0.38, 0.5}, Rows{0.15, 0.33}), kNearlyAll) << "her face";
  EXPECT_GT(personShare(mask, Columns{0.2, 0.5}, Rows{0.5, 1}), kNearlyAll) << "her suit";
}

TEST_F(RealMasks, leaveTheShuttleBehindTheAstronautOut) {
  const auto mask = detect(kDunMask01, realPhoto("astronaut.jpg")).mask.inside();
  EXPECT_LT(personShare(mask, Columns{0.65, 1}, Rows{0, 0.5}), kHardlyAny);
}

TEST_F(RealMasks, cutTheAstronautOutOfHerCloseUp) {
  const Outcome outcome = detect(kDunMask02, realPhoto("astronaut.jpg"));
  ASSERT_EQ(outcome.returned, 1);
  const auto closeUp = outcome.cropMask.inside();
  EXPECT_GT(personShare(closeUp, Columns{0.45, 0.65}, Rows{0.25, 0.5}), kNearlyAll) << "her face";
  EXPECT_LT(personShare(closeUp, Columns{0, 0.25}, Rows{0, 0.4}), kHardlyAny) << "left of her";
  EXPECT_LT(personShare(closeUp, Columns{0.85, 1}, Rows{0, 0.4}), kHardlyAny) << "right of her";
}

TEST_F(RealMasks, coverBothPeopleOfTheCouple) {
  if (!haveRealPhoto("couple.jpg")) {
    GTEST_SKIP() << "couple.jpg does not lie beside the checkout";
  }
  const Outcome outcome = detect(kDunMask01, realPhoto("couple.jpg"));
  const auto mask = outcome.mask.inside();
  constexpr double least = 0.45; // of the photograph
  EXPECT_GT(personShare(mask, kAllColumns, kAllRows), least);
  ASSERT_EQ(outcome.count, 21);
  for (const std::size_t record : {1U, 11U}) { // the faces
    const Columns columns{outcome.results[record], outcome.results[record + 2]};
    const Rows rows{outcome.results[record + 1], outcome.results[record + 3]};
    EXPECT_GT(personShare(mask, columns, rows), kNearlyAll);
  }
}

TEST_F(RealMasks, coverLittleBesideTheCouple) {
  if (!haveRealPhoto("couple.jpg")) {
    GTEST_SKIP() << "couple.jpg does not lie beside the checkout";
  }
  const auto mask = detect(kDunMask01, realPhoto("couple.jpg")).mask.inside();
  constexpr double most = 0.70; // of the photograph
  EXPECT_LT(personShare(mask, kAllColumns, kAllRows), most);
  EXPECT_LT(personShare(mask, Columns{0, 0.2}, Rows{0, 0.5}), kHardlyAny) << "left of them";
  EXPECT_LT(personShare(mask, Columns{0.8, 1}, Rows{0, 0.5}), kHardlyAny) << "right of them";
}

TEST_F(RealMasks, agreeBetweenTheExportsWhereTheyMust) {
  for (const char* const name :
       photosAtHand({"astronaut.jpg", "couple.jpg", "painting.jpg", "player.jpg"})) {
    const auto path = realPhoto(name);
    const Outcome first = detect(kDunMask01, path);
    const Outcome second = detect(kDunMask02, path);
    const Outcome haar = detect(kHaarMask02, path);
    EXPECT_EQ(first.view, second.view) << name;
    EXPECT_EQ(first.mask, second.mask) << name;
    EXPECT_EQ(first.view, haar.view) << name;
    EXPECT_EQ(first.mask, haar.mask) << name;
    EXPECT_EQ(first.returned, second.returned) << name;
    ASSERT_EQ(first.count, second.count) << name;
    const bool closeUp = second.returned == 1;
    EXPECT_NE(closeUp, second.cropMask.isUntouched()) << name;
    for (std::size_t i = 0; i < static_cast<std::size_t>(first.count); ++i) {
      const bool headsCentre = i == 10;
      if (!closeUp || !headsCentre) {
        EXPECT_EQ(first.results[i], second.results[i]) << name << ' ' << i;
      }
    }
  }
}

TEST_F(RealMasks, findTheAstronautInTheTileThatShowsHerFace) {
  const CallOptions upperLeft = inColumn(1, Of{2}, inRow(1, Of{2}));
  const CallOptions lowerRight = inColumn(2, Of{2}, inRow(2, Of{2}));
  EXPECT_EQ(detect(kDunTile, realPhoto("astronaut.jpg"), upperLeft).returned, 1);
  EXPECT_EQ(detect(kDunTile, realPhoto("astronaut.jpg"), lowerRight).returned, 0);
}

TEST_F(RealMasks, findFarMoreOfTheCrowdInTiles) {
  if (!haveRealPhoto("crowd.jpg")) {
    GTEST_SKIP() << "crowd.jpg does not lie beside the checkout";
  }
  const int threads = cv::getNumThreads();
  cv::setNumThreads(1);
  int found = 0;
  for (int row = 1; row <= 4; ++row) {
    for (int column = 1; column <= 4; ++column) {
      const CallOptions options = inColumn(column, Of{4}, inRow(row, Of{4}));
      found += detect(kDunTile, realPhoto("crowd.jpg"), options).returned;
    }
  }
  cv::setNumThreads(threads);
  EXPECT_EQ(found, 116);
}

} // namespace
} // namespace qorocv::testing
