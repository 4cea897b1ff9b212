// The registry's paths, its codes for missing files and its report, on this system's file names.
#include "models/model_registry.h"
#include "platform/platform.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace qorocv {
namespace {

using testing::TemporaryDirectory;

constexpr const char* kPublicNames[] = {
    "deploy.prototxt",
    "res10_300x300_ssd_iter_140000_fp16.caffemodel",
    "opencv_face_detector.pbtxt",
    "opencv_face_detector_uint8.pb",
    "lbfmodel.yaml",
    "haarcascade_frontalface_alt.xml",
    "human_segmentation_pphumanseg_2023mar.onnx",
};

constexpr const char* kShortNames[] = {
    "model01.prototxt", "model02.caffemodel", "model03.pbtxt", "model04.pb",
    "model05.yaml",     "model06.xml",        "model07.onnx",
};

const std::string& pathOfModel(const ModelRegistry& registry, std::size_t number) {
  return registry.path(static_cast<Model>(number - 1));
}

void touch(const std::filesystem::path& file) {
  std::ofstream(file) << "x";
}

void touchAllShortNames(const TemporaryDirectory& directory) {
  for (const char* name : kShortNames) {
    touch(directory / name);
  }
}

TEST(ModelRegistry, holdsBarePublicNamesWhenTheLibraryIsLoaded) {
  for (std::size_t number = 1; number <= kModelCount; ++number) {
    EXPECT_EQ(pathOfModel(modelRegistry(), number), kPublicNames[number - 1]);
  }
}

TEST(ModelRegistry, placeAtPutsTheDirectoryBeforeTheShortNamesAsItIs) {
  ModelRegistry registry;
  registry.placeAt("no/such/place-");
  EXPECT_EQ(pathOfModel(registry, 1), "no/such/place-model01.prototxt");
  EXPECT_EQ(pathOfModel(registry, 7), "no/such/place-model07.onnx");
}

TEST(ModelRegistry, placeAtReturnsZeroWhereAllSevenFilesAre) {
  const TemporaryDirectory directory;
  touchAllShortNames(directory);
  EXPECT_EQ(ModelRegistry().placeAt(directory.asPrefix()), 0);
}

TEST(ModelRegistry, placeAtReturnsSevenOnesForAnEmptyDirectory) {
  const TemporaryDirectory directory;
  EXPECT_EQ(ModelRegistry().placeAt(directory.asPrefix()), 1111111);
}

TEST(ModelRegistry, placeAtGivesEachMissingFileItsOwnDigit) {
  constexpr int weights[] = {1, 10, 100, 1000, 10000, 100000, 1000000};
  for (std::size_t i = 0; i < kModelCount; ++i) {
    const TemporaryDirectory directory;
    touchAllShortNames(directory);
    std::filesystem::remove(directory / kShortNames[i]);
    EXPECT_EQ(ModelRegistry().placeAt(directory.asPrefix()), weights[i]) << kShortNames[i];
  }
}

TEST(ModelRegistry, placeAtWithAnEmptyDirectoryNameMeansTheCurrentDirectory) {
  const TemporaryDirectory directory;
  touch(directory / "model06.xml");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(directory.path());
  ModelRegistry registry;
  const int missing = registry.placeAt("");
  std::filesystem::current_path(before);
  EXPECT_EQ(missing, 1011111);
  EXPECT_EQ(pathOfModel(registry, 6), "model06.xml");
}

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
  ModelRegistry registry;
  registry.placeBesideLibrary();
  const std::vector<std::string> report = lines();
  ASSERT_EQ(report.size(), 11U);
  std::istringstream address(report[0]);
  void* parsed = nullptr;
  EXPECT_TRUE(address >> parsed) << report[0];
  EXPECT_NE(parsed, nullptr);
  EXPECT_EQ(report[1], "");
  EXPECT_EQ(report[2], "");
  for (std::size_t number = 1; number <= 6; ++number) {
    EXPECT_EQ(report[number + 2], pathOfModel(registry, number));
  }
  EXPECT_EQ(report[9], pathOfModel(registry, 1));
  EXPECT_EQ(report[10], pathOfModel(registry, 1));
}

TEST_F(Report, isWrittenFromTheStartEachTime) {
  ModelRegistry registry;
  registry.placeBesideLibrary();
  registry.placeBesideLibrary();
  EXPECT_EQ(lines().size(), 11U);
}

TEST_F(Report, placeBesideLibrarySetsSixPathsBesideThisCodeAndLeavesTheSeventh) {
  ModelRegistry registry;
  registry.placeAt("elsewhere/");
  registry.placeBesideLibrary();
  const std::filesystem::path here = ownModulePath().parent_path();
  for (std::size_t number = 1; number <= 6; ++number) {
    const std::filesystem::path path = std::filesystem::u8path(pathOfModel(registry, number));
    EXPECT_EQ(path.parent_path(), here);
    EXPECT_EQ(path.filename().string(), kPublicNames[number - 1]);
  }
  EXPECT_EQ(pathOfModel(registry, 7), "elsewhere/model07.onnx");
}

TEST_F(Report, placeBesideLibraryCountsTheSixFilesThatAreMissing) {
  ModelRegistry registry;
  EXPECT_EQ(registry.placeBesideLibrary(), 6);
  const auto besideLibrary = [&](std::size_t number) {
    return std::filesystem::u8path(pathOfModel(registry, number));
  };
  for (std::size_t number = 1; number <= 6; ++number) {
    touch(besideLibrary(number));
    EXPECT_EQ(registry.placeBesideLibrary(), static_cast<int>(6 - number));
  }
  for (std::size_t number = 1; number <= 6; ++number) {
    std::filesystem::remove(besideLibrary(number));
  }
}

} // namespace
} // namespace qorocv
