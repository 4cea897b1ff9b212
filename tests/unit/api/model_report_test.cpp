#include "api/model_report.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace qorocv {
namespace {

class Report : public ::testing::Test {
protected:
  // The report's directory is the host's to make; a host of this machine may have made it already.
  void SetUp() override {
    const std::filesystem::path directory = std::filesystem::path(reportFilePath()).parent_path();
    made_ = std::filesystem::create_directories(directory);
  }
  void TearDown() override {
    std::filesystem::remove(reportFilePath());
    if (made_) {
      std::filesystem::remove(std::filesystem::path(reportFilePath()).parent_path());
    }
  }

  static std::vector<std::string> lines() {
    std::ifstream report(reportFilePath());
    std::vector<std::string> all;
    for (std::string line; std::getline(report, line);) {
      all.push_back(line);
    }
    return all;
  }

private:
  bool made_ = false;
};

TEST_F(Report, listsAnAddressTwoEmptyLinesSixPathsAndTheFirstPathTwiceMore) {
  const ModelRegistry registry;
  writeModelReport(registry, "library");
  const std::vector<std::string> report = lines();
  ASSERT_EQ(report.size(), 11U);
  std::istringstream address(report[0]);
  void* parsed = nullptr;
  EXPECT_TRUE(address >> parsed) << report[0];
  EXPECT_NE(parsed, nullptr);
  EXPECT_EQ(report[1], "");
  EXPECT_EQ(report[2], "");
  for (std::size_t number = 1; number <= 6; ++number) {
    EXPECT_EQ(report[number + 2], registry.path(static_cast<Model>(number - 1)));
  }
  EXPECT_EQ(report[9], registry.path(Model::caffeDescription));
  EXPECT_EQ(report[10], registry.path(Model::caffeDescription));
}

TEST_F(Report, isWrittenFromTheStartEachTime) {
  writeModelReport(ModelRegistry(), "library");
  writeModelReport(ModelRegistry(), "library");
  EXPECT_EQ(lines().size(), 11U);
}

} // namespace
} // namespace qorocv
