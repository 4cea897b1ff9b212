// A cascade of stumps over Haar features, compiled into the form that the engine scans with.
//
// The integers of a feature. A Haar feature is a rectangle of weight -1 and one or two rectangles
// of weight 2 or 3 inside it. With an integral image I, a rectangle's sum is the difference of two
// edges, and an edge is a difference of two points: I(from) - I(to). Edges that two rectangles
// share are taken once. So every feature is
//
//     edge 0 + edge 1 + weight * (edge 2 + edge 3 + ...)
//
// with three, four or six edges in all. Pixels and weights are integers, so this is exact in any
// order, and as all but a few features stay within 16 signed bits, an integral image modulo 2^16
// gives them exactly, too.
#pragma once

#include <opencv2/core/persistence.hpp>
#include <opencv2/core/types.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace qorocv {

/// Side of the window that the known cascades look at, in pixels.
constexpr int kCascadeWindow = 20;

/// The variance of a window is taken without its outermost pixels.
constexpr int kNormWindow = kCascadeWindow - 2;

/// Two points of the integral image, relative to the window's corner. Points lie between pixels:
/// from 0 to the window's side, both included.
struct FeatureEdge {
  cv::Point from;
  cv::Point to;
};

/// How a feature's value comes out of its edges.
enum class FeatureKind {
  threeEdges,
  fourEdges,
  sixEdges,
  wide, // does not fit into 16 signed bits; edge 0 + edge 1 is its outer rectangle, negative
};
constexpr std::size_t kMostEdges = 6;

struct HaarFeature {
  FeatureKind kind = FeatureKind::threeEdges;
  int weight = 0;
  std::array<FeatureEdge, kMostEdges> edges{}; // unused ones are (0, 0) to (0, 0), which adds 0
};

/// A tree of one node: gives `below` where the feature's value, in units of the window's contrast,
/// lies below the threshold.
struct Stump {
  HaarFeature feature;
  float threshold = 0;
  float below = 0;
  float above = 0;
  std::int32_t vote = 0; // below - above as a fixed-point number
};

/// A window passes where the sum over its stumps reaches `threshold`. The quick sum is that of the
/// votes of the stumps that say "below": under `surelyRejected` the window is rejected, from
/// `surelyPassed` on it passes, and between them only the exact sum can tell.
struct Stage {
  int first = 0; // of its stumps, which are sorted by kind
  int count = 0;
  int threeEdges = 0; // stumps of each kind
  int fourEdges = 0;
  int sixEdges = 0;
  int wide = 0;
  double threshold = 0;
  std::int32_t surelyRejected = 0;
  std::int32_t surelyPassed = 0;
};

struct CascadeModel {
  std::vector<Stage> stages;
  std::vector<Stump> stumps; // stage after stage, in each sorted by kind
};

/// Compiles the cascade of a file that opencv_traincascade writes. None for every cascade of
/// another kind than untilted stumps over 20 x 20 pixels with the features told of above, and where
/// nothing can be read.
std::optional<CascadeModel> compileCascade(const cv::FileNode& cascade);

} // namespace qorocv
