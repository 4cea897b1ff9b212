// Any picture, and cascades of many kinds: the engine finds what OpenCV finds.
#include "faces/cascade_engine.h"
#include "fuzz_input.h"
#include "support/made_cascades.h"

#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <memory>

using namespace qorocv;
using namespace qorocv::fuzzing;
using namespace qorocv::testing;

namespace {

struct Cascades {
  explicit Cascades(const cv::FileNode& root) : engine(makeCascadeEngine(root)) {
    require(engine != nullptr && classifier.read(root), "a cascade that both can read");
  }

  std::shared_ptr<const CascadeEngine> engine;
  cv::CascadeClassifier classifier;
};

Cascades realCascades() {
  const cv::FileStorage file(QOROCV460_MODELS_DIR "model06.xml", cv::FileStorage::READ);
  return Cascades(file.getFirstTopLevelNode());
}

Cascades madeCascades(std::uint32_t seed) {
  const CascadeFile file(cascadeText(CascadeMaker(seed).stages()));
  return Cascades(file.root());
}

cv::Size takeSize(FuzzInput& input) {
  // Some of them extreme, most of them with many windows.
  switch (input.takeFrom(0, 3)) {
  case 0:
    return {input.takeFrom(1, 32), 1 + input.take<std::uint16_t>() % 3000};
  case 1:
    return {1 + input.take<std::uint16_t>() % 3000, input.takeFrom(1, 32)};
  default:
    return {input.takeFrom(1, 200), input.takeFrom(1, 200)};
  }
}

// The bytes that are left, again and again. Read as a picture of their own size and made larger they
// are softer, which more stages let pass.
cv::Mat takePicture(FuzzInput& input) {
  const cv::Size size = takeSize(input);
  const int softness = input.takeFrom(1, 8);
  const std::string bytes = input.rest() + '\0';
  cv::Mat coarse((size.height + softness - 1) / softness, (size.width + softness - 1) / softness,
                 CV_8UC1);
  std::size_t i = 0;
  std::generate(coarse.begin<uchar>(), coarse.end<uchar>(),
                [&bytes, &i] { return static_cast<uchar>(bytes[i++ % bytes.size()]); });
  cv::Mat picture;
  cv::resize(coarse, picture, size, 0, 0, cv::INTER_CUBIC);
  return picture;
}

// A view on a part of a larger picture now and then.
cv::Mat takeView(FuzzInput& input) {
  const int cut = input.takeFrom(0, 7);
  const cv::Mat picture = takePicture(input);
  if (cut * 2 >= std::min(picture.cols, picture.rows)) {
    return picture;
  }
  return picture(cv::Rect(cut, cut / 2, picture.cols - 2 * cut, picture.rows - cut));
}

void requireTheSame(Cascades& cascades, const cv::Mat& picture, InstructionSet set) {
  const auto openCvFinds = [&cascades, &picture](int neighbours) {
    std::vector<cv::Rect> boxes;
    cascades.classifier.detectMultiScale(picture, boxes, 1.1, neighbours, 0, cv::Size(),
                                         cv::Size());
    return boxes;
  };
  std::vector<cv::Rect> candidates = cascades.engine->candidates(picture, set);
  for (cv::Rect& box : candidates) {
    box &= cv::Rect({}, picture.size());
  }
  require(candidates == openCvFinds(0), "OpenCV's candidates");
  require(cascades.engine->detect(picture, set) == openCvFinds(3), "OpenCV's boxes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  cv::setNumThreads(1); // on several, OpenCV's order is that in which they end
  static Cascades real = realCascades();
  FuzzInput input(data, size);
  const int seed = input.take<std::uint8_t>();
  Cascades cascades = seed < 128 ? real : madeCascades(static_cast<std::uint32_t>(seed));
  const cv::Mat picture = takeView(input);
  requireTheSame(cascades, picture, InstructionSet::plain);
  if (isAvailable(InstructionSet::avx2)) {
    requireTheSame(cascades, picture, InstructionSet::avx2);
  }
  return 0;
}
