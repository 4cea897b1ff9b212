// The registry's paths and its codes for missing files, on this system's file names.
#include "models/model_registry.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>

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

TEST(ModelRegistry, placeBesideSetsSixPathsBesideTheLibrary) {
  const TemporaryDirectory directory;
  ModelRegistry registry;
  registry.placeBeside(directory / "library");
  for (std::size_t number = 1; number <= 6; ++number) {
    const std::filesystem::path path = std::filesystem::u8path(pathOfModel(registry, number));
    EXPECT_EQ(path.parent_path(), directory.path());
    EXPECT_EQ(path.filename().string(), kPublicNames[number - 1]);
  }
}

TEST(ModelRegistry, placeBesideLeavesTheSeventhPath) {
  const TemporaryDirectory directory;
  ModelRegistry registry;
  registry.placeAt("elsewhere/");
  registry.placeBeside(directory / "library");
  EXPECT_EQ(pathOfModel(registry, 7), "elsewhere/model07.onnx");
}

TEST(ModelRegistry, placeBesideCountsTheSixFilesThatAreMissing) {
  const TemporaryDirectory directory;
  ModelRegistry registry;
  EXPECT_EQ(registry.placeBeside(directory / "library"), 6);
  for (std::size_t number = 1; number <= 6; ++number) {
    touch(directory / kPublicNames[number - 1]);
    EXPECT_EQ(registry.placeBeside(directory / "library"), static_cast<int>(6 - number));
  }
}

TEST(ModelRegistry, placeBesideAnUnknownLibraryLeavesThePaths) {
  const TemporaryDirectory directory;
  ModelRegistry registry;
  registry.placeAt("elsewhere/");
  EXPECT_EQ(registry.placeBeside({}), 6);
  EXPECT_EQ(pathOfModel(registry, 1), "elsewhere/model01.prototxt");
}

} // namespace
} // namespace qorocv
