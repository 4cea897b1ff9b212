// The tile export through the C interface, on made models.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <atomic>

namespace qorocv::testing {
namespace {

#ifndef _WIN32 // where the library has an OpenCV of its own, out of a test's reach
/// Counts the blocks of at least `least` bytes that pictures take while it lives.
class LargeBlocks : public cv::MatAllocator {
public:
  explicit LargeBlocks(std::size_t least) : least_(least) { cv::Mat::setDefaultAllocator(this); }
  ~LargeBlocks() override { cv::Mat::setDefaultAllocator(standard_); }
  LargeBlocks(const LargeBlocks&) = delete;
  LargeBlocks& operator=(const LargeBlocks&) = delete;

  int count() const { return count_; }

  // What is allocated here is the standard allocator's own, and goes back to it.
  cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, std::size_t* step,
                         cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
    cv::UMatData* const block = standard_->allocate(dims, sizes, type, data, step, flags, usage);
    count_ += block->size >= least_ ? 1 : 0;
    return block;
  }
  bool allocate(cv::UMatData* block, cv::AccessFlag flags,
                cv::UMatUsageFlags usage) const override {
    return standard_->allocate(block, flags, usage);
  }
  void deallocate(cv::UMatData* block) const override { standard_->deallocate(block); }

private:
  cv::MatAllocator* const standard_ = cv::Mat::getStdAllocator();
  std::size_t least_;
  mutable std::atomic<int> count_{0};
};
#endif

const CallOptions kMiddleRight = inColumn(2, Of{2}, inRow(2, Of{3}));
const CallOptions kLowerLeft = inColumn(1, Of{2}, inRow(2, Of{2}));
const CallOptions kUpperLeft = inColumn(1, Of{2}, inRow(1, Of{2}));
const CallOptions kLowerRight = inColumn(2, Of{2}, inRow(2, Of{2}));
const CallOptions kOnlyTile = inColumn(1, Of{1}, inRow(1, Of{1}));

class TileExport : public ::testing::Test {
protected:
  void useModels(const std::vector<DetectionRow>& rows) const {
    MadeModels models;
    models.caffeRows = rows;
    writeMadeModels(directory_.path(), models);
    ASSERT_EQ(initModelsAtPath(directory_.asPrefix().c_str()), 0);
  }
  std::filesystem::path photo(const cv::Mat& picture) const {
    return writePicture(directory_ / "photo.png", picture);
  }

  TemporaryDirectory directory_;
};

TEST_F(TileExport, reportsThePhotographsSize) {
  useModels({});
  const auto path = photo(texturedPicture({1000, 900}));
  const Outcome outcome = detect(kDunTile, path, kMiddleRight);
  EXPECT_EQ(outcome.width, 1000);
  EXPECT_EQ(outcome.height, 900);
}

TEST_F(TileExport, reportsWhereTheTileLies) {
  useModels({});
  const auto path = photo(texturedPicture({1000, 900}));
  const Outcome outcome = detect(kDunTile, path, kMiddleRight);
  EXPECT_EQ(outcome.tileLeft, 250);
  EXPECT_EQ(outcome.tileTop, 300);
  EXPECT_EQ(outcome.tileWidth, 750);
  EXPECT_EQ(outcome.tileHeight, 450);
}

TEST_F(TileExport, countsTheFacesOfTheTile) {
  useModels({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  const auto path = photo(texturedPicture({1000, 900}));
  const Outcome outcome = detect(kDunTile, path, kMiddleRight);
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(outcome.count, 11);
}

TEST_F(TileExport, givesFractionsOfTheTileWhateverTheScale) {
  useModels({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  const auto path = photo(texturedPicture({1024, 1024}));
  for (const int maxSide : {0, 384, 1536}) { // of a tile of 768 x 768
    const Outcome outcome = detect(kDunTile, path, scaledTo(maxSide, kLowerLeft));
    ASSERT_EQ(outcome.count, 11) << maxSide;
    const std::vector<double> box(outcome.results.begin() + 1, outcome.results.begin() + 5);
    EXPECT_EQ(box, (std::vector<double>{0.25, 0.25, 0.75, 0.75})) << maxSide;
  }
}

TEST_F(TileExport, looksAtTheTilesPixelsOnly) {
  // The box's left edge is the tile's blue, less the mean, doubled, over 1024.
  useModels({{1.F, {0.F, {1 / 1024.F, 0, 0}}, 0.F, 1.F, 1.F}});
  cv::Mat picture(1024, 1024, CV_8UC3, cv::Scalar(255, 180, 140));
  picture(cv::Rect(0, 0, 768, 768)).setTo(cv::Scalar(130, 180, 140));
  const Outcome outcome = detect(kDunTile, photo(picture), kUpperLeft);
  EXPECT_EQ(outcome.results[1], 39.0 / 768); // 52 / 1024 of 768 pixels
}

TEST_F(TileExport, isTheHeadCentreExportOnAGridOfOneTile) {
  useModels({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  const auto path = photo(pictureWithFace());
  EXPECT_EQ(records(detect(kDunTile, path, scaledTo(500, kOnlyTile))),
            records(detect(kDunTr02, path, scaledTo(500))));
}

TEST_F(TileExport, isTheHeadCentreExportOnTheTileCutOut) {
  useModels({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  const cv::Mat picture = texturedPicture({1000, 900});
  const Outcome outcome = detect(kDunTile, photo(picture), scaledTo(300, kMiddleRight));
  const auto cutOut = writePicture(directory_ / "tile.png", picture(cv::Rect(250, 300, 750, 450)));
  EXPECT_EQ(records(outcome), records(detect(kDunTr02, cutOut, scaledTo(300))));
}

TEST_F(TileExport, givesTheLastTileForCellsBeyondTheGrid) {
  useModels({});
  const auto path = photo(texturedPicture({1000, 900}));
  const Outcome last = detect(kDunTile, path, inColumn(2, Of{2}, inRow(3, Of{3})));
  const Outcome beyond = detect(kDunTile, path, inColumn(9, Of{2}, inRow(1000, Of{3})));
  EXPECT_TRUE(sameOutputs(beyond, last));
}

#ifndef _WIN32
TEST_F(TileExport, takesNoCopyOfALargePhotographOrItsTile) {
  useModels({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  const auto path = photo(plainPicture({4000, 3000}));
  const CallOptions quarter = scaledTo(400, kLowerRight);
  constexpr std::size_t bytesOfTile = 3 * 3000 * 2250;
  const LargeBlocks blocks(bytesOfTile);
  const Outcome outcome = detect(kDunTile, path, quarter);
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(outcome.tileWidth, 3000);
  EXPECT_EQ(outcome.tileHeight, 2250);
  EXPECT_EQ(blocks.count(), 1); // the photograph as it was read
}
#endif

TEST_F(TileExport, throwsWhereThereIsNoTileHavingSaidWhatItKnows) {
  useModels({});
  const std::string path = photo(texturedPicture({1000, 900})).string();
  for (const CallOptions& options :
       {inColumn(1, Of{0}, inRow(1, Of{3})), inColumn(1, Of{2}, inRow(1, Of{0})),
        inColumn(0, Of{0}, inRow(0, Of{0})), inColumn(-5, Of{2}, inRow(1, Of{3}))}) {
    const Outcome outcome = call([&](const HostVariables& host) {
      EXPECT_THROW(kDunTile.call(path.c_str(), host, options), cv::Exception);
      return 0;
    });
    EXPECT_EQ(outcome.width, 1000);
    EXPECT_EQ(outcome.height, 900);
    EXPECT_EQ(outcome.tileLeft, 0);
    EXPECT_EQ(outcome.tileTop, 0);
    EXPECT_EQ(outcome.tileWidth, kUntouchedSize);
    EXPECT_EQ(outcome.tileHeight, kUntouchedSize);
    EXPECT_EQ(outcome.count, 1);
    EXPECT_EQ(outcome.written(), 0U);
  }
}

TEST_F(TileExport, writesThirtyOfThirtyOneFacesInOneTile) {
  std::vector<DetectionRow> rows;
  for (int i = 0; i < 31; ++i) {
    const float left = static_cast<float>(i % 8) / 8;
    const float top = static_cast<float>(i / 8) / 4;
    rows.push_back({0.875F, left, top, left + 0.0625F, top + 0.125F});
  }
  useModels(rows);
  const Outcome outcome = detect(kDunTile, photo(texturedPicture({1024, 1024})), kLowerRight);
  EXPECT_EQ(outcome.returned, 31);
  EXPECT_EQ(outcome.results[0], 31.0);
  EXPECT_EQ(outcome.count, 301);
  EXPECT_EQ(outcome.written(), 301U);
}

} // namespace
} // namespace qorocv::testing
