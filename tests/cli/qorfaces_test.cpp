// The command-line host, run as a person and as a program would.
#include "support/command.h"
#include "support/made_models.h"
#include "support/made_pictures.h"
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

TEST_F(Qorfaces, printsJsonWithPointsInALocaleWithCommas) {
  const CommandResult result =
      run("--json --models " + (directory_ / "models").string() + " " + face_ +
          " && LC_ALL=de_DE.UTF-8 " + QORFACES_PROGRAM + " --json --models " +
          (directory_ / "models").string() + " " + face_);
  ASSERT_EQ(result.exitCode, 0);
  EXPECT_NO_THROW(nlohmann::json::parse(result.out)) << result.out;
}

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
  writeMadeModels(directory_ / "модели");
  const CommandResult result = run("--models " + (directory_ / "модели").string() + " " + face_);
  EXPECT_EQ(result.exitCode, 0) << result.err;
}

} // namespace
} // namespace qorocv::testing
