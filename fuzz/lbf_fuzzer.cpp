// The landmark engine against OpenCV's: any boxes, and any bytes for a model.
//
// An input says which boxes, which picture and which model: a made one, the same with some of its
// bytes changed, a file of the input's own, or one made with numbers of the size that the input says. OpenCV's reader does not survive every file, so it
// sees only those that ours accepts.
#include "faces/lbf_fitter.h"
#include "faces/lbf_reader.h"
#include "fuzz_input.h"
#include "make_models/made_lbf_model.h"
#include "memory_file.h"

#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <optional>

using namespace qorocv;
using namespace qorocv::fuzzing;

namespace {

using Landmarks = std::vector<std::vector<cv::Point2f>>;

std::string madeModel() {
  return textOf(testing::MadeLbfModel{1, 1, 2});
}

std::vector<cv::Rect> takeBoxes(FuzzInput& input) {
  std::vector<cv::Rect> boxes(static_cast<std::size_t>(input.takeFrom(1, 4)));
  for (cv::Rect& box : boxes) {
    for (int* const number : {&box.x, &box.y, &box.width, &box.height}) {
      *number = input.take<std::int16_t>();
    }
  }
  return boxes;
}

cv::Mat takePicture(FuzzInput& input) {
  const int channels = input.takeFrom(0, 2);
  const int width = input.takeFrom(1, 200);
  const int height = input.takeFrom(1, 200);
  cv::Mat picture(height, width, channels == 0 ? CV_8UC1 : channels == 1 ? CV_8UC3 : CV_8UC4);
  cv::RNG random(input.take<std::uint8_t>());
  random.fill(picture, cv::RNG::UNIFORM, 0, 256);
  return picture;
}

/// What a fit came to: landmarks, none, or the code of an exception.
struct Fit {
  std::optional<Landmarks> landmarks;
  int error = 0;
};

Fit fitByUs(const LbfModel& model, const cv::Mat& picture, const cv::Rect& box,
            InstructionSet instructions) {
  try {
    return {fitLbf(model, picture, {box}, instructions)};
  } catch (const cv::Exception& exception) {
    return {std::nullopt, exception.code};
  }
}

Fit fitByOpenCv(cv::face::Facemark& facemark, const cv::Mat& picture, const cv::Rect& box) {
  try {
    Landmarks landmarks;
    facemark.fit(picture.clone(), std::vector<cv::Rect>{box}, landmarks); // it may equalise it
    return {landmarks};
  } catch (const cv::Exception& exception) {
    return {std::nullopt, exception.code};
  }
}

// Models may lead to what is no number; the sign of that means nothing.
bool areAlike(float a, float b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

bool areAlike(const Fit& a, const Fit& b) {
  if (a.error != b.error || a.landmarks.has_value() != b.landmarks.has_value()) {
    return false;
  }
  if (!a.landmarks) {
    return true;
  }
  const std::vector<cv::Point2f>& pointsA = a.landmarks->at(0);
  const std::vector<cv::Point2f>& pointsB = b.landmarks->at(0);
  return std::equal(pointsA.begin(), pointsA.end(), pointsB.begin(), pointsB.end(),
                    [](const cv::Point2f& p, const cv::Point2f& q) {
                      return areAlike(p.x, q.x) && areAlike(p.y, q.y);
                    });
}

struct Readings {
  std::shared_ptr<const LbfModel> ours;
  cv::Ptr<cv::face::Facemark> openCv;
};

/// Nothing where our reader refuses the file or leaves it to OpenCV's.
std::optional<Readings> readModel(const std::string& content) {
  static const MemoryFile file;
  file.keep(content.data(), content.size());
  try {
    if (auto ours = readLbfModel(file.path())) {
      return Readings{ours, testing::openCvFacemark(file.path())};
    }
  } catch (const cv::Exception& exception) {
    require(exception.code == cv::Error::StsParseError, "damage is an error of the file");
    require(exception.err.rfind(file.path() + ", line ", 0) == 0, "damage has a place");
  }
  return std::nullopt;
}

/// A sound model with any finite numbers.
testing::MadeLbfModel takeMadeModel(FuzzInput& input) {
  const auto takeLargest = [&] {
    const double any = std::fabs(input.take<double>());
    return any <= testing::MadeLbfModel::kLargest ? any : testing::MadeLbfModel::kLargest;
  };
  testing::MadeLbfModel model;
  model.stages = input.takeFrom(1, 2);
  model.treesPerLandmark = input.takeFrom(1, 2);
  model.depth = input.takeFrom(2, 4);
  model.seed = input.take<std::uint16_t>();
  constexpr testing::LbfNumbers kNumbers[] = {testing::LbfNumbers::even,
                                              testing::LbfNumbers::ofEveryMagnitude,
                                              testing::LbfNumbers::cancelling};
  model.numbers = kNumbers[input.takeFrom(0, 2)];
  model.largestSplit = takeLargest();
  model.largestWeight = takeLargest();
  return model;
}

std::optional<Readings> takeModel(FuzzInput& input) {
  static const std::string text = madeModel();
  static const Readings made = readModel(text).value();
  switch (input.takeFrom(0, 3)) {
  case 0:
    return made;
  case 1:
    return readModel(edited(text, input));
  case 2:
    return readModel(input.rest());
  default:
    auto model = readModel(textOf(takeMadeModel(input)));
    require(model.has_value(), "a sound model is read");
    return model;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  FuzzInput input(data, size);
  const std::vector<cv::Rect> boxes = takeBoxes(input);
  const cv::Mat picture = takePicture(input);
  const std::optional<Readings> model = takeModel(input);
  if (!model) {
    return 0;
  }
  for (const cv::Rect& box : boxes) {
    const Fit plain = fitByUs(*model->ours, picture, box, InstructionSet::plain);
    require(areAlike(fitByUs(*model->ours, picture, box, bestInstructionSet()), plain),
            "all sets of instructions give the same");
    // OpenCV crashes where there is nothing to read.
    const bool hasNothingToRead = !plain.landmarks && plain.error == 0;
    require(hasNothingToRead || areAlike(fitByOpenCv(*model->openCv, picture, box), plain),
            "the same as OpenCV");
  }
  return 0;
}
