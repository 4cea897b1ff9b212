// A model for fitting landmarks by local binary features (Ren, Cao, Wei and Sun, "Face Alignment at
// 3000 FPS via Regressing Local Binary Features", CVPR 2014), as OpenCV's FacemarkLBF trains it.
//
// It moves the landmarks of a mean face in stages. In each stage every landmark has a few trees,
// which compare pixels around it; a tree ends in one of its leaves, and that leaf moves all 68
// landmarks a step.
#pragma once

#include "faces/lbf_shape.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <variant>
#include <vector>

namespace qorocv {

/// The two places that a tree compares, as seen from its landmark in the mean face, in halves of
/// the face's box.
template <typename Number> struct alignas(4 * sizeof(Number)) LbfSplit {
  Number x1;
  Number y1;
  Number x2;
  Number y2;
};

constexpr std::size_t kLbfCoordinates = 2 * LbfShape::kPoints;

/// How far landmarks move: all x, then all y, in halves of the face's box.
template <typename Number> using LbfOffsets = std::array<Number, kLbfCoordinates>;

/// What a leaf does. It fills whole lines of the cache, as a fit loads thousands of them.
template <typename Number> struct alignas(64) LbfStep { LbfOffsets<Number> offsets; };

/// The trees of one stage, in the order of their landmarks.
template <typename Number> struct LbfStageOf {
  /// LbfModel::leaves of each tree. 1 is the root and 2n and 2n + 1 follow n; 0 is not used. A tree
  /// goes to 2n where the first pixel is brighter than the second by less than the threshold.
  std::vector<LbfSplit<Number>> splits;
  std::vector<std::int16_t> thresholds;

  /// LbfModel::leaves of each tree.
  std::vector<LbfStep<Number>> steps;
};

/// In single precision where no number changes by that, as in the published model: most of a fit is
/// waiting for numbers, and these are half as long. The arithmetic is in double precision always.
using LbfStage = std::variant<LbfStageOf<float>, LbfStageOf<double>>;

/// Never changed once it has been read: slots and threads share one.
struct LbfModel {
  int treesPerLandmark;

  /// Levels of a tree: after depth - 1 comparisons comes a leaf.
  int depth;

  /// Of a tree: 2^(depth - 1).
  int leaves;

  LbfShape meanShape;
  LbfNormalShape normalMeanShape;
  std::vector<LbfStage> stages;

  int trees() const { return static_cast<int>(LbfShape::kPoints) * treesPerLandmark; }
};

/// Whether two models fit alike.
bool operator==(const LbfModel& a, const LbfModel& b);

} // namespace qorocv
