// The landmarker as OpenCV's interface shows it.
#include "faces/lbf_landmarker.h"
#include "make_models/made_lbf_model.h"
#include "make_models/made_pictures.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace qorocv {
namespace {

using testing::MadeLbfModel;

using Landmarks = std::vector<std::vector<cv::Point2f>>;

constexpr MadeLbfModel kModel{1, 1, 2};

class LandmarkerByLbf : public ::testing::Test {
protected:
  std::string path() const { return (directory_ / "model.yaml").string(); }

  void write(const std::string& text) const { std::ofstream(path(), std::ios::binary) << text; }

  static int codeOf(cv::face::Facemark& landmarker, const std::string& path) {
    try {
      landmarker.loadModel(path);
      return 0;
    } catch (const cv::Exception& exception) {
      return exception.code;
    }
  }

  static int codeOfFit(cv::face::Facemark& landmarker, const std::vector<cv::Rect>& boxes) {
    Landmarks landmarks;
    try {
      landmarker.fit(testing::pictureWithFace(), boxes, landmarks);
      return 0;
    } catch (const cv::Exception& exception) {
      return exception.code;
    }
  }

  void expectOpenCvsLandmarks() {
    const std::vector<cv::Rect> boxes{{10, 10, 40, 40}, {30, 20, 35, 30}};
    const cv::Mat picture = testing::pictureWithFace();
    Landmarks expected;
    testing::openCvFacemark(path())->fit(picture, boxes, expected);
    LbfLandmarker landmarker;
    landmarker.loadModel(path());
    Landmarks landmarks;
    EXPECT_TRUE(landmarker.fit(picture, boxes, landmarks));
    EXPECT_EQ(landmarks, expected);
  }

  testing::TemporaryDirectory directory_;
  LbfLandmarker landmarker_;
};

const std::vector<cv::Rect> kBoxes{{10, 10, 40, 40}};

TEST_F(LandmarkerByLbf, fitsLikeOpenCv) {
  write(textOf(kModel));
  expectOpenCvsLandmarks();
}

TEST_F(LandmarkerByLbf, fitsLikeOpenCvWithAModelOfAnotherLayout) {
  MadeLbfModel decimals = kModel;
  decimals.inBase64 = false;
  write(textOf(decimals));
  expectOpenCvsLandmarks();
}

TEST_F(LandmarkerByLbf, printsNothing) {
  MadeLbfModel decimals = kModel;
  decimals.inBase64 = false;
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  for (const MadeLbfModel& model : {kModel, decimals}) {
    write(textOf(model));
    landmarker_.loadModel(path());
  }
  write(textOf(kModel).substr(0, 5000));
  codeOf(landmarker_, path());
  std::fflush(stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(LandmarkerByLbf, throwsOpenCvsCodeForAMissingFile) {
  const auto openCv = cv::face::FacemarkLBF::create();
  EXPECT_EQ(codeOf(landmarker_, path()), cv::Error::StsBadArg);
  EXPECT_EQ(codeOf(*openCv, path()), cv::Error::StsBadArg);
}

TEST_F(LandmarkerByLbf, throwsOpenCvsCodeForAFitWithoutAModel) {
  const auto openCv = cv::face::FacemarkLBF::create();
  EXPECT_EQ(codeOfFit(landmarker_, kBoxes), codeOfFit(*openCv, kBoxes));
  EXPECT_EQ(codeOfFit(landmarker_, kBoxes), cv::Error::StsBadArg);
  // Whatever there is to read in a box.
  EXPECT_EQ(codeOfFit(landmarker_, {{10, 20, 30, 0}}), codeOfFit(*openCv, {{10, 20, 30, 0}}));
  EXPECT_EQ(codeOfFit(landmarker_, {{10, 20, 30, 0}}), cv::Error::StsBadArg);
}

TEST_F(LandmarkerByLbf, isWithoutAModelAfterADamagedOne) {
  write(textOf(kModel).substr(0, 5000));
  EXPECT_EQ(codeOf(landmarker_, path()), cv::Error::StsParseError);
  EXPECT_EQ(codeOfFit(landmarker_, kBoxes), cv::Error::StsBadArg);
}

TEST_F(LandmarkerByLbf, refusesAModelOfAnotherLayoutWithoutWhatItSaysItHas) {
  MadeLbfModel decimals = kModel;
  decimals.inBase64 = false;
  for (const std::string& sound : {textOf(kModel), textOf(decimals)}) {
    for (const auto& [old, with] : std::vector<std::pair<std::string, std::string>>{
             {"tree_n: 1", "tree_n: 33"},
             {"stages_n: 1", "stages_n: 33"},
             {"tree_depth: 2", "tree_depth: 9"},
             {"tree_depth: 2", "tree_depth: 2000000000"},
             {"%YAML:1.0\n---\nstages_n: 1\ntree_n: 1",
              "%YAML:1.0\n---\ntree_n: 2\nstages_n: 1"}}) {
      std::string text = sound;
      const std::size_t at = text.find(old);
      ASSERT_NE(at, std::string::npos) << old;
      write(text.replace(at, old.size(), with));
      EXPECT_EQ(codeOf(landmarker_, path()), cv::Error::StsParseError) << with;
    }
  }
  for (const char* const name : {"tree_0_5_0", "thresholds_0_5_0", "weights_0", "regressor_mean"}) {
    std::string text = textOf(decimals);
    const std::size_t at = text.find(name);
    ASSERT_NE(at, std::string::npos) << name;
    write(text.replace(at, 1, "x"));
    EXPECT_EQ(codeOf(landmarker_, path()), cv::Error::StsParseError) << name;
  }
}

TEST_F(LandmarkerByLbf, refusesAModelOfAnotherLayoutWithFewerRowsThanItSays) {
  MadeLbfModel decimals = kModel;
  decimals.inBase64 = false;
  for (const auto& [name, old, with] : std::vector<std::array<std::string, 3>>{
           {"regressor_meanshape", "rows: 68\n   cols: 2", "rows: 34\n   cols: 4"},
           {"tree_0_5_0", "rows: 4\n   cols: 4", "rows: 1\n   cols: 16"},
           {"weights_0", "rows: 136\n   cols: 136", "rows: 68\n   cols: 272"}}) {
    std::string text = textOf(decimals);
    const std::size_t at = text.find(old, text.find(name));
    ASSERT_NE(at, std::string::npos) << name;
    write(text.replace(at, old.size(), with)); // of as many numbers
    EXPECT_EQ(codeOf(landmarker_, path()), cv::Error::StsParseError) << name;
  }
}

TEST_F(LandmarkerByLbf, failsForNoBoxes) {
  Landmarks landmarks(3);
  EXPECT_FALSE(landmarker_.fit(testing::pictureWithFace(), std::vector<cv::Rect>(), landmarks));
  write(textOf(kModel));
  landmarker_.loadModel(path());
  EXPECT_FALSE(landmarker_.fit(testing::pictureWithFace(), std::vector<cv::Rect>(), landmarks));
  EXPECT_EQ(landmarks.size(), 3U);
}

TEST_F(LandmarkerByLbf, failsForABoxThatLeavesNothingToRead) {
  const std::vector<cv::Rect> boxes{kBoxes[0], {10, 20, 30, 0}, kBoxes[0]};
  for (const bool inBase64 : {true, false}) {
    MadeLbfModel model = kModel;
    model.inBase64 = inBase64;
    write(textOf(model));
    LbfLandmarker landmarker;
    landmarker.loadModel(path());
    Landmarks landmarks(5);
    EXPECT_FALSE(landmarker.fit(testing::pictureWithFace(), boxes, landmarks)) << inBase64;
    EXPECT_EQ(landmarks.size(), 5U) << inBase64;
  }
}

TEST_F(LandmarkerByLbf, throwsOpenCvsCodesForBoxesThatCannotBeFitted) {
  write(textOf(kModel));
  landmarker_.loadModel(path());
  const auto openCv = testing::openCvFacemark(path());
  for (const cv::Rect& box : {cv::Rect(10, 10, 0, 40), cv::Rect(10, 10, -3, 40),
                              cv::Rect(10'000, 10, 40, 40), cv::Rect(10, 10, 40, -40)}) {
    const int code = codeOfFit(landmarker_, {kBoxes[0], box});
    EXPECT_NE(code, 0) << box;
    EXPECT_EQ(code, codeOfFit(*openCv, {kBoxes[0], box})) << box;
  }
}

TEST_F(LandmarkerByLbf, leavesTheLandmarksAloneWhereItThrows) {
  write(textOf(kModel));
  landmarker_.loadModel(path());
  Landmarks landmarks(3);
  const std::vector<cv::Rect> boxes{kBoxes[0], cv::Rect(10'000, 10, 40, 40)};
  EXPECT_THROW(landmarker_.fit(testing::pictureWithFace(), boxes, landmarks), cv::Exception);
  EXPECT_EQ(landmarks.size(), 3U);
}

} // namespace
} // namespace qorocv
