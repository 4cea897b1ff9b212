// The exports that need no photograph: they say that the library is there, where its models lie, and
// load the shared pair.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "qorocv460/qorocv460.h"
#include "support/host.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <fstream>

namespace qorocv::testing {
namespace {

#ifdef _WIN32
const std::filesystem::path kReportDirectory = "C:/Temp/DeleteIt";
constexpr const char* kLibrary = "QOROCV460.dll";
#else
const std::filesystem::path kReportDirectory = "/tmp/DeleteIt";
constexpr const char* kLibrary = "libQOROCV460.so";
#endif

TEST(FindFaces, returnsZeroEveryTime) {
  EXPECT_EQ(findFaces(), 0);
  EXPECT_EQ(findFaces(), 0);
}

TEST(TestPass, fillsExactly68Values) {
  std::vector<double> values(QOROCV460_TEST_VALUES + 1, kUntouchedValue);
  int count = 0;
  EXPECT_EQ(testPass(values.data(), &count), 68);
  EXPECT_EQ(count, 68);
  EXPECT_EQ(values[0], 0.0);
  EXPECT_EQ(values[1], 1.01);
  EXPECT_EQ(values[10], 10.1);
  EXPECT_EQ(values[67], 67.67);
  EXPECT_EQ(values[68], kUntouchedValue);
}

TEST(InitModelsAtPath, returnsTheCodeOfWhatIsMissing) {
  const TemporaryDirectory models;
  EXPECT_EQ(initModelsAtPath(models.asPrefix().c_str()), 1111111);
  writeMadeModels(models.path());
  EXPECT_EQ(initModelsAtPath(models.asPrefix().c_str()), 0);
  std::filesystem::remove(models / kMadeCascade);
  EXPECT_EQ(initModelsAtPath(models.asPrefix().c_str()), 100000);
}

TEST(InitModelsAtPath, readsAnEmptyPathAsTheCurrentDirectory) {
  const TemporaryDirectory models;
  writeMadeModels(models.path());
  std::filesystem::current_path(models.path());
  EXPECT_EQ(initModelsAtPath(""), 0);
  std::filesystem::current_path("/");
}

TEST(InitModelsAtPath, readsNullAsTheCurrentDirectory) {
  const TemporaryDirectory models;
  writeMadeModels(models.path());
  std::filesystem::current_path(models.path());
  EXPECT_EQ(initModelsAtPath(nullptr), 0);
  std::filesystem::current_path("/");
}

TEST(InitModelsAtPath, cannotNameADirectoryThatTheCurrentLocaleCannotRepresent) {
  const TemporaryDirectory parent;
  const std::filesystem::path models = parent.path() / std::filesystem::u8path("modèles");
  writeMadeModels(models);
  const std::string name = models.u8string() + "/";
  // No photograph was read yet, so the locale is still "C", which Windows takes for Latin-1.
#ifndef _WIN32
  EXPECT_EQ(initModelsAtPath(name.c_str()), 1111111);
#endif
  int width = 0;
  int height = 0;
  showImage("no-such-picture.png", &width, &height);
  EXPECT_EQ(initModelsAtPath(name.c_str()), 0);
#ifdef _WIN32
  EXPECT_EQ(initModelsAtPath("модели/"), 1111111);
#endif
}

class InitModelNames : public ::testing::Test {
protected:
  void TearDown() override { std::filesystem::remove_all(kReportDirectory); }
};

TEST_F(InitModelNames, countsTheModelsMissingBesideTheLibrary) {
  std::filesystem::create_directories(kReportDirectory);
  EXPECT_EQ(initModelNames(), 6); // the build directory holds no model
}

TEST_F(InitModelNames, reportsPathsBesideTheLibrary) {
  std::filesystem::create_directories(kReportDirectory);
  initModelNames();
  std::ifstream report(kReportDirectory / "info.txt");
  std::string line;
  for (int i = 0; i < 4; ++i) {
    std::getline(report, line);
  }
  const std::filesystem::path caffe(line);
  EXPECT_EQ(caffe.filename(), "deploy.prototxt");
  EXPECT_TRUE(std::filesystem::exists(caffe.parent_path() / kLibrary));
}

TEST_F(InitModelNames, endsTheProcessWhereTheReportHasNoDirectory) {
  std::filesystem::remove_all(kReportDirectory);
  EXPECT_EXIT(initModelNames(), ::testing::ExitedWithCode(1),
              "^Uh oh, SomeText.txt could not be opened for writing!\n$");
}

TEST(InitDetector, returnsZeroEveryTime) {
  const TemporaryDirectory models;
  writeMadeModels(models.path());
  initModelsAtPath(models.asPrefix().c_str());
  EXPECT_EQ(initDetector(), 0);
  EXPECT_EQ(initDetector(), 0);
}

TEST(InitDetector, reloadsFromTheCurrentPaths) {
  const TemporaryDirectory one;
  const TemporaryDirectory two;
  MadeModels otherModels;
  otherModels.meanShape[8] = {0.0, 0.5};
  writeMadeModels(one.path());
  writeMadeModels(two.path(), otherModels);
  const auto photo = writePicture(one / "face.png", pictureWithFace());

  initModelsAtPath(one.asPrefix().c_str());
  initDetector();
  const Outcome first = detect(findQORFaces, photo);
  initModelsAtPath(two.asPrefix().c_str());
  const Outcome stillFirst = detect(findQORFaces, photo);
  initDetector();
  const Outcome second = detect(findQORFaces, photo);

  ASSERT_EQ(first.count, 9);
  EXPECT_EQ(stillFirst.results, first.results);
  EXPECT_NE(second.results[8], first.results[8]); // the chin's height
}

TEST(InitDetector, throwsForALandmarkModelThatCannotBeRead) {
  const TemporaryDirectory nothing;
  initModelsAtPath(nothing.asPrefix().c_str());
  EXPECT_THROW(initDetector(), cv::Exception);
}

TEST(InitDetector, leavesNoOldCascadeWhereTheNewOneCannotBeRead) {
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  const auto photo = writePicture(directory / "face.png", pictureWithFace());
  initModelsAtPath(directory.asPrefix().c_str());
  EXPECT_EQ(initDetector(), 0);

  std::ofstream(directory / kMadeCascade) << "<?xml version=\"1.0\"?><opencv_storage><cascade>";
  EXPECT_THROW(initDetector(), cv::Exception);
  EXPECT_THROW(detect(findQORFaces, photo), cv::Exception);

  writeMadeModels(directory.path());
  EXPECT_EQ(detect(findQORFaces, photo).returned, 1);
}

} // namespace
} // namespace qorocv::testing
