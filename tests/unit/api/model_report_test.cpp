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

  /// What the report says of these models.
  static std::vector<std::string> linesOf(const ModelRegistry& registry) {
    writeModelReport(registry, "library");
    return lines();
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

constexpr std::size_t kLines = 11;

TEST_F(Report, beginsWithAnAddress) {
  const std::vector<std::string> report = linesOf(ModelRegistry());
  ASSERT_EQ(report.size(), kLines);
  std::istringstream address(report[0]);
  void* parsed = nullptr;
  EXPECT_TRUE(address >> parsed) << report[0];
  EXPECT_NE(parsed, nullptr);
}

TEST_F(Report, leavesTwoLinesEmptyBeforeThePaths) {
  const std::vector<std::string> report = linesOf(ModelRegistry());
  ASSERT_EQ(report.size(), kLines);
  EXPECT_EQ(report[1], "");
  EXPECT_EQ(report[2], "");
}

TEST_F(Report, listsTheSixPathsInTheOrderOfTheModels) {
  const ModelRegistry registry;
  const std::vector<std::string> report = linesOf(registry);
  ASSERT_EQ(report.size(), kLines);
  for (std::size_t number = 1; number <= 6; ++number) {
    EXPECT_EQ(report[number + 2], registry.path(static_cast<Model>(number - 1)));
  }
}

TEST_F(Report, endsWithTheFirstPathTwiceMore) {
  const ModelRegistry registry;
  const std::vector<std::string> report = linesOf(registry);
  ASSERT_EQ(report.size(), kLines);
  EXPECT_EQ(report[9], registry.path(Model::caffeDescription));
  EXPECT_EQ(report[10], registry.path(Model::caffeDescription));
}

TEST_F(Report, isWrittenFromTheStartEachTime) {
  writeModelReport(ModelRegistry(), "library");
  writeModelReport(ModelRegistry(), "library");
  EXPECT_EQ(lines().size(), kLines);
}

} // namespace
} // namespace qorocv
