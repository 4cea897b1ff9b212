// The command-line host, run as a person and as a program would.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/command.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>

namespace qorocv::testing {
namespace {

class Qorfaces : public ::testing::Test {
protected:
  void SetUp() override {
    writeMadeModels(directory_ / "models");
    face_ = writePicture(directory_ / "face.png", pictureWithFace()).string();
    plain_ = writePicture(directory_ / "plain.png", plainPicture({300, 200})).string();
  }
  CommandResult run(const std::string& arguments) const {
    return runCommand(std::string(QORFACES_PROGRAM) + " " + arguments, directory_.path());
  }
  CommandResult runWithModels(const std::string& arguments) const {
    return run("--models " + (directory_ / "models").string() + " " + arguments);
  }

  TemporaryDirectory directory_;
  std::string face_;
  std::string plain_;
};

std::size_t lineCount(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(Qorfaces, printsALinePerPhotographAndARowPerFace) {
  const CommandResult result = runWithModels(plain_ + " " + face_);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(lineCount(result.out), 4U) << result.out; // two photographs, a heading, a face
  EXPECT_TRUE(contains(result.out, plain_ + "  300 x 200  no face\n")) << result.out;
  EXPECT_TRUE(contains(result.out, face_ + "  640 x 480  1 face\n")) << result.out;
}

TEST_F(Qorfaces, saysThatItListsThirtyOfMoreFaces) {
  const auto crowd = writePicture(directory_ / "crowd.png", pictureWithGrid(35)).string();
  const CommandResult result = runWithModels(crowd);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_TRUE(contains(result.out, "35 faces, the first 30 listed")) << result.out;
  EXPECT_EQ(lineCount(result.out), 32U);
}

TEST_F(Qorfaces, printsNothingButJsonForPrograms) {
  const CommandResult result = runWithModels("--json --landmarks " + face_ + " " + plain_);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const nlohmann::json photos = nlohmann::json::parse(result.out);
  ASSERT_EQ(photos.size(), 2U);
  EXPECT_EQ(photos[0]["photo"], face_);
  EXPECT_EQ(photos[0]["width"], 640);
  EXPECT_EQ(photos[0]["found"], 1);
  ASSERT_EQ(photos[0]["faces"].size(), 1U);
  const nlohmann::json& face = photos[0]["faces"][0];
  EXPECT_EQ(face["landmarks"].size(), 68U);
  EXPECT_EQ(face["landmarks"][8], face["chin"]);
  EXPECT_EQ(face["landmarks"][27], face["noseBridge"]);
  EXPECT_LT(face["box"]["left"], face["box"]["right"]);
  EXPECT_EQ(photos[1]["faces"].size(), 0U);
}

#ifndef _WIN32
TEST_F(Qorfaces, printsJsonWithPointsInALocaleWithCommas) {
  const CommandResult result =
      run("--json --models " + (directory_ / "models").string() + " " + face_ +
          " && LC_ALL=de_DE.UTF-8 " + QORFACES_PROGRAM + " --json --models " +
          (directory_ / "models").string() + " " + face_);
  ASSERT_EQ(result.exitCode, 0);
  EXPECT_NO_THROW(nlohmann::json::parse(result.out)) << result.out;
}
#endif

TEST_F(Qorfaces, keepsGoingAfterAPhotographThatCannotBeRead) {
  const CommandResult result = runWithModels("missing.jpg " + face_);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(contains(result.err, "qorfaces: missing.jpg: cannot be read as a picture"))
      << result.err;
  EXPECT_TRUE(contains(result.out, "1 face")) << result.out;
  EXPECT_FALSE(contains(result.out, "missing"));
}

TEST_F(Qorfaces, reportsAnUnreadablePhotographInJsonToo) {
  const CommandResult result = runWithModels("--json missing.jpg");
  EXPECT_EQ(result.exitCode, 1);
  const nlohmann::json photos = nlohmann::json::parse(result.out);
  EXPECT_EQ(photos[0]["photo"], "missing.jpg");
  EXPECT_TRUE(photos[0].contains("error"));
}

TEST_F(Qorfaces, writesTheAnnotatedPictureAtTheScaledSize) {
  const std::string copy = (directory_ / "copy.png").string();
  EXPECT_EQ(runWithModels("--max-side 320 --annotate " + copy + " " + face_).exitCode, 0);
  EXPECT_EQ(cv::imread(copy).size(), cv::Size(320, 240));
}

TEST_F(Qorfaces, saysWhenTheAnnotatedPictureCannotBeWritten) {
  const CommandResult result = runWithModels("--annotate /no/such/directory/copy.png " + face_);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(contains(result.err, "cannot write the annotated copy /no/such/directory/copy.png"))
      << result.err;
}

TEST_F(Qorfaces, findsFacesWithEachDetector) {
  // The made networks see a box each, at a quarter and at an eighth of the width.
  const auto left = [&](const std::string& detector) {
    const CommandResult result = runWithModels("--json --detector " + detector + " " + face_);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return nlohmann::json::parse(result.out)[0]["faces"][0]["box"]["left"].get<double>();
  };
  EXPECT_EQ(left("ssd"), 0.25);
  EXPECT_EQ(left("ssd-tf"), 0.125);
  EXPECT_NEAR(left("haar"), 200.0 / 640, 0.02);
}

TEST_F(Qorfaces, worksInTheSlotItIsGiven) {
  const CommandResult shared = runWithModels("--json " + face_);
  for (const char* slot : {"1", "5", "9"}) {
    const CommandResult result = runWithModels("--json --slot " + std::string(slot) + " " + face_);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, shared.out);
  }
}

TEST_F(Qorfaces, reportsAndDrawsHeadCentres) {
  for (const char* detector : {"haar", "ssd"}) {
    const std::string copy = (directory_ / (std::string(detector) + ".png")).string();
    const CommandResult result =
        runWithModels("--json --head-centre --detector " + std::string(detector) + " --annotate " +
                      copy + " " + face_);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const nlohmann::json face = nlohmann::json::parse(result.out)[0]["faces"][0];
    EXPECT_EQ(face["headCentre"]["x"], face["noseBridge"]["x"]);
    const cv::Mat picture = cv::imread(copy);
    const cv::Point centre(cvRound(face["headCentre"]["x"].get<double>() * 640),
                           cvRound(face["headCentre"]["y"].get<double>() * 480));
    EXPECT_EQ(picture.at<cv::Vec3b>(centre), cv::Vec3b(0, 255, 255)) << detector;
    EXPECT_TRUE(contains(
        runWithModels("--head-centre --detector " + std::string(detector) + " " + face_).out,
        "head y"));
  }
}

TEST_F(Qorfaces, needsOnlyTheModelsOfItsDetector) {
  std::filesystem::remove(directory_ / "models" / "model06.xml");
  std::filesystem::remove(directory_ / "models" / "model04.pb");
  EXPECT_EQ(runWithModels("--detector ssd " + face_).exitCode, 0);
  const CommandResult result = runWithModels("--detector ssd-tf " + face_);
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_TRUE(contains(result.err, "model04.pb")) << result.err;
  EXPECT_FALSE(contains(result.err, "model06.xml")) << result.err;
}

TEST_F(Qorfaces, explainsItself) {
  const CommandResult result = run("--help");
  EXPECT_EQ(result.exitCode, 0);
  for (const char* word : {"PHOTO", "--models", "--max-side", "--landmarks", "--annotate", "--json",
                           "--detector", "--slot", "--head-centre", "Exit codes", "fractions"}) {
    EXPECT_TRUE(contains(result.out, word)) << word;
  }
}

TEST_F(Qorfaces, endsWithTwoForWrongArguments) {
  for (const std::string& arguments :
       {std::string(), std::string("--no-such-option x.jpg"), "--max-side -1 " + face_,
        "--max-side many " + face_, "--annotate copy.png " + face_ + " " + plain_,
        "--annotate copy.nosuchformat " + face_, "--slot 0 " + face_, "--slot 10 " + face_,
        "--detector cascade " + face_, "--landmarks --detector ssd " + face_,
        "--landmarks --slot 2 " + face_, "--landmarks --head-centre " + face_,
        "--annotate x " + face_, "--models /no/such/directory " + face_}) {
    const CommandResult result = run(arguments);
    EXPECT_EQ(result.exitCode, 2) << arguments;
    EXPECT_NE(result.err, "") << arguments;
    EXPECT_EQ(result.out, "") << arguments;
  }
}

TEST_F(Qorfaces, endsWithThreeAndNamesTheModelsThatAreMissing) {
  std::filesystem::remove(directory_ / "models" / "model05.yaml");
  const CommandResult result = runWithModels(face_);
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_TRUE(contains(result.err, "model05.yaml")) << result.err;
  EXPECT_FALSE(contains(result.err, "model06.xml")) << result.err;
  EXPECT_EQ(result.out, "");
}

TEST_F(Qorfaces, endsWithThreeForAModelThatCannotBeLoaded) {
  std::ofstream(directory_ / "models" / "model05.yaml") << "no model";
  const CommandResult result = runWithModels(face_);
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_TRUE(contains(result.err, "cannot be loaded")) << result.err;
}

TEST_F(Qorfaces, takesModelsFromADirectoryNamedInAnyLanguage) {
#ifdef _WIN32
  const auto models = directory_.path() / std::filesystem::u8path("modèles");
#else
  const auto models = directory_.path() / std::filesystem::u8path("модели");
#endif
  writeMadeModels(models);
  const CommandResult result = run("--models " + models.u8string() + " " + face_);
  EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST_F(Qorfaces, cutsThePersonOut) {
  // The made segmenter takes bright pixels for a person.
  cv::Mat picture(100, 200, CV_8UC3, cv::Scalar(10, 20, 30));
  picture(cv::Rect(100, 0, 100, 100)).setTo(cv::Scalar(250, 240, 230));
  const auto photo = writePicture(directory_ / "half.png", picture).string();
  const std::string cutOut = (directory_ / "cut.png").string();
  const CommandResult result = runWithModels("--mask " + cutOut + " " + photo);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  const cv::Mat written = cv::imread(cutOut, cv::IMREAD_UNCHANGED);
  ASSERT_EQ(written.size(), cv::Size(200, 100));
  ASSERT_EQ(written.type(), CV_8UC4);
  EXPECT_EQ(written.at<cv::Vec4b>(50, 20), cv::Vec4b(10, 20, 30, 0));
  EXPECT_EQ(written.at<cv::Vec4b>(50, 180), cv::Vec4b(250, 240, 230, 255));
}

TEST_F(Qorfaces, cutsTheOnlyFacesPersonOutOfItsSurroundings) {
  const std::string cutOut = (directory_ / "cut.png").string();
  // The network's box is the middle half of the photograph: its surroundings are all of it.
  const CommandResult result = runWithModels("--detector ssd --crop-mask " + cutOut + " " + face_);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(cv::imread(cutOut, cv::IMREAD_UNCHANGED).size(), cv::Size(640, 480));
}

TEST_F(Qorfaces, saysWhyThereIsNoCloserMask) {
  const std::string cutOut = (directory_ / "cut.png").string();
  const CommandResult result = runWithModels("--crop-mask " + cutOut + " " + plain_);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(contains(result.err, "a closer mask takes exactly one face; there are 0"))
      << result.err;
  EXPECT_FALSE(std::filesystem::exists(cutOut));
}

TEST_F(Qorfaces, saysWhenTheCutOutCannotBeWritten) {
  const CommandResult result = runWithModels("--mask /no/such/directory/cut.png " + face_);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(contains(result.err, "cannot write /no/such/directory/cut.png")) << result.err;
}

TEST_F(Qorfaces, needsTheSegmentationModelForMasksOnly) {
  std::filesystem::remove(directory_ / "models" / kMadeSegmentation);
  EXPECT_EQ(runWithModels(face_).exitCode, 0);
  const CommandResult result =
      runWithModels("--mask " + (directory_ / "cut.png").string() + " " + face_);
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_TRUE(contains(result.err, "model07.onnx")) << result.err;
}

TEST_F(Qorfaces, annotatesBesideAMask) {
  const std::string copy = (directory_ / "copy.png").string();
  const CommandResult result = runWithModels("--mask " + (directory_ / "cut.png").string() +
                                             " --annotate " + copy + " --json " + face_);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(cv::imread(copy).size(), cv::Size(640, 480));
  EXPECT_FALSE(nlohmann::json::parse(result.out)[0]["faces"][0].contains("headCentre"));
}

TEST_F(Qorfaces, looksAtEveryTileAndAtTheWhole) {
  // The made network sees a face in the middle half of whatever it is shown. In a 2 x 2 grid of
  // tiles that is four faces; the whole photograph's large one contains their greater parts.
  const CommandResult result = runWithModels("--tiles 2x2 --json --head-centre " + plain_);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const nlohmann::json photo = nlohmann::json::parse(result.out)[0];
  EXPECT_EQ(photo["width"], 300);
  EXPECT_EQ(photo["found"], photo["faces"].size());
  ASSERT_GE(photo["faces"].size(), 1U);
  // The first tile is the left top three quarters.
  EXPECT_NEAR(photo["faces"][0]["box"]["left"].get<double>(), 0.75 / 4, 0.01);
  EXPECT_NEAR(photo["faces"][0]["box"]["bottom"].get<double>(), 0.75 * 0.75, 0.01);
  EXPECT_TRUE(photo["faces"][0].contains("headCentre"));
}

TEST_F(Qorfaces, givesTheSameWhateverTheThreadsDo) {
  const CommandResult first = runWithModels("--tiles 5x4 --json " + plain_);
  ASSERT_EQ(first.exitCode, 0) << first.err;
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(runWithModels("--tiles 5x4 --json " + plain_).out, first.out);
  }
}

TEST_F(Qorfaces, drawsTheFacesOfTilesOnThePhotograph) {
  const std::string copy = (directory_ / "copy.png").string();
  EXPECT_EQ(runWithModels("--tiles 1x1 --annotate " + copy + " " + plain_).exitCode, 0);
  const cv::Mat picture = cv::imread(copy);
  ASSERT_EQ(picture.size(), cv::Size(300, 200));
  EXPECT_EQ(picture.at<cv::Vec3b>(50, 150), cv::Vec3b(0, 255, 0)); // the box's top edge
}

TEST_F(Qorfaces, rejectsGridsAndCombinationsThatMakeNoSense) {
  for (const char* const arguments :
       {"--tiles 0x3", "--tiles 1x", "--tiles axb", "--tiles 1000x1000", "--tiles 51x1",
        "--tiles 2x2 --detector haar", "--tiles 2x2 --slot 3", "--tiles 2x2 --mask a.png",
        "--tiles 2x2 --landmarks", "--mask a.jpg", "--mask a.png --landmarks"}) {
    const CommandResult result = runWithModels(std::string(arguments) + " " + plain_);
    EXPECT_EQ(result.exitCode, 2) << arguments;
    EXPECT_TRUE(result.out.empty()) << arguments;
  }
  EXPECT_EQ(runWithModels("--mask a.png " + plain_ + " " + face_).exitCode, 2);
}

TEST_F(Qorfaces, saysOnceThatAGroupPhotographCannotBeRead) {
  const CommandResult result = runWithModels("--tiles 3x3 missing.jpg");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(contains(result.err, "qorfaces: missing.jpg: cannot be read as a picture"));
}

} // namespace
} // namespace qorocv::testing
