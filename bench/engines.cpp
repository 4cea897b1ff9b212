// The engines alone, on each instruction set, beside what they stand in for and beside what a user
// would pick instead.
#include "bench.h"
#include "faces/cascade_engine.h"
#include "faces/lbf_fitter.h"
#include "faces/lbf_reader.h"
#include "hog_detector.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdio>
#include <functional>

namespace qorocv::bench {

namespace {

constexpr const char* kPhotos[] = {"painting.jpg", "quartet.jpg", "crowd.jpg"};

constexpr double kLeastCascadeAvx2 = 10;
constexpr double kLeastCascadePlain = 3;
constexpr double kMostOfHog = 0.85;
constexpr double kLeastFitAvx2 = 8;
constexpr double kLeastCrowdFitAvx2 = 15;
constexpr double kLeastFitPlain = 4;
constexpr double kLeastLoad = 10;

using Times = std::vector<double>;

/// How many times as fast.
double speedup(const Times& ours, const Times& theirs) {
  return medianRatio(theirs, ours);
}

double milliseconds(const Times& times) {
  return median(times) * 1e3;
}

/// Measured only where the processor has it; otherwise nothing to hold a bound against.
const bool hasAvx2 = isAvailable(InstructionSet::avx2);

InstructionSet avx2OrPlain() {
  return hasAvx2 ? InstructionSet::avx2 : InstructionSet::plain;
}

cv::Mat scaledTo(const cv::Mat& photograph, int maxSide) {
  const int longer = std::max(photograph.cols, photograph.rows);
  const double factor = maxSide == 0 ? 1 : static_cast<double>(maxSide) / longer;
  cv::Mat scaled;
  cv::resize(
      photograph, scaled,
      {static_cast<int>(photograph.cols * factor), static_cast<int>(photograph.rows * factor)});
  return scaled;
}

std::vector<cv::Rect> detectByOpenCv(cv::CascadeClassifier& cascade, const cv::Mat& grey) {
  std::vector<cv::Rect> boxes;
  cascade.detectMultiScale(grey, boxes, 1.1, 3);
  return boxes;
}

bool compareCascades(int rounds) {
  std::printf(
      "## Cascade detection\n\nThe detector alone, on the grey picture. Beside it OpenCV's "
      "cascade and dlib's HOG detector on the same picture, and the whole call with landmarks, "
      "decoding included. Medians of %d at least, in turns.\n\n"
      "| photograph | maxSide | OpenCV ms | AVX2 ms | times | plain ms | times | dlib ms | of "
      "dlib | `findQORFacesInTread01` ms |\n"
      "|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|\n",
      rounds);
  bool good = true;
  HogDetector hog;
  for (const char* const photo : kPhotos) {
    const Material material(photo);
    const std::string cascade = material.modelPath("model06.xml");
    cv::CascadeClassifier openCv(cascade);
    const cv::FileStorage file(cascade, cv::FileStorage::READ);
    const auto engine = makeCascadeEngine(file.getFirstTopLevelNode());
    const MeasuredExport whole = measuredExport(made::kInTread01, material.photo());
    const cv::Mat photograph = cv::imread(material.photo());
    HostMemory memory;
    for (const int maxSide : {480, 1000, 0}) {
      cv::Mat grey;
      cv::cvtColor(scaledTo(photograph, maxSide), grey, cv::COLOR_BGR2GRAY);
      const std::vector<Times> times = timesInTurns(
          {[&] { detectByOpenCv(openCv, grey); }, [&] { engine->detect(grey, avx2OrPlain()); },
           [&] { engine->detect(grey, InstructionSet::plain); }, [&] { hog.detect(grey); },
           [&] { whole.call(memory, maxSide); }},
          rounds);
      const double avx2 = speedup(times[1], times[0]);
      const double plain = speedup(times[2], times[0]);
      const double ofHog = medianRatio(times[1], times[3]);
      good = good && (avx2 >= kLeastCascadeAvx2 || !hasAvx2) && plain >= kLeastCascadePlain &&
             (ofHog <= kMostOfHog || !hasAvx2);
      std::printf("| %s | %d | %.1f | %.1f | %.1f | %.1f | %.1f | %.1f | %.2f | %.1f |\n",
                  material.name().c_str(), maxSide, milliseconds(times[0]), milliseconds(times[1]),
                  avx2, milliseconds(times[2]), plain, milliseconds(times[3]), ofHog,
                  milliseconds(times[4]));
      std::fflush(stdout);
    }
  }
  return good;
}

/// Fits in a row in every turn. The first one finds the processor's caches full of the other side's
/// model, as after the decoding and detection of a photograph, the others find their own.
constexpr int kFitsInARow = 5;

/// A photograph at its own size, and how many of the cascade's boxes are fitted; 0: all.
struct FittedFaces {
  const char* photo;
  std::size_t most;
};

bool compareFits(int rounds) {
  std::printf("\n## Fitting\n\nThe landmarks of the cascade's boxes, decoding and detection left "
              "out. Each side fits them %d times in a row, and then the other.\n\n"
              "| photograph | boxes | OpenCV ms | AVX2 ms | times | plain ms | times |\n"
              "|---|--:|--:|--:|--:|--:|--:|\n",
              kFitsInARow);
  const auto inARow = [](const auto& fit) {
    return [fit] {
      for (int i = 0; i < kFitsInARow; ++i) {
        fit();
      }
    };
  };
  bool good = true;
  for (const FittedFaces& faces : {FittedFaces{"painting.jpg", 1}, FittedFaces{"couple.jpg", 2},
                                   FittedFaces{"crowd.jpg", 0}}) {
    const Material material(faces.photo);
    BareDetectors bare = material.loadBare();
    const auto model = readLbfModel(material.modelPath("model05.yaml"));
    const cv::Mat picture = cv::imread(material.photo());
    cv::Mat grey;
    cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
    std::vector<cv::Rect> boxes = detectByOpenCv(bare.cascade, grey);
    if (faces.most != 0) {
      boxes.resize(std::min(boxes.size(), faces.most));
    }
    const std::vector<Times> times =
        timesInTurns({inARow([&] {
                        std::vector<LandmarkSet> landmarks;
                        bare.landmarker->fit(picture, boxes, landmarks);
                      }),
                      inARow([&] { fitLbf(*model, picture, boxes, avx2OrPlain()); }),
                      inARow([&] { fitLbf(*model, picture, boxes, InstructionSet::plain); })},
                     rounds);
    const double avx2 = speedup(times[1], times[0]);
    const double plain = speedup(times[2], times[0]);
    const double leastAvx2 = boxes.size() > 2 ? kLeastCrowdFitAvx2 : kLeastFitAvx2;
    good = good && (avx2 >= leastAvx2 || !hasAvx2) && plain >= kLeastFitPlain;
    std::printf("| %s | %zu | %.2f | %.3f | %.1f | %.3f | %.1f |\n", material.name().c_str(),
                boxes.size(), milliseconds(times[0]) / kFitsInARow,
                milliseconds(times[1]) / kFitsInARow, avx2, milliseconds(times[2]) / kFitsInARow,
                plain);
    std::fflush(stdout);
  }
  return good;
}

bool compareLoads(int rounds) {
  const Material material(kPhotos[0]);
  const std::string path = material.modelPath("model05.yaml");
  const std::vector<Times> times = timesInTurns(
      {[&] { cv::face::FacemarkLBF::create()->loadModel(path); }, [&] { readLbfModel(path); }},
      rounds);
  const double factor = speedup(times[1], times[0]);
  std::printf("\n## Reading the landmark model\n\n| OpenCV ms | ours ms | times |\n|--:|--:|--:|\n"
              "| %.1f | %.1f | %.1f |\n",
              milliseconds(times[0]), milliseconds(times[1]), factor);
  return factor >= kLeastLoad;
}

} // namespace

bool compareEngines(int rounds) {
  const bool cascades = compareCascades(rounds);
  const bool fits = compareFits(rounds);
  const bool loads = compareLoads(rounds);
  const bool good = cascades && fits && loads;
  std::printf("\n%s\n\n",
              good ? "The cascade is at least 10 times as fast, plain 3 times, and takes "
                     "at most 0.85 of the time of dlib's detector; fits are at least 8 times as "
                     "fast, 15 for crowds, plain 4 times; loading 10 times."
                   : "**A bound is broken: see `bench/engines.cpp`.**");
  return good;
}

} // namespace qorocv::bench
