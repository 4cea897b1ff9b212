// LBF models of any size with random contents.
#pragma once

#include <opencv2/face.hpp>

#include <string>

namespace qorocv::testing {

struct MadeLbfModel {
  int stages = 2;
  int treesPerLandmark = 2;
  int depth = 3;
  int landmarks = 68;

  /// Steps are random whole numbers up to the largest, times the unit.
  double stepUnit = 1. / 16384;
  int largestStep = 199;

  bool inBase64 = true; // matrices; otherwise as decimal numbers
  unsigned seed = 460;
};

/// The file that OpenCV would write for it.
std::string textOf(const MadeLbfModel& model);

/// OpenCV's own fitter for a model file.
cv::Ptr<cv::face::Facemark> openCvFacemark(const std::string& path);

} // namespace qorocv::testing
