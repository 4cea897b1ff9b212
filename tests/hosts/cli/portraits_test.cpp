// Portraits from the command line: what is written, and what a person is told to look at.
#include "colour_profile.h"
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "picture_file.h"
#include "support/command.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <filesystem>
#include <string>

namespace qorocv::testing {
namespace {

class Portraits : public ::testing::Test {
protected:
  void SetUp() override {
    writeMadeModels(directory_ / "models");
    face_ = writePicture(directory_ / "face.png", pictureWithFace()).string();
  }
  CommandResult run(const std::string& arguments) const {
    return runCommand(std::string(QORFACES_PROGRAM) + " --models " +
                          (directory_ / "models").string() + " --portraits " + portraits() + " " +
                          arguments,
                      directory_.path());
  }
  std::string portraits() const { return (directory_ / "portraits").string(); }
  std::string portraitOf(const std::string& name) const {
    return (directory_ / "portraits" / (name + "-1.jpg")).string();
  }
  nlohmann::json onlyFace(const std::string& arguments) const {
    const CommandResult result = run("--json " + arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return nlohmann::json::parse(result.out)[0]["faces"][0];
  }

  TemporaryDirectory directory_;
  std::string face_;
};

TEST_F(Portraits, haveTheShapeAndHeightThatAreAskedFor) {
  const nlohmann::json face = onlyFace("--crop 4:5 --crop-height 200 " + face_);
  EXPECT_EQ(std::filesystem::u8path(face["portrait"].get<std::string>()), portraitOf("face.png"));
  EXPECT_EQ(cv::imread(portraitOf("face.png")).size(), cv::Size(160, 200));
}

TEST_F(Portraits, showTheHeadAtItsShareOfTheHeight) {
  const nlohmann::json face = onlyFace("--crop 1:1 --head 0.5 --max-side 0 " + face_);
  const double head =
      2 * 480 * (face["chin"]["y"].get<double>() - face["headCentre"]["y"].get<double>());
  EXPECT_NEAR(cv::imread(portraitOf("face.png")).rows, 2 * head, 1);
}

TEST_F(Portraits, areToBeLookedAtWhereTheyLeaveThePhotograph) {
  const nlohmann::json face = onlyFace("--crop 4:5 --head 0.05 " + face_);
  EXPECT_NE(std::find(face["lookAt"].begin(), face["lookAt"].end(), "leavesPhotograph"),
            face["lookAt"].end());
}

TEST_F(Portraits, areToBeLookedAtWhereTheTopOfTheHeadIsAssumed) {
  // All of it is bright, and so a person for the made segmenter: there is no row above the head.
  const auto bright =
      writePicture(directory_ / "bright.png", cv::Mat(480, 640, CV_8UC3, cv::Scalar::all(250)))
          .string();
  const nlohmann::json face = onlyFace("--crop 4:5 " + bright);
  EXPECT_NE(std::find(face["lookAt"].begin(), face["lookAt"].end(), "topAssumed"),
            face["lookAt"].end());
}

TEST_F(Portraits, endWithThePhotographWhereTheyAreClipped) {
  onlyFace("--crop 4:5 --head 0.05 --crop-edge clip " + face_);
  const cv::Size size = cv::imread(portraitOf("face.png")).size();
  EXPECT_LE(size.width, 640);
  EXPECT_LE(size.height, 480);
}

TEST_F(Portraits, keepTheColourProfile) {
  qorfaces::Bytes profile(200, 'p');
  std::copy_n("\0\0\0\xC8", 4, profile.begin());
  std::copy_n("RGB ", 4, profile.begin() + 16);
  std::copy_n("acsp", 4, profile.begin() + 36);
  qorfaces::Bytes file;
  cv::imencode(".jpg", pictureWithFace(), file);
  const std::string photo = (directory_ / "wide.jpg").string();
  qorfaces::writeFile(photo, qorfaces::withColourProfile(file, profile));
  onlyFace("--crop 4:5 " + photo);
  EXPECT_EQ(qorfaces::colourProfile(qorfaces::readFile(portraitOf("wide.jpg"))), profile);
}

// What a camera stores of the picture that stands upright when turned as the EXIF orientation says.
cv::Mat asStored(const cv::Mat& upright, unsigned char orientation) {
  constexpr int leftRight = 1;
  constexpr int topBottom = 0;
  cv::Mat stored;
  switch (orientation) {
  case 2:
    cv::flip(upright, stored, leftRight);
    break;
  case 3:
    cv::rotate(upright, stored, cv::ROTATE_180);
    break;
  case 4:
    cv::flip(upright, stored, topBottom);
    break;
  case 5:
    cv::transpose(upright, stored);
    break;
  case 6:
    cv::rotate(upright, stored, cv::ROTATE_90_COUNTERCLOCKWISE);
    break;
  case 7:
    cv::transpose(upright, stored);
    cv::rotate(stored, stored, cv::ROTATE_180);
    break;
  case 8:
    cv::rotate(upright, stored, cv::ROTATE_90_CLOCKWISE);
    break;
  default:
    stored = upright;
  }
  return stored;
}

// A JPEG file with an EXIF orientation.
void writeTurned(const std::string& path, const cv::Mat& upright, unsigned char orientation) {
  qorfaces::Bytes file;
  cv::imencode(".jpg", asStored(upright, orientation), file);
  const qorfaces::Bytes exif{0xFF, 0xE1, 0, 34, 'E', 'x',         'i', 'f', 0, 0,    'M', 'M',
                             0,    '*',  0, 0,  0,   8,           0,   1,   1, 0x12, 0,   3,
                             0,    0,    0, 1,  0,   orientation, 0,   0,   0, 0,    0,   0};
  file.insert(file.begin() + 2, exif.begin(), exif.end());
  qorfaces::writeFile(path, file);
}

class TurnedPortraits : public Portraits, public ::testing::WithParamInterface<unsigned char> {};

TEST_P(TurnedPortraits, areUprightOnceAndForAll) {
  // With a corner that is another one when it is turned or mirrored.
  cv::Mat upright = pictureWithFace();
  upright(cv::Rect(0, 400, 160, 80)).setTo(cv::Scalar(200, 0, 0));
  const std::string words = "--crop 4:3 --head 0.3 --crop-height 100 --max-side 0 ";
  const auto straight = writePicture(directory_ / "straight.png", upright).string();
  const nlohmann::json wanted = onlyFace(words + straight);
  const std::string turned = (directory_ / "turned.jpg").string();
  writeTurned(turned, upright, GetParam());
  EXPECT_EQ(onlyFace(words + turned)["box"], wanted["box"]);
  // Nothing turns them again: what a reader that minds the orientation sees is what one that does
  // not sees, and both see the portrait of the upright photograph.
  const cv::Mat portrait = cv::imread(portraitOf("turned.jpg"));
  const cv::Mat asItLies =
      cv::imread(portraitOf("turned.jpg"), cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION);
  EXPECT_EQ(cv::norm(portrait, asItLies, cv::NORM_INF), 0);
  const cv::Mat expected = cv::imread(portraitOf("straight.png"));
  ASSERT_EQ(portrait.size(), expected.size());
  EXPECT_LT(cv::norm(portrait, expected, cv::NORM_L1) / static_cast<double>(3 * expected.total()),
            6);
}

INSTANTIATE_TEST_SUITE_P(EveryOrientation, TurnedPortraits, ::testing::Range<unsigned char>(1, 9));

TEST_F(Portraits, areNamedInTheTable) {
  const CommandResult result = run("--crop 4:5 " + face_);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_NE(result.out.find("face.png-1.jpg"), std::string::npos) << result.out;
}

TEST_F(Portraits, failThePhotographWhereTheyCannotBeWritten) {
  qorfaces::writeFile(portraits(), {'x'}); // a file where the directory is to be
  const CommandResult result = run("--crop 4:5 " + face_);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.err.find("portraits"), std::string::npos) << result.err;
}

TEST_F(Portraits, wantWordsThatMakeSense) {
  for (const std::string words :
       {"--crop 4x5", "--crop 0:5", "--head 0.5", "--crop 4:5 --head 0", "--crop 4:5 --head 1.1",
        "--crop 4:5 --head nan", "--crop 4:5 --crop-height 0", "--crop 4:5 --crop-edge cut",
        "--crop 4:5 --landmarks"}) {
    EXPECT_EQ(run(words + " " + face_).exitCode, 2) << words;
  }
}

TEST_F(Portraits, wantPhotographsOfDifferentNames) {
  EXPECT_EQ(run("--crop 4:5 " + face_ + " elsewhere/face.png").exitCode, 2);
}

} // namespace
} // namespace qorocv::testing
