#include "model_contents.h"

namespace qorocv::testing {
namespace {

// A weak classifier: how much brighter one rectangle is than another of the same size. Both are
// in pixels of the window, the threshold is in the detector's own unit: difference of the sums,
// divided by (window area * standard deviation of the window).
struct Contrast {
  cv::Rect dark;
  cv::Rect bright;
  double threshold;
};

constexpr int kWindow = 24;

// A bright oval on a dark ground, with brows and eyes darker than the cheeks below them. Each
// contrast has a stage of its own, so that all of them have to be there.
std::vector<Contrast> faceContrasts() {
  // Well below what a mark in place reaches, so that several windows around each mark pass:
  // grouping drops what only few windows have seen.
  constexpr double kSides = 0.035;
  constexpr double kTopAndBottom = 0.0225;
  constexpr double kEyes = 0.005;
  return {
      {{0, 7, 3, 10}, {5, 7, 3, 10}, kSides},
      {{21, 7, 3, 10}, {16, 7, 3, 10}, kSides},
      {{7, 0, 10, 2}, {7, 4, 10, 2}, kTopAndBottom},
      {{7, 22, 10, 2}, {7, 18, 10, 2}, kTopAndBottom},
      {{6, 6, 5, 4}, {6, 12, 5, 4}, kEyes},
      {{13, 6, 5, 4}, {13, 12, 5, 4}, kEyes},
  };
}

void writeRectangle(cv::FileStorage& storage, const cv::Rect& area, double weight) {
  storage << "[:" << area.x << area.y << area.width << area.height << weight << "]";
}

void writeFeature(cv::FileStorage& storage, const Contrast& contrast) {
  storage << "{"
          << "rects"
          << "[";
  writeRectangle(storage, contrast.dark, -1.0);
  writeRectangle(storage, contrast.bright, 1.0);
  storage << "]"
          << "tilted" << 0 << "}";
}

void writeStage(cv::FileStorage& storage, int feature, double threshold) {
  storage << "{"
          << "maxWeakCount" << 1 << "stageThreshold" << 0.0;
  storage << "weakClassifiers"
          << "["
          << "{";
  storage << "internalNodes"
          << "[:" << 0 << -1 << feature << threshold << "]";
  storage << "leafValues"
          << "[:" << -1.0 << 1.0 << "]";
  storage << "}"
          << "]"
          << "}";
}

} // namespace

std::string cascadeModel() {
  const std::vector<Contrast> contrasts = faceContrasts();
  cv::FileStorage storage(kMadeCascade, cv::FileStorage::WRITE | cv::FileStorage::MEMORY |
                                            cv::FileStorage::FORMAT_XML);
  storage << "cascade"
          << "{:opencv-cascade-classifier";
  storage << "stageType"
          << "BOOST"
          << "featureType"
          << "HAAR";
  storage << "height" << kWindow << "width" << kWindow;
  storage << "stageParams"
          << "{"
          << "maxWeakCount" << 1 << "}";
  storage << "featureParams"
          << "{"
          << "maxCatCount" << 0 << "}";
  storage << "stageNum" << static_cast<int>(contrasts.size());
  storage << "stages"
          << "[";
  int feature = 0;
  for (const Contrast& contrast : contrasts) {
    writeStage(storage, feature++, contrast.threshold);
  }
  storage << "]"
          << "features"
          << "[";
  for (const Contrast& contrast : contrasts) {
    writeFeature(storage, contrast);
  }
  storage << "]"
          << "}";
  return storage.releaseAndGetString();
}

} // namespace qorocv::testing
