// Our fitter against OpenCV's, on made models and pictures and, where there are any, real ones.
#include "faces/face_cascade.h"
#include "faces/lbf_fitter.h"
#include "faces/lbf_reader.h"
#include "make_models/made_lbf_model.h"
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/shared_files.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>

namespace qorocv {
namespace {

using Boxes = std::vector<cv::Rect>;
using Landmarks = std::vector<std::vector<cv::Point2f>>;

/// What a fit came to: landmarks, none, or the code of an exception.
struct Fit {
  std::optional<Landmarks> landmarks;
  int error = 0;
};

// The same bits, except that what is no number has no sign that means anything.
bool areAlike(float a, float b) {
  return (a == b && std::signbit(a) == std::signbit(b)) || (std::isnan(a) && std::isnan(b));
}

bool areAlike(const std::vector<cv::Point2f>& a, const std::vector<cv::Point2f>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const cv::Point2f& p, const cv::Point2f& q) {
                      return areAlike(p.x, q.x) && areAlike(p.y, q.y);
                    });
}

bool operator==(const Fit& a, const Fit& b) {
  if (a.error != b.error || a.landmarks.has_value() != b.landmarks.has_value()) {
    return false;
  }
  return !a.landmarks || std::equal(a.landmarks->begin(), a.landmarks->end(), b.landmarks->begin(),
                                    b.landmarks->end(),
                                    [](const auto& p, const auto& q) { return areAlike(p, q); });
}

template <typename Fitter> Fit resultOf(const Fitter& fitter) {
  try {
    return {fitter(), 0};
  } catch (const cv::Exception& exception) {
    return {std::nullopt, exception.code};
  }
}

cv::Mat noise(const cv::Size& size, int type) {
  cv::Mat picture(size, type);
  cv::RNG random(460);
  random.fill(picture, cv::RNG::UNIFORM, 0, 256);
  cv::GaussianBlur(picture, picture, {}, 1.5); // neighbours are alike, as in photographs
  return picture;
}

/// Boxes in the picture, across its borders and outside of it.
Boxes randomBoxes(const cv::Size& picture, int count) {
  std::mt19937 random(460);
  const auto number = [&](int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
  };
  Boxes boxes(static_cast<std::size_t>(count));
  for (cv::Rect& box : boxes) {
    box.x = number(-picture.width, 2 * picture.width);
    box.y = number(-picture.height, 2 * picture.height);
    box.width = number(-2, picture.width);
    box.height = number(-2, picture.height);
  }
  return boxes;
}

/// A model as OpenCV and as our reader read it.
struct Readings {
  explicit Readings(const std::string& path)
      : openCv(testing::openCvFacemark(path)), ours(readLbfModel(path)) {}

  Fit byOpenCv(const cv::Mat& picture, const Boxes& boxes) const {
    return resultOf([&] {
      Landmarks landmarks;
      openCv->fit(picture, boxes, landmarks);
      return std::make_optional(landmarks);
    });
  }
  Fit byUs(const cv::Mat& picture, const Boxes& boxes, InstructionSet instructions) const {
    return resultOf([&] { return fitLbf(*ours, picture, boxes, instructions); });
  }

  cv::Ptr<cv::face::Facemark> openCv;
  std::shared_ptr<const LbfModel> ours;
};

Readings written(const std::string& text) {
  const testing::TemporaryDirectory directory;
  const std::string path = (directory / "model.yaml").string();
  std::ofstream(path, std::ios::binary) << text;
  return Readings(path);
}

Readings made(const testing::MadeLbfModel& model) {
  return written(textOf(model));
}

/// Every set of instructions that this processor has.
std::vector<InstructionSet> instructionSets() {
  std::vector<InstructionSet> sets{InstructionSet::plain};
  if (isAvailable(InstructionSet::avx2)) {
    sets.push_back(InstructionSet::avx2);
  }
  return sets;
}

/// Box by box, as one that throws would hide the others. Boxes on which OpenCV crashes are left out.
/// Returns how many were fitted.
int expectOpenCvsFits(const Readings& model, const cv::Mat& picture, const Boxes& boxes) {
  int fitted = 0;
  for (const cv::Rect& box : boxes) {
    const Fit plain = model.byUs(picture, {box}, InstructionSet::plain);
    if (!plain.landmarks && plain.error == 0) {
      continue;
    }
    const Fit expected = model.byOpenCv(picture, {box});
    for (const InstructionSet instructions : instructionSets()) {
      EXPECT_EQ(model.byUs(picture, {box}, instructions), expected)
          << box << " in " << picture.size() << ", set " << static_cast<int>(instructions);
    }
    fitted += expected.landmarks ? 1 : 0;
  }
  return fitted;
}

TEST(LbfFitter, fitsBgrLikeOpenCv) {
  const cv::Mat picture = noise({160, 120}, CV_8UC3);
  EXPECT_GT(expectOpenCvsFits(made({}), picture, randomBoxes(picture.size(), 2000)), 300);
}

TEST(LbfFitter, fitsGreyLikeOpenCv) {
  const cv::Mat picture = noise({160, 120}, CV_8UC1);
  Boxes boxes = randomBoxes(picture.size(), 1000);
  // OpenCV would equalise the caller's grey picture before it throws.
  const auto hasNoWidth = [](const cv::Rect& box) { return box.width <= 0; };
  boxes.erase(std::remove_if(boxes.begin(), boxes.end(), hasNoWidth), boxes.end());
  EXPECT_GT(expectOpenCvsFits(made({}), picture, boxes), 150);
}

TEST(LbfFitter, fitsBgraLikeOpenCv) {
  const cv::Mat picture = noise({160, 120}, CV_8UC4);
  EXPECT_GT(expectOpenCvsFits(made({}), picture, randomBoxes(picture.size(), 1000)), 150);
}

TEST(LbfFitter, fitsAPartOfAPictureLikeOpenCv) {
  const cv::Mat picture = noise({160, 120}, CV_8UC3);
  const cv::Mat part = picture(cv::Rect(13, 7, 101, 83));
  EXPECT_GT(expectOpenCvsFits(made({}), part, randomBoxes(part.size(), 1000)), 150);
}

TEST(LbfFitter, fitsWithModelsOfEverySizeLikeOpenCv) {
  const cv::Mat picture = noise({160, 120}, CV_8UC3);
  const Boxes boxes = randomBoxes(picture.size(), 100);
  for (const int stages : {1, 3}) {
    for (const int trees : {1, 5}) {
      for (const int depth : {2, 5}) {
        const Readings model = made({stages, trees, depth});
        EXPECT_GT(expectOpenCvsFits(model, picture, boxes), 15)
            << stages << ' ' << trees << ' ' << depth;
      }
    }
  }
}

TEST(LbfFitter, fitsWithNumbersOfEveryMagnitudeLikeOpenCv) {
  const cv::Mat picture = noise({160, 120}, CV_8UC3);
  const Boxes boxes = randomBoxes(picture.size(), 200);
  // From such that move nothing to such that lead beyond all numbers.
  for (const double largest : {1e-300, 0.05, 30., 1e9, 1e150, testing::MadeLbfModel::kLargest}) {
    for (const testing::LbfNumbers numbers :
         {testing::LbfNumbers::even, testing::LbfNumbers::ofEveryMagnitude}) {
      testing::MadeLbfModel model;
      model.treesPerLandmark = 3;
      model.largestSplit = largest;
      model.largestWeight = largest;
      model.numbers = numbers;
      EXPECT_GT(expectOpenCvsFits(made(model), picture, boxes), 30) << largest;
    }
  }
}

TEST(LbfFitter, fitsWithNumbersOfSinglePrecisionLikeOpenCv) {
  const cv::Mat picture = noise({160, 120}, CV_8UC3);
  const Boxes boxes = randomBoxes(picture.size(), 200);
  for (const double largest : {1e-30, 0.05, 30., 1e9}) {
    testing::MadeLbfModel model;
    model.treesPerLandmark = 5; // which fill no whole number of batches
    model.largestSplit = largest;
    model.largestWeight = largest;
    model.numbers = testing::LbfNumbers::ofSinglePrecision;
    EXPECT_GT(expectOpenCvsFits(made(model), picture, boxes), 30) << largest;
  }
}

TEST(LbfFitter, addsWeightsInOpenCvsOrder) {
  const cv::Mat picture = noise({160, 120}, CV_8UC3);
  const Boxes boxes = randomBoxes(picture.size(), 200);
  for (const int trees : {1, 2, 6}) {
    testing::MadeLbfModel model;
    model.treesPerLandmark = trees;
    model.numbers = testing::LbfNumbers::cancelling;
    EXPECT_GT(expectOpenCvsFits(made(model), picture, boxes), 30) << trees;
  }
}

TEST(LbfFitter, fitsFacesTogetherAsEachAlone) {
  const Readings model = made({});
  const cv::Mat picture = noise({160, 120}, CV_8UC3);
  Boxes boxes;
  for (int i = 0; i < 60; ++i) {
    boxes.emplace_back(10 + i, 5 + i / 2, 20 + i, 20 + i);
  }
  for (const InstructionSet instructions : instructionSets()) {
    EXPECT_EQ(model.byUs(picture, boxes, instructions), model.byOpenCv(picture, boxes));
  }
}

TEST(LbfFitter, fitsNothingForABoxThatLeavesNoPixelToRead) {
  const Readings model = made({});
  const cv::Mat picture = noise({100, 100}, CV_8UC3);
  for (const cv::Rect& box : {cv::Rect(10, 20, 30, 0), cv::Rect(104, 10, 10, 10)}) {
    const Fit fit = model.byUs(picture, {{20, 20, 40, 40}, box}, InstructionSet::plain);
    EXPECT_FALSE(fit.landmarks) << box;
    EXPECT_EQ(fit.error, 0) << box;
  }
}

TEST(LbfFitter, answersForTheFirstBoxThatCannotBeFitted) {
  const Readings model = made({});
  const cv::Mat picture = noise({100, 100}, CV_8UC3);
  const cv::Rect nothingToRead(10, 20, 30, 0);
  const cv::Rect outside(105, 10, 10, 10);
  const cv::Rect noWidth(10, 20, 0, 5);
  const auto errorFor = [&](const Boxes& boxes) {
    return model.byUs(picture, boxes, InstructionSet::plain).error;
  };
  EXPECT_EQ(errorFor({nothingToRead, outside}), 0);
  EXPECT_EQ(errorFor({outside, nothingToRead}), cv::Error::StsAssert);
  EXPECT_EQ(errorFor({outside, noWidth}), cv::Error::StsAssert);
  EXPECT_EQ(errorFor({noWidth, outside}), cv::Error::StsBadArg);
}

TEST(LbfFitter, refusesPicturesOfOtherTypes) {
  const Readings model = made({});
  for (const int type : {CV_16UC3, CV_8UC2, CV_32FC1}) {
    const cv::Mat picture = cv::Mat::zeros(100, 100, type);
    EXPECT_EQ(model.byUs(picture, {{20, 20, 40, 40}}, InstructionSet::plain).error,
              cv::Error::StsUnsupportedFormat);
  }
}

TEST(LbfFitter, leavesThePictureAlone) {
  const Readings model = made({});
  const cv::Mat picture = noise({100, 100}, CV_8UC1);
  const cv::Mat before = picture.clone();
  model.byUs(picture, {{20, 20, 40, 40}, {20, 20, 0, 10}}, InstructionSet::plain);
  EXPECT_EQ(cv::norm(picture, before, cv::NORM_INF), 0);
}

/// The photograph with a longer side of `side` pixels; as it is where that would enlarge it.
cv::Mat atSize(const cv::Mat& photograph, int side) {
  const double scale = static_cast<double>(side) / std::max(photograph.cols, photograph.rows);
  cv::Mat scaled = photograph;
  if (scale < 1) {
    cv::resize(photograph, scaled, {}, scale, scale);
  }
  return scaled;
}

Boxes facesIn(const cv::Mat& picture, const FaceCascade& cascade) {
  cv::Mat grey;
  cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
  return cascade.detect(grey);
}

// The model that every checkout has, and the same with weights that no other encoding than doubles
// holds. OpenCV takes long to read them, so one test goes through all photographs.
TEST(LbfFitter, fitsPhotographsLikeOpenCv) {
  const std::string path = testing::realModels() + testing::kMadeLandmarks;
  const std::vector<Readings> models{Readings(path), written(testing::textWithNoise(path, 1e-4))};
  const cv::FileStorage cascadeFile(testing::realModels() + testing::kMadeCascade,
                                    cv::FileStorage::READ);
  const FaceCascade cascade = FaceCascade::read(cascadeFile.getFirstTopLevelNode());
  for (const char* const name :
       testing::photosAtHand({"astronaut.jpg", "couple.jpg", "crowd.jpg", "painting.jpg",
                              "player.jpg", "quartet.jpg"})) {
    SCOPED_TRACE(name);
    const cv::Mat photograph = cv::imread(testing::realPhoto(name).string());
    for (const int side : {200, 480, 1000, 4000}) {
      const cv::Mat picture = atSize(photograph, side);
      const Boxes faces = facesIn(picture, cascade);
      for (const Readings& model : models) {
        ASSERT_TRUE(model.ours);
        const Fit expected = model.byOpenCv(picture, faces);
        for (const InstructionSet instructions : instructionSets()) {
          EXPECT_TRUE(faces.empty() || model.byUs(picture, faces, instructions) == expected)
              << faces.size() << " faces in " << picture.size();
        }
        EXPECT_GT(expectOpenCvsFits(model, picture, randomBoxes(picture.size(), 15)), 0);
      }
    }
  }
}

} // namespace
} // namespace qorocv
