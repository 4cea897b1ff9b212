// The engine finds what OpenCV finds: in number, order and value. OpenCV works on one thread here.
#include "faces/cascade_engine.h"
#include "faces/face_cascade.h"
#include "support/made_cascades.h"
#include "support/shared_files.h"

#include <gtest/gtest.h>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>

#include <cmath>
#include <functional>
#include <map>
#include <ostream>

namespace qorocv {

void PrintTo(InstructionSet set, std::ostream* out) {
  *out << (set == InstructionSet::avx2 ? "AVX2" : "plain");
}

namespace testing {
namespace {

std::vector<InstructionSet> availableSets() {
  std::vector<InstructionSet> sets = {InstructionSet::plain};
  if (isAvailable(InstructionSet::avx2)) {
    sets.push_back(InstructionSet::avx2);
  }
  return sets;
}

std::string cascadeFile() {
  return realModels() + "model06.xml";
}

enum class Neighbours { none = 0, three = 3 };

std::vector<cv::Rect> openCvFinds(cv::CascadeClassifier& cascade, const cv::Mat& grey,
                                  Neighbours neighbours) {
  std::vector<cv::Rect> faces;
  cascade.detectMultiScale(grey, faces, 1.1, static_cast<int>(neighbours), 0, cv::Size(),
                           cv::Size());
  return faces;
}

std::vector<cv::Rect> clipped(std::vector<cv::Rect> boxes, const cv::Mat& picture) {
  for (cv::Rect& box : boxes) {
    box &= cv::Rect({}, picture.size());
  }
  return boxes;
}

/// One cascade in both.
class Both {
public:
  explicit Both(const cv::FileNode& root) : engine_(makeCascadeEngine(root)) {
    classifier_.read(root);
  }

  bool isThere() const { return engine_ && !classifier_.empty(); }
  const CascadeEngine& engine() const { return *engine_; }

  void expectSameBoxes(const cv::Mat& grey) {
    const std::vector<cv::Rect> expected = openCvFinds(classifier_, grey, Neighbours::three);
    for (const InstructionSet set : availableSets()) {
      EXPECT_EQ(engine_->detect(grey, set), expected)
          << ::testing::PrintToString(set) << ' ' << grey.size();
    }
  }

  /// Gives the number of candidates.
  std::size_t expectSameCandidates(const cv::Mat& grey) {
    const std::vector<cv::Rect> expected = openCvFinds(classifier_, grey, Neighbours::none);
    for (const InstructionSet set : availableSets()) {
      EXPECT_EQ(clipped(engine_->candidates(grey, set), grey), expected)
          << ::testing::PrintToString(set) << ' ' << grey.size();
    }
    return expected.size();
  }

private:
  std::shared_ptr<const CascadeEngine> engine_;
  cv::CascadeClassifier classifier_;
};

Both realCascade() {
  const cv::FileStorage file(cascadeFile(), cv::FileStorage::READ);
  return Both(file.getFirstTopLevelNode());
}

cv::Mat withLongerSide(const cv::Mat& picture, int side) {
  const double scale = static_cast<double>(side) / std::max(picture.cols, picture.rows);
  cv::Mat scaled;
  cv::resize(picture, scaled, {}, scale, scale, cv::INTER_AREA);
  return scaled;
}

cv::Mat noise(const cv::Size& size, int seed) {
  cv::Mat picture(size, CV_8UC1);
  cv::RNG random(static_cast<std::uint64_t>(seed));
  random.fill(picture, cv::RNG::UNIFORM, 0, 256);
  return picture;
}

cv::Mat gradient(const cv::Size& size, double right, double down) {
  cv::Mat picture(size, CV_8UC1);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      picture.at<uchar>(y, x) = cv::saturate_cast<uchar>(x * right + y * down);
    }
  }
  return picture;
}

// Soft noise, in which stages let more windows pass than in hard noise.
cv::Mat clouds(const cv::Size& size, int seed) {
  cv::Mat picture;
  cv::resize(noise({size.width / 4 + 1, size.height / 4 + 1}, seed), picture, size, 0, 0,
             cv::INTER_CUBIC);
  return picture;
}

// ---- Photographs

class CascadeEnginePhotographs : public ::testing::TestWithParam<const char*> {
protected:
  void SetUp() override {
    if (!haveRealPhoto(GetParam())) {
      GTEST_SKIP() << "without " << GetParam();
    }
    photograph_ = cv::imread(realPhoto(GetParam()).string(), cv::IMREAD_GRAYSCALE);
    ASSERT_FALSE(photograph_.empty());
    ASSERT_TRUE(both_.isThere());
  }

  cv::Mat photograph_;
  Both both_ = realCascade();
};

TEST_P(CascadeEnginePhotographs, haveTheSameFacesAtTwelveSizes) {
  for (const int side : {23, 47, 80, 100, 133, 177, 240, 301, 360, 480, 640, 777}) {
    both_.expectSameBoxes(withLongerSide(photograph_, side));
  }
}

TEST_P(CascadeEnginePhotographs, haveTheSameCandidatesAtSixSizes) {
  std::size_t candidates = 0;
  for (const int side : {61, 150, 200, 333, 400, 555}) {
    candidates += both_.expectSameCandidates(withLongerSide(photograph_, side));
  }
  EXPECT_GT(candidates, 0U) << "nothing to compare";
}

TEST_P(CascadeEnginePhotographs, haveTheSameFacesOnAnyNumberOfThreads) {
  const cv::Mat grey = withLongerSide(photograph_, 320);
  const std::vector<cv::Rect> expected = both_.engine().candidates(grey, InstructionSet::plain);
  const int threadsBefore = cv::getNumThreads();
  for (const int threads : {2, 4}) {
    cv::setNumThreads(threads);
    for (const InstructionSet set : availableSets()) {
      EXPECT_EQ(both_.engine().candidates(grey, set), expected) << threads;
    }
  }
  cv::setNumThreads(threadsBefore);
}

INSTANTIATE_TEST_SUITE_P(AtHand, CascadeEnginePhotographs,
                         ::testing::Values("astronaut.jpg", "couple.jpg", "crowd.jpg",
                                           "painting.jpg", "player.jpg", "quartet.jpg"),
                         [](const auto& photo) {
                           const std::string name = photo.param;
                           return name.substr(0, name.find('.'));
                         });

// ---- Made pictures

class CascadeEngineTest : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(both_.isThere()); }

  cv::Mat photograph() const {
    return cv::imread(realPhoto("astronaut.jpg").string(), cv::IMREAD_GRAYSCALE);
  }

  Both both_ = realCascade();
};

TEST_F(CascadeEngineTest, findsTheSameInNoise) {
  for (int seed = 0; seed < 4; ++seed) {
    both_.expectSameCandidates(noise({160 + 31 * seed, 120 + 7 * seed}, seed));
  }
}

TEST_F(CascadeEngineTest, findsTheSameInSoftNoise) {
  std::size_t candidates = 0;
  for (int seed = 0; seed < 8; ++seed) {
    candidates += both_.expectSameCandidates(clouds({200 + 17 * seed, 150 + seed}, seed));
  }
  EXPECT_GT(candidates, 0U) << "nothing to compare";
}

TEST_F(CascadeEngineTest, findsTheSameInGradients) {
  both_.expectSameCandidates(gradient({200, 90}, 1.2, 0));
  both_.expectSameCandidates(gradient({90, 200}, 0, 1.2));
  both_.expectSameCandidates(gradient({150, 150}, 0.7, 0.7));
  both_.expectSameCandidates(gradient({150, 150}, 0.05, 0.1)); // next to no contrast
}

TEST_F(CascadeEngineTest, findsNothingInFlatPictures) {
  for (const int brightness : {0, 1, 127, 255}) {
    const cv::Mat flat(100, 140, CV_8UC1, cv::Scalar(brightness));
    both_.expectSameCandidates(flat);
    EXPECT_TRUE(both_.engine().detect(flat, InstructionSet::plain).empty());
  }
}

// The largest sums and sums of squares that there are.
TEST_F(CascadeEngineTest, findsTheSameInBlackWithWhite) {
  cv::Mat checked(96, 131, CV_8UC1, cv::Scalar(0));
  cv::Mat halves = checked.clone();
  halves.colRange(60, 131) = 255;
  for (int y = 0; y < checked.rows; ++y) {
    for (int x = 0; x < checked.cols; ++x) {
      checked.at<uchar>(y, x) = (x / 7 + y / 5) % 2 == 0 ? 255 : 0;
    }
  }
  both_.expectSameCandidates(checked);
  both_.expectSameCandidates(halves);
  both_.expectSameCandidates(cv::Mat(255 - halves));
}

TEST_F(CascadeEngineTest, findsTheSameInPicturesOfAboutAWindow) {
  for (int width = 17; width <= 25; ++width) {
    for (int height = 17; height <= 25; ++height) {
      both_.expectSameCandidates(clouds({width, height}, width * height));
      both_.expectSameCandidates(
          withLongerSide(photograph(), 25)(cv::Rect(0, 0, width, std::min(height, 16))));
    }
  }
}

TEST_F(CascadeEngineTest, findsTheSameInNarrowPictures) {
  for (const cv::Size& size :
       {cv::Size(1, 1), cv::Size(1, 300), cv::Size(300, 1), cv::Size(19, 400), cv::Size(400, 19),
        cv::Size(20, 400), cv::Size(400, 20), cv::Size(21, 1500), cv::Size(1500, 21),
        cv::Size(5000, 22), cv::Size(22, 5000), cv::Size(64, 700), cv::Size(700, 64)}) {
    both_.expectSameCandidates(clouds(size, size.width));
    both_.expectSameBoxes(noise(size, size.height));
  }
}

// Every width modulo the groups of windows, at step 2 and at step 1.
TEST_F(CascadeEngineTest, findsTheSameAtEveryWidth) {
  const cv::Mat wide = withLongerSide(photograph(), 260);
  for (int width = 40; width < 175; ++width) {
    both_.expectSameCandidates(wide.colRange(50, 50 + width).rowRange(20, 72));
  }
}

TEST_F(CascadeEngineTest, findsTheSameAtEveryHeight) {
  const cv::Mat high = withLongerSide(photograph(), 300);
  for (int height = 20; height < 160; height += 3) {
    both_.expectSameCandidates(high.rowRange(20, 20 + height).colRange(60, 160));
  }
}

TEST_F(CascadeEngineTest, seesNothingAroundAView) {
  const cv::Mat grey = withLongerSide(photograph(), 400);
  const cv::Mat view = grey(cv::Rect(31, 17, 283, 201));
  ASSERT_FALSE(view.isContinuous());
  both_.expectSameBoxes(view);
  for (const InstructionSet set : availableSets()) {
    EXPECT_EQ(both_.engine().candidates(view, set), both_.engine().candidates(view.clone(), set));
  }
}

TEST_F(CascadeEngineTest, findsNothingInAPictureWithoutPixels) {
  both_.expectSameBoxes(cv::Mat());
  both_.expectSameBoxes(cv::Mat(0, 100, CV_8UC1));
}

TEST_F(CascadeEngineTest, remembersNothing) {
  const cv::Mat grey = withLongerSide(photograph(), 200);
  for (const InstructionSet set : availableSets()) {
    const std::vector<cv::Rect> first = both_.engine().candidates(grey, set);
    both_.engine().candidates(noise({333, 222}, 5), set);
    both_.engine().candidates(noise({20, 20}, 5), set);
    EXPECT_EQ(both_.engine().candidates(grey, set), first);
  }
}

// The reference itself, as it is called today.
TEST_F(CascadeEngineTest, refusesPicturesOf16BitsAsOpenCvDoes) {
  const cv::Mat deep(100, 100, CV_16UC1, cv::Scalar(0));
  cv::CascadeClassifier classifier(cascadeFile());
  int expected = 0;
  try {
    openCvFinds(classifier, deep, Neighbours::three);
  } catch (const cv::Exception& exception) {
    expected = exception.code;
  }
  try {
    both_.engine().detect(deep, InstructionSet::plain);
    FAIL() << "no exception";
  } catch (const cv::Exception& exception) {
    EXPECT_EQ(exception.code, expected);
  }
}

// ---- Made cascades

TEST(MadeCascades, findTheSame) {
  std::size_t candidates = 0;
  for (std::uint32_t seed = 0; seed < 150; ++seed) {
    const CascadeFile file(cascadeText(CascadeMaker(seed).stages()));
    Both both(file.root());
    ASSERT_TRUE(both.isThere()) << seed;
    candidates += both.expectSameCandidates(clouds({90, 70}, static_cast<int>(seed)));
    candidates += both.expectSameCandidates(noise({61, 53}, static_cast<int>(seed)));
    if (HasFailure()) {
      FAIL() << seed;
    }
  }
  EXPECT_GT(candidates, 10000U) << "hardly anything to compare";
}

// A feature that holds in every window: its threshold is beyond what it can be.
MadeStump always(float leaf) {
  return {{{0, 0, 4, 4, -1}, {0, 0, 2, 4, 2}}, 1000, leaf, leaf};
}

bool passesStage(const std::vector<MadeStump>& stumps, float threshold) {
  const CascadeFile file(cascadeText({{stumps, threshold}}));
  Both both(file.root());
  EXPECT_TRUE(both.isThere());
  return both.expectSameCandidates(noise({20, 20}, 1)) == 1;
}

// Of the other pixels there are too few for as much on the dark side.
TEST(MadeCascades, seeMoreLightThan16BitsHold) {
  const MadeStump stump{{{2, 1, 11, 17, -1}, {2, 7, 11, 6, 3}}, 0, 0, 1};
  const CascadeFile file(cascadeText({{{stump}, 0.5F}}));
  Both both(file.root());
  ASSERT_TRUE(both.isThere());
  cv::Mat band(20, 20, CV_8UC1, cv::Scalar(0));
  band.rowRange(7, 13) = 255;
  EXPECT_EQ(both.expectSameCandidates(band), 1U);
}

TEST(MadeCascades, passAStageWithItsVeryThreshold) {
  const float threshold = 0.5F - 1e-5F; // as OpenCV lowers it
  EXPECT_TRUE(passesStage({always(threshold)}, 0.5F));
}

TEST(MadeCascades, failAStageByTheLeastBit) {
  const float threshold = 0.5F - 1e-5F;
  EXPECT_FALSE(passesStage({always(std::nextafter(threshold, 0.F))}, 0.5F));
}

TEST(MadeCascades, addLeavesInDoublePrecision) {
  const float threshold = 0.5F - 1e-5F;
  constexpr float kTiny = 1.F / (1 << 30);
  EXPECT_TRUE(passesStage({always(threshold), always(kTiny), always(-kTiny)}, 0.5F));
  EXPECT_FALSE(passesStage({always(threshold), always(-kTiny)}, 0.5F));
}

// The votes of every window lie so near to the threshold that only the exact sum tells: it ends on
// one side or the other by what one stump of any kind sees.
TEST(MadeCascades, findTheSameWhereOnlyTheExactSumTells) {
  constexpr float kTiny = 1.F / (1 << 30);
  const float threshold = 0.5F - 1e-5F;
  std::size_t candidates = 0;
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    MadeStump telling = CascadeMaker(seed).stages().front().stumps.front();
    telling.below = kTiny;
    telling.above = -kTiny;
    const CascadeFile file(cascadeText({{{always(threshold), telling}, 0.5F}}));
    Both both(file.root());
    ASSERT_TRUE(both.isThere()) << seed;
    candidates += both.expectSameCandidates(clouds({60, 50}, static_cast<int>(seed)));
    candidates += both.expectSameCandidates(noise({45, 41}, static_cast<int>(seed)));
    ASSERT_FALSE(HasFailure()) << seed;
  }
  EXPECT_GT(candidates, 1000U) << "hardly anything to compare";
}

// Pixels of a window whose 324 * sum of squares - (sum)^2 is `contrast`: `sum` and `squares` from
// values that few pixels need to have.
cv::Mat windowWithContrast(int contrast) {
  for (int sum = 0; sum < 40000; ++sum) {
    const std::int64_t scaled = std::int64_t{contrast} + std::int64_t{sum} * sum;
    if (scaled % 324 != 0) {
      continue;
    }
    cv::Mat window(20, 20, CV_8UC1, cv::Scalar(0));
    std::int64_t squares = scaled / 324;
    int left = sum;
    // Greedily the largest pixels that leave enough for ones.
    int places = 0;
    while (left > 0 && places < 324 && squares > 0) {
      int pixel = 255;
      while (pixel > 1 && (pixel > left || pixel * pixel - pixel > squares - left)) {
        --pixel;
      }
      window.at<uchar>(1 + places / 18, 1 + places % 18) = static_cast<uchar>(pixel);
      left -= pixel;
      squares -= pixel * pixel;
      ++places;
    }
    if (left == 0 && squares == 0) {
      return window;
    }
  }
  return {};
}

// 324 / sqrt(10497600) is 0.1: the window with that contrast is the first to be left out.
TEST(MadeCascades, lookAtWindowsFromTheSameContrastOn) {
  const CascadeFile file(cascadeText({{{always(1)}, 0}}));
  Both both(file.root());
  std::map<int, std::size_t> found;
  for (int contrast = 10497560; contrast <= 10497640; ++contrast) {
    const cv::Mat window = windowWithContrast(contrast);
    if (!window.empty()) {
      found[contrast] = both.expectSameCandidates(window);
    }
  }
  EXPECT_EQ(found.at(10497600), 0U);
  const auto next = found.upper_bound(10497600);
  ASSERT_NE(next, found.end());
  EXPECT_EQ(next->second, 1U) << next->first;
}

// ---- Other cascades

std::string replaced(std::string text, const std::string& part, const std::string& replacement) {
  const std::size_t at = text.find(part);
  EXPECT_NE(at, std::string::npos) << part;
  return text.replace(at, part.size(), replacement);
}

bool knows(const std::string& part, const std::string& replacement) {
  const std::string known = cascadeText({{{always(1)}, 0}});
  const CascadeFile file(replaced(known, part, replacement));
  return makeCascadeEngine(file.root()) != nullptr;
}

TEST(CascadeEngineKinds, knowUntiltedStumps) {
  EXPECT_TRUE(knows("HAAR", "HAAR"));
}

TEST(CascadeEngineKinds, knowNoOtherFeatures) {
  EXPECT_FALSE(knows("HAAR", "LBP"));
  EXPECT_FALSE(knows("<tilted>0", "<tilted>1"));
  EXPECT_FALSE(knows("0 0 4 4 -1.", "0 0 4 4 -2."));
  EXPECT_FALSE(knows("0 0 2 4 2.", "0 0 2 4 1."));
  EXPECT_FALSE(knows("0 0 2 4 2.", "0 0 2 4 2.5"));
  EXPECT_FALSE(knows("0 0 2 4 2.", "4 0 2 4 2.")); // beside the outer rectangle
  EXPECT_FALSE(knows("0 0 2 4 2.", "0 0 2 4 3.")); // an edge of weight 2 beside those of weight 1
  EXPECT_FALSE(knows("0 0 2 4 2.", "0 0 3 3 2.</_><_>1 1 3 3 2.")); // one across the other
}

TEST(CascadeEngineKinds, knowNoThresholdsThatTheVotesDoNotReach) {
  EXPECT_TRUE(knows("<stageThreshold>0", "<stageThreshold>1"));
  EXPECT_FALSE(knows("<stageThreshold>0", "<stageThreshold>1e10"));
}

TEST(CascadeEngineKinds, knowNoOtherWindow) {
  EXPECT_FALSE(knows("<width>20", "<width>24"));
  EXPECT_FALSE(knows("<height>20", "<height>24"));
}

TEST(CascadeEngineKinds, knowNoTreesOfSeveralNodes) {
  EXPECT_FALSE(knows("0 -1 0 1000<", "1 0 0 1000 -1 -2 0 1000<"));
}

TEST(CascadeEngineKinds, knowNoCategories) {
  EXPECT_FALSE(knows("<maxCatCount>0", "<maxCatCount>2"));
}

TEST(CascadeEngineKinds, knowNoLeavesThatAddUpInexactly) {
  EXPECT_FALSE(knows("<leafValues>1 1", "<leafValues>1e-20 1"));
  EXPECT_FALSE(knows("<leafValues>1 1", "<leafValues>1e20 1"));
  EXPECT_FALSE(knows("<leafValues>1 1", "<leafValues>.NaN 1"));
}

TEST(CascadeEngineKinds, knowNoCascadeWithAStageThatTheyDoNotKnow) {
  const MadeStage known{{always(1)}, 0};
  const MadeStage inexact{{always(1e-20F)}, 0};
  const MadeStage unreached{{always(1)}, 1e10F};
  EXPECT_NE(makeCascadeEngine(CascadeFile(cascadeText({known, known})).root()), nullptr);
  for (const MadeStage& unknown : {inexact, unreached}) {
    EXPECT_EQ(makeCascadeEngine(CascadeFile(cascadeText({known, unknown})).root()), nullptr);
  }
}

TEST(CascadeEngineKinds, knowNoStumpsOfMissingFeatures) {
  EXPECT_FALSE(knows("0 -1 0 1000<", "0 -1 1 1000<"));
  EXPECT_FALSE(knows("0 -1 0 1000<", "0 -1 -1 1000<"));
}

TEST(CascadeEngineKinds, knowNothingWhereThereIsNothing) {
  EXPECT_EQ(makeCascadeEngine(cv::FileNode()), nullptr);
  const CascadeFile withoutStages(cascadeText({}));
  EXPECT_EQ(makeCascadeEngine(withoutStages.root()), nullptr);
  const CascadeFile withoutStumps(cascadeText({{{}, 0}}));
  EXPECT_EQ(makeCascadeEngine(withoutStumps.root()), nullptr);
}

// ---- Whichever engine

TEST(FaceCascade, detectsWithOpenCvWhatTheEngineDoesNotKnow) {
  const std::string tree =
      replaced(cascadeText({{{always(1)}, 0}}), "0 -1 0 1000<", "1 0 0 1000 -1 -2 0 1000<");
  const CascadeFile file(replaced(tree, "<leafValues>1 1", "<leafValues>1 1 1"));
  ASSERT_EQ(makeCascadeEngine(file.root()), nullptr);
  const FaceCascade cascade = FaceCascade::read(file.root());
  cv::CascadeClassifier classifier = file.classifier();
  ASSERT_FALSE(classifier.empty());
  const cv::Mat picture = clouds({100, 80}, 1);
  const std::vector<cv::Rect> expected = openCvFinds(classifier, picture, Neighbours::three);
  EXPECT_FALSE(expected.empty());
  EXPECT_EQ(cascade.detect(picture), expected);
}

TEST(FaceCascade, takesTheEngineForTheRealCascade) {
  const cv::FileStorage file(cascadeFile(), cv::FileStorage::READ);
  EXPECT_NE(makeCascadeEngine(file.getFirstTopLevelNode()), nullptr);
  EXPECT_FALSE(FaceCascade::read(file.getFirstTopLevelNode()).empty());
}

TEST(FaceCascade, staysEmptyWhereNothingCanBeRead) {
  EXPECT_TRUE(FaceCascade::read(cv::FileNode()).empty());
}

std::string messageOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const cv::Exception& exception) {
    return exception.what();
  }
  return "no exception";
}

TEST(FaceCascade, throwsAsOpenCvDoesWhereItIsEmpty) {
  const cv::Mat picture = noise({50, 50}, 1);
  cv::CascadeClassifier classifier;
  const std::string expected =
      messageOf([&] { openCvFinds(classifier, picture, Neighbours::three); });
  EXPECT_NE(expected, "no exception");
  EXPECT_EQ(messageOf([&] { FaceCascade().detect(picture); }), expected);
}

} // namespace
} // namespace testing
} // namespace qorocv
