// LBF models of any size with random contents.
#pragma once

#include <opencv2/face.hpp>

#include <string>

namespace qorocv::testing {

enum class LbfNumbers {
  even,              // all alike likely
  ofEveryMagnitude,  // down to zero, with a sign, through the smallest that there are
  ofSinglePrecision, // all alike likely, rounded to floats
  cancelling, // all alike likely, but every other tree's weights are huge and cancel in pairs
};

struct MadeLbfModel {
  int stages = 2;
  int treesPerLandmark = 2;
  int depth = 3;
  int landmarks = 68;

  /// The matrices of the trees and of the weights hold random numbers up to these, of either sign.
  /// They are at most kLargest: twice as much is still a number.
  static constexpr double kLargest = 8e307;
  double largestSplit = 0.5;
  double largestWeight = 0.012;
  LbfNumbers numbers = LbfNumbers::even;

  bool inBase64 = true; // matrices; otherwise as decimal numbers
  unsigned seed = 460;
};

/// The file that OpenCV would write for it.
std::string textOf(const MadeLbfModel& model);

/// The file of a sound model with a little noise added to every weight.
std::string textWithNoise(const std::string& path, double largestNoise);

/// OpenCV's own fitter for a model file.
cv::Ptr<cv::face::Facemark> openCvFacemark(const std::string& path);

} // namespace qorocv::testing
