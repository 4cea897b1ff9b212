#include "faces/lbf_fitter.h"
#include "faces/lbf_reader.h"
#include "make_models/made_lbf_model.h"
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

namespace qorocv {
namespace {

using testing::MadeLbfModel;
using testing::textOf;

constexpr MadeLbfModel kSmallest{1, 1, 2};

class LbfReader : public ::testing::Test {
protected:
  std::string path() const { return (directory_ / "model.yaml").string(); }

  std::shared_ptr<const LbfModel> read(const std::string& text) const {
    std::ofstream(path(), std::ios::binary) << text;
    return readLbfModel(path());
  }

  struct Refusal {
    int code = 0;
    std::string text;
  };

  /// How a file is refused; code 0 where it is not.
  Refusal refusalOf(const std::string& text) const {
    try {
      read(text);
      return {};
    } catch (const cv::Exception& exception) {
      return {exception.code, exception.err};
    }
  }

  /// That the file is refused as damaged, at this line of it.
  void expectDamage(const std::string& text, int line) const {
    const Refusal refusal = refusalOf(text);
    EXPECT_EQ(refusal.code, cv::Error::StsParseError);
    const std::string place = path() + ", line " + std::to_string(line) + ":";
    EXPECT_EQ(refusal.text.substr(0, place.size()), place) << refusal.text;
  }

  testing::TemporaryDirectory directory_;
};

std::string replaced(std::string text, const std::string& old, const std::string& with) {
  const std::size_t at = text.find(old);
  EXPECT_NE(at, std::string::npos) << old;
  return text.replace(at, old.size(), with);
}

/// Where a line begins; the first is number 1.
std::size_t startOfLine(const std::string& text, int line) {
  std::size_t at = 0;
  for (int i = 1; i < line; ++i) {
    at = text.find('\n', at) + 1;
  }
  return at;
}

/// The same numbers give the same fits; so do numbers that a fitter never looks at.
void expectFitsOfOpenCv(const LbfModel& model, const std::string& path) {
  const cv::Mat picture = testing::pictureWithFace();
  const std::vector<cv::Rect> boxes{{10, 12, 40, 44}, {-20, 30, 61, 50}, {30, 20, 7, 9}};
  std::vector<std::vector<cv::Point2f>> expected;
  testing::openCvFacemark(path)->fit(picture, boxes, expected);
  const auto points = fitLbf(model, picture, boxes);
  ASSERT_TRUE(points);
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    // A damaged mean shape may lead to what is no number, which equals nothing.
    for (std::size_t k = 0; k < 68; ++k) {
      const cv::Point2f difference = (*points)[i][k] - expected[i][k];
      EXPECT_TRUE((*points)[i][k] == expected[i][k] || std::isnan(difference.x) ||
                  std::isnan(difference.y));
    }
  }
}

TEST_F(LbfReader, readsTheParameters) {
  const auto model = read(textOf(MadeLbfModel{3, 5, 4}));
  ASSERT_TRUE(model);
  EXPECT_EQ(model->stages.size(), 3U);
  EXPECT_EQ(model->treesPerLandmark, 5);
  EXPECT_EQ(model->depth, 4);
  EXPECT_EQ(model->leaves, 8);
  EXPECT_EQ(model->trees(), 340);
}

TEST_F(LbfReader, readsTheNumbersThatOpenCvReads) {
  for (const MadeLbfModel& made : {kSmallest, MadeLbfModel{}, MadeLbfModel{1, 6, 5}}) {
    const auto model = read(textOf(made));
    ASSERT_TRUE(model);
    expectFitsOfOpenCv(*model, path());
  }
}

TEST_F(LbfReader, readsTheModelOfTheOtherTests) {
  testing::writeMadeModels(directory_.path());
  const std::string made = (directory_ / testing::kMadeLandmarks).string();
  const auto model = readLbfModel(made);
  ASSERT_TRUE(model);
  expectFitsOfOpenCv(*model, made);
}

std::vector<LbfOffsets<double>> stepsOf(const LbfStage& anyStage) {
  return std::visit(
      [](const auto& stage) {
        std::vector<LbfOffsets<double>> steps(stage.steps.size());
        for (std::size_t i = 0; i < steps.size(); ++i) {
          const auto& offsets = stage.steps[i].offsets;
          std::copy(offsets.begin(), offsets.end(), steps[i].begin());
        }
        return steps;
      },
      anyStage);
}

/// The numbers of OpenCV's reader, which has no other way to show them than the file itself.
void expectNumbersOfOpenCv(const LbfModel& model, const std::string& path) {
  const cv::FileStorage file(path, cv::FileStorage::READ);
  cv::Mat_<double> meanShape;
  file["regressor_meanshape"] >> meanShape;
  for (int i = 0; i < 68; ++i) {
    EXPECT_EQ(model.meanShape.x[static_cast<std::size_t>(i)], meanShape(i, 0));
    EXPECT_EQ(model.meanShape.y[static_cast<std::size_t>(i)], meanShape(i, 1));
  }
  for (std::size_t stage = 0; stage < model.stages.size(); ++stage) {
    cv::Mat_<double> weights;
    file["weights_" + std::to_string(stage)] >> weights;
    const std::vector<LbfOffsets<double>> steps = stepsOf(model.stages[stage]);
    ASSERT_EQ(steps.size(), static_cast<std::size_t>(weights.cols));
    for (int leaf = 0; leaf < weights.cols; ++leaf) {
      const LbfOffsets<double>& offsets = steps[static_cast<std::size_t>(leaf)];
      for (std::size_t i = 0; i < 68; ++i) {
        const int row = 2 * static_cast<int>(i);
        // As bytes: zero has a sign.
        ASSERT_EQ(std::memcmp(&offsets[i], &weights(row, leaf), sizeof(double)), 0);
        ASSERT_EQ(std::memcmp(&offsets[68 + i], &weights(row + 1, leaf), sizeof(double)), 0);
      }
    }
  }
}

TEST_F(LbfReader, readsEveryWeightAsItIs) {
  using testing::LbfNumbers;
  for (const auto& [largest, numbers] : std::initializer_list<std::pair<double, LbfNumbers>>{
           {0.012, LbfNumbers::even},
           {0.012, LbfNumbers::ofEveryMagnitude},
           {0.012, LbfNumbers::ofSinglePrecision},
           {MadeLbfModel::kLargest, LbfNumbers::even},
           {MadeLbfModel::kLargest, LbfNumbers::ofEveryMagnitude}}) {
    MadeLbfModel made;
    made.largestWeight = largest;
    made.numbers = numbers;
    const auto model = read(textOf(made));
    ASSERT_TRUE(model);
    expectNumbersOfOpenCv(*model, path());
  }
}

/// For each stage whether the reader keeps it in single precision.
std::vector<bool> stagesInFloats(const LbfModel& model) {
  std::vector<bool> inFloats;
  for (const LbfStage& stage : model.stages) {
    inFloats.push_back(std::holds_alternative<LbfStageOf<float>>(stage));
  }
  return inFloats;
}

TEST_F(LbfReader, keepsAStageInSinglePrecisionWhereNoNumberChanges) {
  MadeLbfModel made;
  made.numbers = testing::LbfNumbers::ofSinglePrecision;
  EXPECT_EQ(stagesInFloats(*read(textOf(made))), (std::vector<bool>{true, true}));

  made.largestSplit = made.largestWeight = FLT_MAX;
  EXPECT_EQ(stagesInFloats(*read(textOf(made))), (std::vector<bool>{true, true}));
}

TEST_F(LbfReader, keepsAStageInDoublePrecisionWhereANumberNeedsIt) {
  MadeLbfModel made;
  EXPECT_EQ(stagesInFloats(*read(textOf(made))), (std::vector<bool>{false, false}));

  made.numbers = testing::LbfNumbers::ofSinglePrecision;
  made.largestWeight = FLT_MIN; // below it floats are denormal
  EXPECT_EQ(stagesInFloats(*read(textOf(made))), (std::vector<bool>{false, false}));

  made.largestWeight = MadeLbfModel{}.largestWeight;
  made.largestSplit = FLT_MIN;
  EXPECT_EQ(stagesInFloats(*read(textOf(made))), (std::vector<bool>{false, false}));
}

TEST_F(LbfReader, readsLinesThatEndWithACarriageReturn) {
  const std::string text = textOf(kSmallest);
  std::string withReturns;
  for (const char c : text) {
    withReturns += c == '\n' ? "\r\n" : std::string(1, c);
  }
  const auto model = read(withReturns);
  ASSERT_TRUE(model);
  EXPECT_TRUE(*model == *read(text));
}

/// What OpenCV reads as the same model: blanks, comments and lines without words.
std::vector<std::string> writtenOtherwise(const std::string& text) {
  return {
      text + "\n",
      text + "# by hand\n",
      text + "\n   \n# by hand\n\n",
      replaced(text, "stages_n: ", "stages_n:   "),
      replaced(text, "n_landmarks: 68", "n_landmarks: 68   "),
      replaced(text, "weights_0: !!opencv-matrix", "weights_0:  !!opencv-matrix "),
      replaced(text, "   rows: 68", "   rows:  68"),
      replaced(text, "tree_n: ", "\n# by hand\n\ntree_n: "),
      replaced(text, "weights_0: ", "\n# by hand\nweights_0: "),
  };
}

TEST_F(LbfReader, readsWhatIsWrittenOtherwiseAsOpenCvDoes) {
  const std::string usual = textOf(kSmallest);
  const auto model = read(usual);
  for (const std::string& text : writtenOtherwise(usual)) {
    const auto other = read(text);
    ASSERT_TRUE(other) << text.substr(0, 200);
    EXPECT_TRUE(*other == *model) << text.substr(0, 200);
    expectFitsOfOpenCv(*other, path());
  }
}

// ---- Files for OpenCV

/// The same file with this many characters of base64 a line.
std::string wrappedAt(std::size_t width, const std::string& text) {
  std::istringstream lines(text);
  std::string wrapped;
  std::string indentation;
  std::string block;
  const auto endBlock = [&] {
    for (std::size_t at = 0; at < block.size(); at += width) {
      wrapped += indentation + block.substr(at, width) + '\n';
    }
    block.clear();
  };
  for (std::string line; std::getline(lines, line);) {
    const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
    if (start > 0 && line.find_first_of(" :", start) == std::string::npos) {
      indentation = line.substr(0, start);
      block += line.substr(start);
    } else {
      endBlock();
      wrapped += line + '\n';
    }
  }
  endBlock();
  return wrapped;
}

TEST_F(LbfReader, readsLinesOfAnyLength) {
  const std::string usual = textOf(kSmallest);
  EXPECT_EQ(wrappedAt(64, usual), usual);
  const auto model = read(usual);
  for (const std::size_t width : {4, 76, 1000}) {
    const auto other = read(wrappedAt(width, usual));
    ASSERT_TRUE(other) << width;
    EXPECT_TRUE(*other == *model) << width;
  }
}

TEST_F(LbfReader, readsLinesWithoutWordsOnlyWhereOpenCvDoes) {
  const std::string usual = textOf(kSmallest);
  int wereRead = 0;
  for (int line = 1; line <= 50; ++line) {
    for (const char* const words : {"# by hand\n", "\n", "   \n"}) {
      std::string text = usual;
      text.insert(startOfLine(text, line), words);
      std::shared_ptr<const LbfModel> model;
      try {
        model = read(text);
      } catch (const cv::Exception& exception) {
        EXPECT_EQ(exception.code, cv::Error::StsParseError);
      }
      if (model) {
        SCOPED_TRACE("line " + std::to_string(line) + ": " + words);
        expectFitsOfOpenCv(*model, path());
        ++wereRead;
      }
    }
  }
  EXPECT_GT(wereRead, 10);
}

TEST_F(LbfReader, leavesMatricesInDecimalsToOpenCv) {
  MadeLbfModel decimals = kSmallest;
  decimals.inBase64 = false;
  EXPECT_FALSE(read(textOf(decimals)));
}

TEST_F(LbfReader, leavesOtherNumbersOfLandmarksToOpenCv) {
  MadeLbfModel fewer = kSmallest;
  fewer.landmarks = 29;
  EXPECT_FALSE(read(textOf(fewer)));
}

TEST_F(LbfReader, leavesTreesWithoutComparisonsToOpenCv) {
  EXPECT_FALSE(read(textOf(MadeLbfModel{1, 1, 1})));
}

TEST_F(LbfReader, leavesLargerParametersToOpenCv) {
  const std::string text = textOf(kSmallest);
  EXPECT_FALSE(read(replaced(text, "stages_n: 1", "stages_n: 33")));
  EXPECT_FALSE(read(replaced(text, "tree_n: 1", "tree_n: 33")));
  EXPECT_FALSE(read(replaced(text, "tree_depth: 2", "tree_depth: 9")));
}

TEST_F(LbfReader, leavesAnotherOrderOfTheParametersToOpenCv) {
  EXPECT_FALSE(
      read(replaced(textOf(kSmallest), "stages_n: 1\ntree_n: 1", "tree_n: 1\nstages_n: 1")));
}

TEST_F(LbfReader, leavesWhatHasMoreToSayToOpenCv) {
  const std::string text = textOf(kSmallest);
  for (const std::string more : {"more: 1\n", "\n...\n", "_more: [ 1, 2 ]\n"}) {
    EXPECT_FALSE(read(text + more)) << more;
    EXPECT_TRUE(testing::openCvFacemark(path())) << more; // which reads it
  }
  // As OpenCV does, a reader of one stage does not mind that there is another.
  EXPECT_FALSE(read(replaced(textOf(MadeLbfModel{2, 1, 2}), "stages_n: 2", "stages_n: 1")));
}

TEST_F(LbfReader, leavesOtherKindsOfFilesToOpenCv) {
  EXPECT_FALSE(read(""));
  EXPECT_FALSE(read("{}"));
  EXPECT_FALSE(read("<?xml version=\"1.0\"?>\n<opencv_storage>\n</opencv_storage>\n"));
  EXPECT_FALSE(read(std::string(1'000'000, '\0')));
}

// ---- Files that nobody can read

TEST_F(LbfReader, throwsOpenCvsCodeForAMissingFile) {
  try {
    readLbfModel((directory_ / "missing.yaml").string());
    FAIL() << "nothing was thrown";
  } catch (const cv::Exception& exception) {
    EXPECT_EQ(exception.code, cv::Error::StsBadArg);
    EXPECT_NE(exception.err.find("missing.yaml"), std::string::npos);
  }
}

TEST_F(LbfReader, refusesAParameterThatIsNoNumber) {
  expectDamage(replaced(textOf(kSmallest), "tree_n: 1", "tree_n: x"), 4);
}

TEST_F(LbfReader, refusesAMeanShapeOfAnotherNumberOfLandmarks) {
  expectDamage(replaced(textOf(kSmallest), "n_landmarks: 68", "n_landmarks: 69"), 8);
}

TEST_F(LbfReader, refusesALastLineWithoutAnEnd) {
  std::string text = textOf(kSmallest);
  text.pop_back();
  expectDamage(text, static_cast<int>(std::count(text.begin(), text.end(), '\n')) + 1);
  EXPECT_THROW(testing::openCvFacemark(path()), cv::Exception);
}

TEST_F(LbfReader, refusesAMatrixOfAnotherSize) {
  const std::string text = textOf(kSmallest);
  expectDamage(replaced(text, "   rows: 4", "   rows: 5"), 37);
}

TEST_F(LbfReader, refusesACharacterThatIsNotBase64) {
  std::string text = textOf(kSmallest);
  for (const char c : {' ', '=', '-', '\0', '\x80'}) {
    text[startOfLine(text, 13) + 20] = c;
    expectDamage(text, 13);
  }
}

TEST_F(LbfReader, refusesALineThatIsTooShort) {
  std::string text = textOf(kSmallest);
  expectDamage(text.erase(startOfLine(text, 13) + 20, 4), 13);
}

TEST_F(LbfReader, refusesALineThatIsIndentedOtherwise) {
  std::string text = textOf(kSmallest);
  text[startOfLine(text, 13)] = 'A';
  expectDamage(text, 13);
}

TEST_F(LbfReader, refusesNumbersOfAnotherType) {
  // The head of the thresholds says integers, of the same size in base64.
  const std::string text = textOf(kSmallest);
  expectDamage(replaced(text, "   MWkgICAg", "   MWYgICAg"), 46);
}

TEST_F(LbfReader, refusesWhatIsNotFinite) {
  std::string text = textOf(kSmallest);
  // Eight bytes of a row that begins a group of three.
  text.replace(startOfLine(text, 13) + 6, 12, "AAAAAAAA8H8A"); // infinity
  expectDamage(text, 35);
}

TEST_F(LbfReader, refusesAWeightThatIsNotFinite) {
  std::string text = textOf(kSmallest);
  const auto start = text.begin() + static_cast<std::ptrdiff_t>(text.find("weights_0"));
  const auto linesBefore = static_cast<int>(std::count(text.begin(), start, '\n'));
  // The second line of the numbers, of which six stand in a line.
  text.replace(startOfLine(text, linesBefore + 7) + 6, 12, "AAAAAAAA8P8A"); // minus infinity
  expectDamage(text, static_cast<int>(std::count(text.begin(), text.end(), '\n')));
}

TEST_F(LbfReader, refusesAFileThatIsCutShort) {
  const std::string text = textOf(kSmallest);
  for (const int line : {8, 13, 36, 45, 47, 800}) {
    const Refusal refusal = refusalOf(text.substr(0, startOfLine(text, line) + 10));
    EXPECT_EQ(refusal.code, cv::Error::StsParseError) << line;
  }
}

TEST_F(LbfReader, refusesWhatFollowsTheModel) {
  const std::string text = textOf(kSmallest);
  const auto lines = static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  expectDamage(text + "      AAAA\n", lines + 1);
  expectDamage(text + "\n}\n", lines + 2);
}

/// Damages that no grammar may know of.
std::string damaged(std::string text, std::mt19937& random) {
  // More than half of it is weights: the beginning gets its share too.
  const std::size_t within = random() % 2 == 0 ? text.size() : 40'000;
  const std::size_t at = random() % within;
  switch (random() % 4) {
  case 0:
    text[at] = static_cast<char>(static_cast<unsigned char>(text[at]) ^ (1U << random() % 8));
    return text;
  case 1:
    return text.substr(0, at);
  case 2:
    return text.erase(at, 1 + random() % 200);
  default:
    std::swap(text[at], text[random() % within]);
    return text;
  }
}

TEST_F(LbfReader, refusesDamagedFilesOrReadsWhatOpenCvReads) {
  const std::string text = textOf(kSmallest);
  std::mt19937 random(460);
  int refused = 0;
  int wereRead = 0;
  for (int i = 0; i < 400; ++i) {
    std::shared_ptr<const LbfModel> model;
    try {
      model = read(damaged(text, random));
    } catch (const cv::Exception& exception) {
      EXPECT_EQ(exception.code, cv::Error::StsParseError);
      EXPECT_EQ(exception.err.rfind(path() + ", line ", 0), 0U) << exception.err;
      ++refused;
    }
    if (model) {
      expectFitsOfOpenCv(*model, path());
      ++wereRead;
    }
  }
  EXPECT_GT(refused, 100);
  EXPECT_GT(wereRead, 10);
}

} // namespace
} // namespace qorocv
