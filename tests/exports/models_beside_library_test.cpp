// initModelNames of a library that lies beside its models. This program is not linked with it.
#include "make_models/made_pictures.h"
#include "qorocv460/qorocv460.h"
#include "support/loaded_library.h"
#include "support/public_model_names.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

namespace qorocv::testing {
namespace {

#ifdef _WIN32
const std::filesystem::path kReportDirectory = "C:/Temp/DeleteIt";
#else
const std::filesystem::path kReportDirectory = "/tmp/DeleteIt";
#endif

class ModelsBesideLibrary : public ::testing::Test {
protected:
  void SetUp() override {
    std::filesystem::copy_file(QOROCV460_LIBRARY, library());
    writePublicMadeModels(directory_.path());
    std::filesystem::create_directories(kReportDirectory);
  }
  void TearDown() override { std::filesystem::remove_all(kReportDirectory); }

  std::filesystem::path library() const {
    return directory_ / std::filesystem::path(QOROCV460_LIBRARY).filename().string();
  }
  static int initModelNamesOf(const LoadedLibrary& library) {
    return library.find<decltype(initModelNames)>("initModelNames")();
  }

  TemporaryDirectory directory_;
};

TEST_F(ModelsBesideLibrary, areAllFound) {
  const LoadedLibrary library(this->library());
  ASSERT_TRUE(library.isLoaded());
  EXPECT_EQ(initModelNamesOf(library), 0);
}

TEST_F(ModelsBesideLibrary, areMissedOneByOne) {
  const LoadedLibrary library(this->library());
  ASSERT_TRUE(library.isLoaded());
  int missing = 0;
  for (const PublicModelName& name : kPublicModelNames) {
    const bool isSegmenter =
        std::string_view(name.made) == kMadeSegmentation; // which no host is told to put there
    std::filesystem::remove(directory_ / name.published);
    missing += isSegmenter ? 0 : 1;
    EXPECT_EQ(initModelNamesOf(library), missing) << name.published;
  }
}

TEST_F(ModelsBesideLibrary, areFoundAfterAChangeOfTheDirectoryThatItWasLoadedFrom) {
  // Without a directory in its name Windows would find the library that lies beside this program.
  std::filesystem::current_path(directory_.path().parent_path());
  const LoadedLibrary library(directory_.path().filename() / this->library().filename());
  std::filesystem::current_path(directory_.path());
  ASSERT_TRUE(library.isLoaded());
  EXPECT_EQ(initModelNamesOf(library), 0);
}

TEST_F(ModelsBesideLibrary, areThoseThatFacesAreFoundWith) {
  const std::string photo = writePicture(directory_ / "face.png", pictureWithFace()).string();
  const LoadedLibrary library(this->library());
  ASSERT_TRUE(library.isLoaded());
  ASSERT_EQ(initModelNamesOf(library), 0);
  std::array<double, QOROCV460_FACE_RESULTS> results{};
  int count = 1;
  int width = 0;
  int height = 0;
  const auto detect = library.find<decltype(findQORFacesDUNInTread01)>("findQORFacesDUNInTread01");
  EXPECT_EQ(detect(photo.c_str(), results.data(), &count, 1, 1, 0, &width, &height), 1);
}

} // namespace
} // namespace qorocv::testing
