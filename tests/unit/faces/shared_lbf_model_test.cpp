#include "faces/shared_lbf_model.h"
#include "make_models/made_lbf_model.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>
#include <variant>

namespace qorocv {
namespace {

using testing::MadeLbfModel;

class SharedLbfModel : public ::testing::Test {
protected:
  std::string path(const char* name = "model.yaml") const { return (directory_ / name).string(); }

  void write(const MadeLbfModel& model, const char* name = "model.yaml") const {
    std::ofstream(path(name), std::ios::binary) << textOf(model);
  }

  testing::TemporaryDirectory directory_;
};

constexpr MadeLbfModel kModel{1, 1, 2};

MadeLbfModel otherModelOfTheSameSize() {
  MadeLbfModel other = kModel;
  other.seed = 461;
  return other;
}

TEST_F(SharedLbfModel, isOneForTheSameFile) {
  write(kModel);
  EXPECT_EQ(sharedLbfModel(path()), sharedLbfModel(path()));
}

TEST_F(SharedLbfModel, isOneForFilesOfTheSameContent) {
  write(kModel);
  write(kModel, "copy.yaml");
  const auto model = sharedLbfModel(path());
  EXPECT_EQ(sharedLbfModel(path("copy.yaml")), model);
}

TEST_F(SharedLbfModel, isAnotherForAFileThatHasChanged) {
  write(kModel);
  const auto before = sharedLbfModel(path());
  write(otherModelOfTheSameSize());
  const auto after = sharedLbfModel(path());
  EXPECT_NE(after, before);
  EXPECT_FALSE(*after == *before);
}

TEST_F(SharedLbfModel, isAnotherForAChangedFileOfTheSameSizeAndTimeOfWriting) {
  write(kModel);
  const auto longAgo = std::filesystem::last_write_time(path()) - std::chrono::hours(1000);
  std::filesystem::last_write_time(path(), longAgo);
  const auto before = sharedLbfModel(path());
  write(otherModelOfTheSameSize());
  std::filesystem::last_write_time(path(), longAgo);
  EXPECT_FALSE(*sharedLbfModel(path()) == *before);
}

// A changed file that passed for the old one would never be fitted with.
TEST_F(SharedLbfModel, equalsNoneThatDiffersInOneNumber) {
  write(kModel);
  const auto model = sharedLbfModel(path());
  const auto equalAfter = [&](auto change) {
    LbfModel other = *model;
    std::visit([&](auto& stage) { change(other, stage); }, other.stages.front());
    return other == *model;
  };
  EXPECT_TRUE(equalAfter([](LbfModel&, auto&) {}));
  EXPECT_FALSE(equalAfter([](LbfModel& other, auto&) { ++other.treesPerLandmark; }));
  EXPECT_FALSE(equalAfter([](LbfModel& other, auto&) { ++other.depth; }));
  EXPECT_FALSE(equalAfter([](LbfModel& other, auto&) { other.meanShape.x[9] += 1; }));
  EXPECT_FALSE(equalAfter([](LbfModel&, auto& stage) { stage.splits[1].x1 += 1; }));
  EXPECT_FALSE(equalAfter([](LbfModel&, auto& stage) { stage.splits[1].y1 += 1; }));
  EXPECT_FALSE(equalAfter([](LbfModel&, auto& stage) { stage.splits[1].x2 += 1; }));
  EXPECT_FALSE(equalAfter([](LbfModel&, auto& stage) { stage.splits[1].y2 += 1; }));
  EXPECT_FALSE(equalAfter([](LbfModel&, auto& stage) { ++stage.thresholds[1]; }));
  EXPECT_FALSE(equalAfter([](LbfModel&, auto& stage) { stage.steps[0].offsets[135] += 1; }));
}

TEST_F(SharedLbfModel, staysAsItWasWhenItsFileChanges) {
  write(kModel);
  const auto before = sharedLbfModel(path());
  const LbfModel copy = *before;
  write(otherModelOfTheSameSize());
  sharedLbfModel(path());
  EXPECT_TRUE(*before == copy);
}

TEST_F(SharedLbfModel, endsWithItsLastOwner) {
  write(kModel);
  auto model = sharedLbfModel(path());
  const std::weak_ptr<const LbfModel> remembered = model;
  model.reset();
  EXPECT_TRUE(remembered.expired());
}

TEST_F(SharedLbfModel, isOneForThreadsSideBySide) {
  write(kModel);
  std::vector<std::shared_ptr<const LbfModel>> models(9);
  std::vector<std::thread> threads;
  threads.reserve(models.size());
  for (auto& model : models) {
    threads.emplace_back([&model, this] { model = sharedLbfModel(path()); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const auto& model : models) {
    EXPECT_EQ(model, models.front());
  }
}

TEST_F(SharedLbfModel, isNoneForAFileOfAnotherLayout) {
  MadeLbfModel decimals = kModel;
  decimals.inBase64 = false;
  write(decimals);
  EXPECT_FALSE(sharedLbfModel(path()));
}

TEST_F(SharedLbfModel, isReadAfterAFailure) {
  EXPECT_THROW(sharedLbfModel(path()), cv::Exception);
  write(kModel);
  EXPECT_TRUE(sharedLbfModel(path()));
}

} // namespace
} // namespace qorocv
