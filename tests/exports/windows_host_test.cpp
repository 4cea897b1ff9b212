// What a host on Windows meets: code pages, the report's place, loading and unloading.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/host.h"
#include "support/loaded_library.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>

namespace qorocv::testing {
namespace {

TEST(WindowsPaths, ofCharactersThatTheCodePageLacksAreUnreadablePhotographs) {
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  ASSERT_EQ(initModelsAtPath(directory.asPrefix().c_str()), 0);
  const auto readable = writePicture(directory / "face.png", pictureWithFace());
  const auto path = directory.path() / std::filesystem::u8path("портрет.png");
  std::filesystem::copy_file(readable, path);
  const Outcome outcome = detect(findQORFaces, path);
  EXPECT_EQ(outcome.returned, -1);
  EXPECT_EQ(outcome.printed, kUnreadableMessage);
  expectNothingTouched(outcome, 1);
}

const std::filesystem::path kBuilt = std::filesystem::path(QOROCV460_LIBRARY);
const std::filesystem::path kReportDirectory = "C:/Temp/DeleteIt";

class LibraryElsewhere : public ::testing::Test {
protected:
  void SetUp() override {
    std::filesystem::create_directories(place_);
    std::filesystem::copy_file(kBuilt, place_ / "QOROCV460.dll");
    std::filesystem::create_directories(kReportDirectory);
  }
  void TearDown() override { std::filesystem::remove_all(kReportDirectory); }

  TemporaryDirectory directory_;
  std::filesystem::path place_ = directory_ / "a directory with spaces";
};

TEST_F(LibraryElsewhere, looksForModelsBesideItself) {
  writeMadeModels(directory_ / "models");
  std::filesystem::copy_file(directory_ / "models" / kMadeCascade,
                             place_ / "haarcascade_frontalface_alt.xml");
  const LoadedLibrary library(place_ / "QOROCV460.dll");
  ASSERT_TRUE(library.isLoaded());
  EXPECT_EQ(library.find<int()>("initModelNames")(), 5); // the cascade is there
}

TEST_F(LibraryElsewhere, reportsThePathsOfModelsBesideItself) {
  const LoadedLibrary library(place_ / "QOROCV460.dll");
  ASSERT_TRUE(library.isLoaded());
  library.find<int()>("initModelNames")();
  std::ifstream report(kReportDirectory / "info.txt");
  std::string all((std::istreambuf_iterator<char>(report)), {});
  for (const char* const name : {"deploy.prototxt", "res10_300x300_ssd_iter_140000_fp16.caffemodel",
                                 "opencv_face_detector.pbtxt", "opencv_face_detector_uint8.pb",
                                 "lbfmodel.yaml", "haarcascade_frontalface_alt.xml"}) {
    EXPECT_NE(all.find((place_ / name).string()), std::string::npos) << name << " in " << all;
  }
}

TEST_F(LibraryElsewhere, comesAndGoesAHundredTimes) {
  writeMadeModels(directory_.path());
  const std::string models = directory_.asPrefix();
  const std::string photo = writePicture(directory_ / "face.png", pictureWithFace()).string();
  for (int cycle = 0; cycle < 100; ++cycle) {
    const LoadedLibrary library(place_ / "QOROCV460.dll");
    ASSERT_TRUE(library.isLoaded()) << cycle;
    ASSERT_EQ(library.find<decltype(initModelsAtPath)>("initModelsAtPath")(models.c_str()), 0);
    Outcome outcome;
    outcome.count = 1;
    outcome.results.resize(QOROCV460_FACE_RESULTS);
    const auto found = library.find<decltype(findQORFacesInTread01)>("findQORFacesInTread01")(
        photo.c_str(), outcome.results.data(), &outcome.count, 1, 0, &outcome.width,
        &outcome.height);
    ASSERT_EQ(found, 1) << cycle;
  }
}

} // namespace
} // namespace qorocv::testing
