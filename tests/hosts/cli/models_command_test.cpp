// qorfaces models, run on real models, made ones and damaged ones.
#include "make_models/made_models.h"
#include "support/command.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace qorocv::testing {
namespace {

class QorfacesModels : public ::testing::Test {
protected:
  CommandResult run(const std::string& arguments) const {
    return runCommand(std::string(QORFACES_PROGRAM) + " models " + arguments, directory_.path());
  }
  CommandResult runOnModels() const { return run(models_.string()); }
  void damage(const char* model) const { std::ofstream(models_ / model) << "no model"; }

  TemporaryDirectory directory_;
  std::filesystem::path models_ = directory_ / "models";
};

/// What the line of a model says.
std::string said(const CommandResult& result, const std::string& model) {
  std::istringstream lines(result.out);
  for (std::string line; std::getline(lines, line);) {
    if (line.substr(0, model.size()) == model) {
      return line.substr(line.find_first_not_of(' ', model.size()));
    }
  }
  return "nothing";
}

TEST_F(QorfacesModels, knowsTheEmbeddedOnesAndThePublishedOnes) {
  const CommandResult result = run(QOROCV460_MODELS_DIR);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(said(result, kMadeCaffeText), "good: the embedded and published one");
  EXPECT_EQ(said(result, kMadeCaffeWeights), "good: the embedded one");
  EXPECT_EQ(said(result, kMadeTensorflowText), "good: the embedded and published one");
  EXPECT_EQ(said(result, kMadeTensorflowWeights), "good: the embedded and published one");
  EXPECT_EQ(said(result, kMadeLandmarks), "good: the embedded one");
  EXPECT_EQ(said(result, kMadeCascade), "good: the embedded and published one");
  EXPECT_EQ(said(result, kMadeSegmentation), "good: the embedded one");
}

TEST_F(QorfacesModels, saysThatOthersCanBeUsed) {
  writeMadeModels(models_);
  const CommandResult result = runOnModels();
  EXPECT_EQ(result.exitCode, 0) << result.err;
  std::size_t others = 0;
  std::istringstream lines(result.out);
  for (std::string line; std::getline(lines, line); ++others) {
    EXPECT_EQ(line.substr(20), "another file than the published one; it can be used");
  }
  EXPECT_EQ(others, 7U);
}

TEST_F(QorfacesModels, namesEachThatIsMissing) {
  for (const char* const model :
       {kMadeCaffeText, kMadeCaffeWeights, kMadeTensorflowText, kMadeTensorflowWeights,
        kMadeLandmarks, kMadeCascade, kMadeSegmentation}) {
    writeMadeModels(models_);
    std::filesystem::remove(models_ / model);
    const CommandResult result = runOnModels();
    EXPECT_EQ(result.exitCode, 3) << model;
    EXPECT_EQ(said(result, model), "missing");
  }
}

TEST_F(QorfacesModels, tellsWhatIsThereUnderItsPublicName) {
  std::filesystem::create_directory(models_);
  std::ofstream(models_ / "deploy.prototxt") << "a model";
  const CommandResult result = runOnModels();
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(said(result, kMadeCaffeText),
            "missing; deploy.prototxt is there: it has to be named model01.prototxt");
  EXPECT_EQ(said(result, kMadeCaffeWeights), "missing");
}

TEST_F(QorfacesModels, namesEachThatIsDamagedAndNoOther) {
  for (const char* const model :
       {kMadeCaffeText, kMadeCaffeWeights, kMadeTensorflowText, kMadeTensorflowWeights,
        kMadeLandmarks, kMadeCascade, kMadeSegmentation}) {
    writeMadeModels(models_);
    damage(model);
    const CommandResult result = runOnModels();
    EXPECT_EQ(result.exitCode, 3) << model;
    for (const char* const other :
         {kMadeCaffeText, kMadeCaffeWeights, kMadeTensorflowText, kMadeTensorflowWeights,
          kMadeLandmarks, kMadeCascade, kMadeSegmentation}) {
      const std::string line = said(result, other);
      EXPECT_EQ(line.substr(0, 8) == "damaged:", other == model)
          << model << ", of " << other << ": " << line;
    }
  }
}

#ifndef _WIN32
TEST_F(QorfacesModels, takesABackslashForALetter) {
  std::filesystem::create_directory_symlink(QOROCV460_MODELS_DIR, directory_ / "models\\");
  const CommandResult result = run("'" + (directory_ / "models\\").string() + "'");
  EXPECT_EQ(said(result, kMadeCascade), "good: the embedded and published one") << result.err;
}

// Windows opens no directory: the model is missing there.
TEST_F(QorfacesModels, namesEachDirectoryInAModelsPlace) {
  for (const char* const model :
       {kMadeCaffeText, kMadeCaffeWeights, kMadeTensorflowText, kMadeTensorflowWeights,
        kMadeLandmarks, kMadeCascade, kMadeSegmentation}) {
    writeMadeModels(models_);
    std::filesystem::remove(models_ / model);
    std::filesystem::create_directory(models_ / model);
    const CommandResult result = runOnModels();
    EXPECT_EQ(result.exitCode, 3) << model << ": " << result.err;
    const std::string line = said(result, model);
    EXPECT_NE(line.find((models_ / model).string() + " is a directory"), std::string::npos) << line;
    std::filesystem::remove(models_ / model);
  }
}
#endif

TEST_F(QorfacesModels, takesOneDirectory) {
  EXPECT_EQ(run(directory_.path().string()).exitCode, 3); // without a model in it
  EXPECT_EQ(run((directory_ / "nowhere").string()).exitCode, 2);
  EXPECT_EQ(run("one two").exitCode, 2);
  EXPECT_EQ(run("--unknown").exitCode, 2);
  const CommandResult help = run("--help");
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_NE(help.out.find("Exit codes"), std::string::npos);
}

} // namespace
} // namespace qorocv::testing
