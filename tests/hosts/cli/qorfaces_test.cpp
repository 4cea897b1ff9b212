// The command-line host, run as a person and as a program would.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "qorocv460/qorocv460.h"
#include "support/command.h"
#include "support/shared_files.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <utility>
#include <vector>

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

TEST_F(Qorfaces, printsARowPerFace) {
  const CommandResult result = runWithModels("--detector haar " + plain_ + " " + face_);
  EXPECT_EQ(lineCount(result.out), 4U) << result.out; // two photographs, a heading, a face
}

#ifndef _WIN32
class QorfacesWithoutModels : public Qorfaces {
protected:
  /// Runs the program from `there`, without a word about models.
  CommandResult runIn(const std::filesystem::path& there, const std::filesystem::path& program) {
    return runCommand("cd " + there.string() + " && " + program.string() + " " + face_,
                      directory_.path());
  }

  /// With the library, which some builds of the program look for beside it.
  static void copyProgramTo(const std::filesystem::path& directory) {
    const std::filesystem::path built = std::filesystem::path(QORFACES_PROGRAM).parent_path();
    for (const char* const name : {"qorfaces", "libQOROCV460.so.0"}) {
      std::filesystem::copy_file(built / name, directory / name);
    }
  }
};

TEST_F(QorfacesWithoutModels, takesThoseOfTheCurrentDirectory) {
  const CommandResult result = runIn(directory_.path(), QORFACES_PROGRAM);
  EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST_F(QorfacesWithoutModels, takesThoseBesideItWhereTheCurrentDirectoryHasNone) {
  copyProgramTo(directory_.path());
  const CommandResult result = runIn("/", directory_ / "qorfaces");
  EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST_F(QorfacesWithoutModels, takesThoseBesideItsBinWhereTheCurrentDirectoryHasNone) {
  std::filesystem::create_directory(directory_ / "bin");
  copyProgramTo(directory_ / "bin");
  const CommandResult result = runIn("/", directory_ / "bin" / "qorfaces");
  EXPECT_EQ(result.exitCode, 0) << result.err;
}
#endif

TEST_F(Qorfaces, printsALinePerPhotograph) {
  const CommandResult result = runWithModels("--detector haar " + plain_ + " " + face_);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_TRUE(contains(result.out, plain_ + "  300 x 200  no face\n")) << result.out;
  EXPECT_TRUE(contains(result.out, face_ + "  640 x 480  1 face\n")) << result.out;
}

TEST_F(Qorfaces, saysThatItListsThirtyOfMoreFaces) {
  const auto crowd = writePicture(directory_ / "crowd.png", pictureWithGrid(35)).string();
  const CommandResult result = runWithModels("--detector haar " + crowd);
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

#ifdef __linux__
TEST_F(Qorfaces, takesNamesThatAreNotUtf8) {
  const std::string photo = (directory_ / "d\xE9j\xE0 vu.png").string();
  std::filesystem::create_symlink(face_, photo);
  const CommandResult result =
      runWithModels("--crop 4:5 --portraits " + directory_.path().string() + " '" + photo + "'");
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_TRUE(contains(result.out, photo + "  640 x 480  1 face\n")) << result.out;
  EXPECT_TRUE(std::filesystem::exists(directory_ / "d\xE9j\xE0 vu.png-1.jpg"));
}
#endif

#ifndef _WIN32
TEST_F(Qorfaces, takesNamesInAnyLanguageInAnyLocale) {
  const std::filesystem::path models = directory_ / "модели";
  const std::filesystem::path photo = directory_ / "дом.png";
  std::filesystem::create_symlink(directory_ / "models", models);
  std::filesystem::create_symlink(face_, photo);
  const CommandResult result = runCommand(std::string("LC_ALL=C ") + QORFACES_PROGRAM +
                                              " --models " + models.string() + " " + photo.string(),
                                          directory_.path());
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_TRUE(contains(result.out, photo.string() + "  640 x 480  1 face\n")) << result.out;
}
#endif

TEST_F(Qorfaces, keepsGoingAfterAPhotographThatCannotBeRead) {
  const CommandResult result = runWithModels("missing.jpg " + face_);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(contains(result.err, "qorfaces: missing.jpg: there is no such file\n")) << result.err;
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
  const CommandResult shared = runWithModels("--json --detector haar " + face_);
  for (const char* slot : {"1", "5", "9"}) {
    const CommandResult result =
        runWithModels("--json --detector haar --slot " + std::string(slot) + " " + face_);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, shared.out);
  }
}

TEST_F(Qorfaces, givesProgramsHeadCentres) {
  for (const std::string detector : {"haar", "ssd"}) {
    const CommandResult result =
        runWithModels("--json --head-centre --max-side 0 --detector " + detector + " " + face_);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const nlohmann::json face = nlohmann::json::parse(result.out)[0]["faces"][0];
    EXPECT_EQ(face["headCentre"]["x"], face["noseBridge"]["x"]) << detector;
  }
}

TEST_F(Qorfaces, printsHeadCentres) {
  for (const std::string detector : {"haar", "ssd"}) {
    const CommandResult result =
        runWithModels("--head-centre --detector " + detector + " " + face_);
    EXPECT_TRUE(contains(result.out, "head y")) << detector;
  }
}

TEST_F(Qorfaces, drawsHeadCentres) {
  for (const std::string detector : {"haar", "ssd"}) {
    const std::string copy = (directory_ / (detector + ".png")).string();
    const CommandResult result = runWithModels("--json --head-centre --max-side 0 --detector " +
                                               detector + " --annotate " + copy + " " + face_);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const nlohmann::json face = nlohmann::json::parse(result.out)[0]["faces"][0];
    const cv::Mat picture = cv::imread(copy);
    const cv::Point centre(cvRound(face["headCentre"]["x"].get<double>() * 640),
                           cvRound(face["headCentre"]["y"].get<double>() * 480));
    EXPECT_EQ(picture.at<cv::Vec3b>(centre), cv::Vec3b(0, 255, 255)) << detector;
  }
}

TEST_F(Qorfaces, needsOnlyTheModelsOfItsDetector) {
  std::filesystem::remove(directory_ / "models" / kMadeCascade);
  std::filesystem::remove(directory_ / "models" / kMadeTensorflowWeights);
  EXPECT_EQ(runWithModels("--detector ssd " + face_).exitCode, 0);
  const CommandResult result = runWithModels("--detector ssd-tf " + face_);
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_TRUE(contains(result.err, "model04.pb")) << result.err;
  EXPECT_FALSE(contains(result.err, "model06.xml")) << result.err;
}

TEST_F(Qorfaces, explainsItself) {
  const CommandResult result = run("--help");
  EXPECT_EQ(result.exitCode, 0);
  for (const char* word :
       {"PHOTO", "--models", "--max-side", "--landmarks", "--annotate", "--json", "--detector",
        "--slot", "--head-centre", "--verbose", "--version", "NAME:{ssd,ssd-tf,haar}=ssd",
        "N:NONNEGATIVE=1000", "damaged or cut short", "Exit codes", "fractions"}) {
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

TEST_F(Qorfaces, namesAnOptionThatItDoesNotKnow) {
  for (const char* const command : {"", "scan ", "export ", "report ", "merge ", "models "}) {
    const CommandResult result = run(std::string(command) + "--nonsense");
    EXPECT_EQ(result.exitCode, 2) << command;
    EXPECT_TRUE(contains(result.err, "--nonsense")) << command << ": " << result.err;
  }
}

TEST_F(Qorfaces, explainsEachCommand) {
  for (const char* const command : {"scan ", "export ", "report ", "merge ", "models "}) {
    const CommandResult help = run(std::string(command) + "--help");
    EXPECT_EQ(help.exitCode, 0) << command;
    EXPECT_TRUE(contains(help.out, "Exit codes")) << command << ": " << help.out;
    const CommandResult version = run(std::string(command) + "--version");
    EXPECT_EQ(version.exitCode, 0) << command;
    EXPECT_TRUE(contains(version.out, QOROCV460_VERSION)) << command << ": " << version.out;
  }
}

TEST_F(Qorfaces, endsWithTwoForWhatIsNoRunFolder) {
  for (const char* const command : {"export ", "report ", "merge --out merged "}) {
    const CommandResult result = run(command + (directory_ / "models").string());
    EXPECT_EQ(result.exitCode, 2) << command << ": " << result.err;
    EXPECT_TRUE(contains(result.err, "models")) << command << ": " << result.err;
  }
}

TEST_F(Qorfaces, endsWithTwoForDirectoriesWithoutAName) {
  for (const std::string& arguments :
       {"--crop 4:5 --portraits \"\" " + face_, "scan --out \"\" " + face_,
        std::string("export \"\""), std::string("merge --out \"\" run"),
        std::string("merge --out run \"\"")}) {
    const CommandResult result = run(arguments);
    EXPECT_EQ(result.exitCode, 2) << arguments << ": " << result.err;
    EXPECT_TRUE(contains(result.err, "the name is empty")) << result.err;
  }
}

TEST_F(Qorfaces, endsWithThreeWhereModelsAreMissing) {
  std::filesystem::remove(directory_ / "models" / kMadeLandmarks);
  const CommandResult result = runWithModels(face_);
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(result.out, "");
}

TEST_F(Qorfaces, namesTheModelsThatAreMissing) {
  std::filesystem::remove(directory_ / "models" / kMadeLandmarks);
  const CommandResult result = runWithModels(face_);
  EXPECT_EQ(result.err, "qorfaces: " + (directory_ / "models").string() +
                            " lacks model05.yaml (landmarks); scripts/get-models.sh fills a "
                            "directory with all models\n");
}

TEST_F(Qorfaces, saysWhereThereIsNoDirectoryOfModels) {
  std::filesystem::remove_all(directory_ / "models");
  for (const std::string& arguments : {face_, "scan --out run " + face_}) {
    const CommandResult result = run(arguments);
    EXPECT_EQ(result.exitCode, 3) << arguments;
    EXPECT_TRUE(contains(result.err, "there is no directory models; scripts/get-models.sh fills"))
        << arguments << ": " << result.err;
  }
}

TEST_F(Qorfaces, endsWithThreeForAModelThatCannotBeLoaded) {
  const std::string cutOut = (directory_ / "cut.png").string();
  const std::pair<const char*, std::string> uses[] = {
      {kMadeLandmarks, ""},
      {kMadeCaffeText, "--detector ssd "},
      {kMadeTensorflowWeights, "--detector ssd-tf "},
      {kMadeCascade, "--detector haar "},
      {kMadeLandmarks, "--landmarks "},
      {kMadeSegmentation, "--mask " + cutOut + " "},
  };
  for (const auto& [model, options] : uses) {
    writeMadeModels(directory_ / "models");
    std::ofstream(directory_ / "models" / model) << "no model";
    const CommandResult result = runWithModels(options + face_);
    EXPECT_EQ(result.exitCode, 3) << model;
    EXPECT_TRUE(contains(result.err, "qorfaces: a model cannot be loaded: ")) << result.err;
    EXPECT_EQ(result.out, "") << model;
  }
}

TEST_F(Qorfaces, showsWhatTheLibrariesSayOfAModelThatCannotBeLoaded) {
  std::ofstream(directory_ / "models" / kMadeCaffeText) << "no model";
  EXPECT_TRUE(contains(runWithModels("--detector ssd " + face_).err, "libprotobuf ERROR"));
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

TEST_F(Qorfaces, cutsThePersonOutOfAWebpPhotograph) {
  cv::imwrite((directory_ / "face.webp").string(), pictureWithFace());
  const std::string cutOut = (directory_ / "cut.png").string();
  const CommandResult result =
      runWithModels("--mask " + cutOut + " " + (directory_ / "face.webp").string());
  EXPECT_EQ(result.exitCode, 0) << result.err;
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
  const CommandResult result =
      runWithModels("--detector haar --crop-mask " + cutOut + " " + plain_);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err,
            "qorfaces: " + plain_ + ": a closer mask takes exactly one face; there are 0\n");
  EXPECT_FALSE(std::filesystem::exists(cutOut));
}

TEST_F(Qorfaces, saysWhenTheCutOutCannotBeWritten) {
  const CommandResult result = runWithModels("--mask /no/such/directory/cut.png " + face_);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(contains(result.err, "/no/such/directory/cut.png cannot be written: No such file"))
      << result.err;
}

TEST_F(Qorfaces, refusesOneFileForTwoPictures) {
  const CommandResult result = runWithModels("--mask a.png --crop-mask a.png " + face_);
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_TRUE(contains(result.err, "a.png: is named for two pictures")) << result.err;
}

#ifndef _WIN32
TEST_F(Qorfaces, keepsThePictureFromBeforeWhereTheNewOneCannotBeWritten) {
  const std::string cutOut = (directory_ / "cut.png").string();
  std::ofstream(cutOut) << "from before";
  const CommandResult result =
      runCommand(std::string("ulimit -f 1; trap '' XFSZ; exec ") + QORFACES_PROGRAM + " --models " +
                     (directory_ / "models").string() + " --mask " + cutOut + " " + face_,
                 directory_.path());
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(contains(result.err, "cut.png cannot be written: File too large")) << result.err;
  std::string left;
  std::getline(std::ifstream(cutOut), left);
  EXPECT_EQ(left, "from before");
}
#endif

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
  const CommandResult result =
      runWithModels("--mask " + (directory_ / "cut.png").string() + " --annotate " + copy +
                    " --max-side 0 --json " + face_);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(cv::imread(copy).size(), cv::Size(640, 480));
  EXPECT_FALSE(nlohmann::json::parse(result.out)[0]["faces"][0].contains("headCentre"));
}

TEST_F(Qorfaces, looksAtEveryTile) {
  // The made network sees a face in the middle half of whatever it is shown. In a 2 x 2 grid of
  // tiles that is four faces; the whole photograph's large one contains their greater parts.
  const CommandResult result = runWithModels("--tiles 2x2 --json " + plain_);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const nlohmann::json photo = nlohmann::json::parse(result.out)[0];
  EXPECT_EQ(photo["found"], 4);
  ASSERT_EQ(photo["faces"].size(), 4U);
  // The first tile is the left top three quarters.
  EXPECT_NEAR(photo["faces"][0]["box"]["left"].get<double>(), 0.75 / 4, 0.01);
  EXPECT_NEAR(photo["faces"][0]["box"]["bottom"].get<double>(), 0.75 * 0.75, 0.01);
}

TEST_F(Qorfaces, looksAtTheWholePhotographAfterItsTiles) {
  // A small face in the middle: that of the whole photograph lies between those of the four tiles.
  MadeModels models;
  models.caffeRows = {{0.875F, 0.4F, 0.4F, 0.6F, 0.6F}};
  writeMadeModels(directory_ / "models", models);
  const CommandResult result = runWithModels("--tiles 2x2 --json " + plain_);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const nlohmann::json faces = nlohmann::json::parse(result.out)[0]["faces"];
  ASSERT_EQ(faces.size(), 5U);
  EXPECT_NEAR(faces[4]["box"]["left"].get<double>(), 0.4, 0.01);
  EXPECT_NEAR(faces[4]["box"]["right"].get<double>(), 0.6, 0.01);
}

TEST_F(Qorfaces, givesThePhotographsSizeWhereItLooksAtTiles) {
  const CommandResult result = runWithModels("--tiles 2x2 --json " + plain_);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const nlohmann::json photo = nlohmann::json::parse(result.out)[0];
  EXPECT_EQ(photo["width"], 300);
  EXPECT_EQ(photo["height"], 200);
}

TEST_F(Qorfaces, givesHeadCentresOfFacesInTiles) {
  const CommandResult result = runWithModels("--tiles 2x2 --json --head-centre " + plain_);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const nlohmann::json faces = nlohmann::json::parse(result.out)[0]["faces"];
  ASSERT_GE(faces.size(), 1U);
  EXPECT_TRUE(faces[0].contains("headCentre"));
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

TEST_F(Qorfaces, rejectsGridsThatMakeNoSense) {
  for (const std::string grid : {"0x3", "1x", "axb", "1000x1000", "51x1"}) {
    const CommandResult result = runWithModels("--tiles " + grid + " " + plain_);
    EXPECT_EQ(result.exitCode, 2) << grid;
    EXPECT_TRUE(result.out.empty()) << grid;
  }
}

TEST_F(Qorfaces, rejectsOptionsThatDoNotGoTogether) {
  for (const std::string options :
       {"--tiles 2x2 --detector haar", "--tiles 2x2 --slot 3", "--tiles 2x2 --mask a.png",
        "--tiles 2x2 --landmarks", "--mask a.png --landmarks"}) {
    const CommandResult result = runWithModels(options + " " + plain_);
    EXPECT_EQ(result.exitCode, 2) << options;
    EXPECT_TRUE(result.out.empty()) << options;
  }
}

TEST_F(Qorfaces, rejectsACutOutInAFormatWithoutTransparency) {
  const CommandResult result = runWithModels("--mask a.jpg " + plain_);
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_TRUE(result.out.empty());
}

TEST_F(Qorfaces, rejectsACutOutOfTwoPhotographs) {
  EXPECT_EQ(runWithModels("--mask a.png " + plain_ + " " + face_).exitCode, 2);
}

TEST_F(Qorfaces, saysOnceThatAGroupPhotographCannotBeRead) {
  const CommandResult result = runWithModels("--tiles 3x3 missing.jpg");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err, "qorfaces: missing.jpg: there is no such file\n");
}

TEST_F(Qorfaces, printsItsVersion) {
  const CommandResult result = run("--version");
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.out, "qorfaces " QOROCV460_VERSION " (OpenCV " + cv::getVersionString() + ")\n");
}

TEST_F(Qorfaces, findsFacesByTheCaffeNetworkUnlessToldOtherwise) {
  const std::string out = runWithModels("--json " + face_).out;
  EXPECT_EQ(out, runWithModels("--json --detector ssd " + face_).out);
  EXPECT_NE(out, runWithModels("--json --detector haar " + face_).out);
}

TEST_F(Qorfaces, findsTheFacesOfLandmarksByTheCascade) {
  const auto boxes = [&](const std::string& options) {
    const auto photos = nlohmann::json::parse(runWithModels("--json " + options + face_).out);
    return photos[0]["faces"][0]["box"];
  };
  EXPECT_EQ(boxes("--landmarks "), boxes("--detector haar "));
}

TEST_F(Qorfaces, leavesWhatTheAnnotatedCopyCannotReplace) {
  const std::filesystem::path place = directory_ / "copy.png";
  std::filesystem::create_directory(place);
  std::ofstream(place / "inside") << "from before";
  const CommandResult result = runWithModels("--annotate " + place.string() + " " + face_);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(contains(result.err, "cannot write the annotated copy")) << result.err;
  EXPECT_TRUE(std::filesystem::exists(place / "inside"));
}

TEST_F(Qorfaces, leavesNothingBesideTheAnnotatedCopy) {
  const std::filesystem::path place = directory_ / "place";
  std::filesystem::create_directory(place);
  for (const char* const options : {"", "--head-centre ", "--detector haar "}) {
    const std::string copy = (place / "copy.png").string();
    EXPECT_EQ(runWithModels(options + ("--annotate " + copy) + " " + face_).exitCode, 0);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(place), {}), 1) << options;
  }
}

TEST_F(Qorfaces, scalesPhotographsToAThousandPixelsUnlessToldOtherwise) {
  const std::string copy = (directory_ / "copy.png").string();
  const auto sizeWith = [&](const std::string& options) {
    EXPECT_EQ(runWithModels(options + "--annotate " + copy + " " + face_).exitCode, 0);
    return cv::imread(copy).size();
  };
  EXPECT_EQ(sizeWith(""), cv::Size(1000, 750));
  EXPECT_EQ(sizeWith("--max-side 0 "), cv::Size(640, 480));
}

TEST_F(Qorfaces, leavesTilesAtTheirOwnSizeUnlessToldOtherwise) {
  // A size at which boxes of whole pixels tell scales apart.
  const auto odd = writePicture(directory_ / "odd.png", plainPicture({301, 203})).string();
  const std::string out = runWithModels("--json --tiles 2x2 " + odd).out;
  EXPECT_EQ(out, runWithModels("--json --tiles 2x2 --max-side 0 " + odd).out);
  EXPECT_NE(out, runWithModels("--json --tiles 2x2 --max-side 1000 " + odd).out);
}

using Bytes = std::vector<unsigned char>;

Bytes encoded(const char* extension, const std::vector<int>& parameters = {}) {
  Bytes bytes;
  EXPECT_TRUE(cv::imencode(extension, pictureWithFace(), bytes, parameters));
  return bytes;
}

Bytes firstTwoThirds(const Bytes& bytes) {
  return {bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(bytes.size() / 3)};
}

class QorfacesWithDamage : public Qorfaces {
protected:
  std::string write(const char* name, const Bytes& bytes) {
    const auto path = directory_ / name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path.string();
  }
  static std::string warningOf(const std::string& photo) {
    return "qorfaces: " + photo +
           ": the file is damaged or cut short; what could be read was used\n";
  }
};

TEST_F(QorfacesWithDamage, saysNothingOfAWholePhotograph) {
  const std::string photo = write("whole.jpg", encoded(".jpg"));
  const CommandResult result = runWithModels("--json " + photo);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(nlohmann::json::parse(result.out)[0]["damaged"], false);
}

TEST_F(QorfacesWithDamage, namesAPhotographThatIsCutShort) {
  for (const int progressive : {0, 1}) {
    const Bytes bytes = encoded(".jpg", {cv::IMWRITE_JPEG_PROGRESSIVE, progressive});
    const std::string photo = write("cut.jpg", firstTwoThirds(bytes));
    const CommandResult result =
        runWithModels("--detector ssd " + face_ + " " + photo + " " + plain_);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, warningOf(photo));
    EXPECT_TRUE(contains(result.out, photo + "  640 x 480  1 face\n")) << result.out;
  }
}

TEST_F(QorfacesWithDamage, namesAPhotographThatLacksItsEndMarkerAlone) {
  Bytes bytes = encoded(".jpg");
  bytes.resize(bytes.size() - 2);
  const std::string photo = write("end.jpg", bytes);
  EXPECT_EQ(runWithModels(photo).err, warningOf(photo));
}

TEST_F(QorfacesWithDamage, namesAPhotographWithWrongBytesInItsMiddle) {
  Bytes bytes = encoded(".jpg");
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 50, 0xAA);
  const std::string photo = write("wrong.jpg", bytes);
  const CommandResult result = runWithModels(photo);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, warningOf(photo));
}

TEST_F(QorfacesWithDamage, namesADamagedGroupPhotographOnce) {
  const std::string photo = write("cut.jpg", firstTwoThirds(encoded(".jpg")));
  EXPECT_EQ(runWithModels("--tiles 3x2 " + photo).err, warningOf(photo));
}

TEST_F(QorfacesWithDamage, tellsProgramsOfIt) {
  const std::string photo = write("cut.jpg", firstTwoThirds(encoded(".jpg")));
  const CommandResult result = runWithModels("--json " + photo);
  EXPECT_EQ(nlohmann::json::parse(result.out)[0]["damaged"], true);
}

TEST_F(QorfacesWithDamage, failsForAPhotographInAFormatThatIsReadWholeOrNotAtAll) {
  const std::string photo = write("cut.png", firstTwoThirds(encoded(".png")));
  const CommandResult result = runWithModels(photo);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err, "qorfaces: " + photo +
                            ": cannot be read as a picture: damaged, or of no known format\n");
}

TEST_F(QorfacesWithDamage, cutsThePersonOutOfWhatCouldBeRead) {
  const std::string cutOut = (directory_ / "cut.png").string();
  const std::string photo =
      write("cut.jpg", firstTwoThirds(encoded(".jpg", {cv::IMWRITE_JPEG_PROGRESSIVE, 1})));
  const CommandResult result = runWithModels("--mask " + cutOut + " " + photo);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, warningOf(photo));
  EXPECT_EQ(cv::imread(cutOut, cv::IMREAD_UNCHANGED).size(), cv::Size(640, 480));
}

TEST_F(Qorfaces, printsNoLinesOfTheLibrariesBelow) {
  const std::string picture = (directory_ / "picture.png").string();
  for (const std::string& options :
       {std::string(), std::string("--detector ssd-tf "), std::string("--detector haar "),
        std::string("--landmarks "), std::string("--head-centre "), std::string("--tiles 2x2 "),
        std::string("--json "), "--mask " + picture + " ", "--annotate " + picture + " "}) {
    const CommandResult result = runWithModels(options + face_);
    EXPECT_EQ(result.exitCode, 0) << options;
    EXPECT_EQ(result.err, "") << options;
    EXPECT_FALSE(contains(result.out, "loading data")) << options;
  }
}

TEST_F(Qorfaces, printsLinesOfTheLibrariesBelowWhereItIsAskedTo) {
  const CommandResult result = runWithModels("--verbose missing.jpg " + face_);
  EXPECT_TRUE(contains(result.err, "findFile")) << result.err;
  EXPECT_TRUE(contains(result.err, "Could not open or find the image")) << result.err;
  EXPECT_EQ(lineCount(result.out), 3U) << result.out; // a photograph, a heading, a face
}

TEST_F(Qorfaces, saysWhyAPhotographCannotBeRead) {
  const std::string text = (directory_ / "text.jpg").string();
  std::ofstream(text) << "no picture";
  const std::string directory = directory_.path().string();
  const CommandResult result = runWithModels("missing.jpg " + directory + " " + text);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err,
            "qorfaces: missing.jpg: there is no such file\n"
            "qorfaces: " +
                directory + ": is a directory: qorfaces scan looks through folders\nqorfaces: " +
                text + ": cannot be read as a picture: damaged, or of no known format\n");
}

#ifndef _WIN32
TEST_F(Qorfaces, saysWhenTheResultsCannotBePrinted) {
  const std::string command =
      std::string(QORFACES_PROGRAM) + " --models " + (directory_ / "models").string() + " " + face_;
  const CommandResult result = runCommand("{ " + command + " >/dev/full; }", directory_.path());
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err, "qorfaces: the results cannot be written to standard output\n");
}

TEST_F(Qorfaces, leavesNoTemporaryFiles) {
  std::filesystem::create_directory(directory_ / "temporary");
  const std::string here = (directory_ / "temporary").string();
  const CommandResult result = runCommand("TMPDIR=" + here + " " + QORFACES_PROGRAM + " --models " +
                                              (directory_ / "models").string() + " " + face_,
                                          directory_.path());
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_TRUE(std::filesystem::is_empty(here));
}

TEST_F(Qorfaces, worksWithoutAPlaceForTemporaryFiles) {
  const CommandResult result =
      runCommand(std::string("TMPDIR=/no/such/directory ") + QORFACES_PROGRAM + " --models " +
                     (directory_ / "models").string() + " " + face_,
                 directory_.path());
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(lineCount(result.out), 3U) << result.out;
}
#endif

TEST(QorfacesWithRealModels, findsTheFourMenOfTheQuartetWithoutOptions) {
  if (!haveRealPhoto("quartet.jpg")) {
    GTEST_SKIP();
  }
  const TemporaryDirectory directory;
  const CommandResult result =
      runCommand(std::string(QORFACES_PROGRAM) + " --models " + realModels() + " " +
                     realPhoto("quartet.jpg").string(),
                 directory.path());
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(contains(result.out, "  3648 x 2406  4 faces\n")) << result.out;
}

TEST(QorfacesWithRealModels, findsTheAstronautAloneWithoutOptions) {
  const TemporaryDirectory directory;
  const CommandResult result =
      runCommand(std::string(QORFACES_PROGRAM) + " --models " + realModels() + " " +
                     realPhoto("astronaut.jpg").string(),
                 directory.path());
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(contains(result.out, "  512 x 512  1 face\n")) << result.out;
}

} // namespace
} // namespace qorocv::testing
