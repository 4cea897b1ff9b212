#include "faces/cascade_model.h"

#include "arithmetic/regions.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

namespace qorocv {

namespace {

constexpr int kBrightest = 255;

// The unit of votes is 2^-20: fine enough for the exact sum to be hardly ever needed, and coarse
// enough for the sums of a stage to stay within 32 bits, which compileStage checks.
constexpr int kVoteBits = 20;

// What OpenCV takes from every stage's threshold, in single precision.
constexpr float kThresholdMargin = 1e-5F;

struct WeightedRect {
  cv::Rect rect;
  int weight = 0;
};

struct WeightedEdge {
  FeatureEdge edge;
  int weight = 0;
};

enum class EdgeDirection { horizontal, vertical };

// ---- From rectangles to edges

std::optional<WeightedRect> readRect(const cv::FileNode& node) {
  if (!node.isSeq() || node.size() != 5) {
    return std::nullopt;
  }
  const float weight = static_cast<float>(node[4]);
  const cv::Rect rect(static_cast<int>(node[0]), static_cast<int>(node[1]),
                      static_cast<int>(node[2]), static_cast<int>(node[3]));
  const bool isKnown = weight == -1.0F || weight == 2.0F || weight == 3.0F;
  if (!isKnown || rect.empty() || !liesIn({kCascadeWindow, kCascadeWindow}, rect)) {
    return std::nullopt;
  }
  return WeightedRect{rect, static_cast<int>(weight)};
}

// The outer rectangle of weight -1, then one or two of one positive weight, apart from each other
// and inside the outer one. Empty where it is otherwise.
std::vector<WeightedRect> readRects(const cv::FileNode& feature) {
  std::vector<WeightedRect> rects;
  const cv::FileNode nodes = feature["rects"];
  if (static_cast<int>(feature["tilted"]) != 0 || nodes.size() < 2 || nodes.size() > 3) {
    return {};
  }
  for (const cv::FileNode& node : nodes) {
    const std::optional<WeightedRect> rect = readRect(node);
    if (!rect) {
      return {};
    }
    rects.push_back(*rect);
  }
  const cv::Rect outer = rects.front().rect;
  bool isKnown = rects.front().weight == -1;
  for (std::size_t i = 1; i < rects.size(); ++i) {
    isKnown = isKnown && rects[i].weight == rects[1].weight && rects[i].weight > 0 &&
              (rects[i].rect & outer) == rects[i].rect;
  }
  if (rects.size() == 3) {
    isKnown = isKnown && (rects[1].rect & rects[2].rect).empty();
  }
  return isKnown ? rects : std::vector<WeightedRect>();
}

// The two edges whose sum is a rectangle's sum.
std::array<FeatureEdge, 2> edgesOf(const cv::Rect& rect, EdgeDirection direction) {
  const cv::Point topLeft = rect.tl();
  const cv::Point bottomRight = rect.br();
  const cv::Point topRight(bottomRight.x, topLeft.y);
  const cv::Point bottomLeft(topLeft.x, bottomRight.y);
  if (direction == EdgeDirection::horizontal) {
    return {{{topLeft, topRight}, {bottomRight, bottomLeft}}};
  }
  return {{{topLeft, bottomLeft}, {bottomRight, topRight}}};
}

// Adds to an edge that is there already, also to one that leads the other way.
void addEdge(std::vector<WeightedEdge>& edges, const FeatureEdge& edge, int weight) {
  for (WeightedEdge& known : edges) {
    if (known.edge.from == edge.from && known.edge.to == edge.to) {
      known.weight += weight;
      return;
    }
    if (known.edge.from == edge.to && known.edge.to == edge.from) {
      known.weight -= weight;
      return;
    }
  }
  edges.push_back({edge, weight});
}

std::vector<WeightedEdge> mergedEdges(const std::vector<WeightedRect>& rects,
                                      EdgeDirection direction) {
  std::vector<WeightedEdge> edges;
  for (const WeightedRect& rect : rects) {
    for (const FeatureEdge& edge : edgesOf(rect.rect, direction)) {
      addEdge(edges, edge, rect.weight);
    }
  }
  edges.erase(std::remove_if(edges.begin(), edges.end(),
                             [](const WeightedEdge& edge) { return edge.weight == 0; }),
              edges.end());
  return edges;
}

// An edge of negative weight is the same edge led the other way.
void turnToPositiveWeights(std::vector<WeightedEdge>& edges) {
  for (WeightedEdge& edge : edges) {
    if (edge.weight < 0) {
      std::swap(edge.edge.from, edge.edge.to);
      edge.weight = -edge.weight;
    }
  }
}

std::optional<FeatureKind> kindOfEdges(std::size_t count) {
  switch (count) {
  case 3:
    return FeatureKind::threeEdges;
  case 4:
    return FeatureKind::fourEdges;
  case 6:
    return FeatureKind::sixEdges;
  default:
    return std::nullopt;
  }
}

std::optional<HaarFeature> narrowFeature(const std::vector<WeightedRect>& rects) {
  std::vector<WeightedEdge> edges = mergedEdges(rects, EdgeDirection::horizontal);
  std::vector<WeightedEdge> uprightEdges = mergedEdges(rects, EdgeDirection::vertical);
  if (uprightEdges.size() < edges.size()) {
    edges = std::move(uprightEdges);
  }
  turnToPositiveWeights(edges);
  std::stable_sort(edges.begin(), edges.end(), [](const WeightedEdge& a, const WeightedEdge& b) {
    return a.weight < b.weight;
  });
  const std::optional<FeatureKind> kind = kindOfEdges(edges.size());
  if (!kind) {
    return std::nullopt;
  }
  HaarFeature feature;
  feature.kind = *kind;
  feature.weight = edges.back().weight;
  for (std::size_t i = 0; i < edges.size(); ++i) {
    if (edges[i].weight != (i < 2 ? 1 : feature.weight)) {
      return std::nullopt;
    }
    feature.edges[i] = edges[i].edge;
  }
  return feature;
}

// Nothing merged: the kernel wants the sum of the outer rectangle by itself.
HaarFeature wideFeature(const std::vector<WeightedRect>& rects) {
  HaarFeature feature;
  feature.kind = FeatureKind::wide;
  feature.weight = rects[1].weight;
  std::size_t i = 0;
  for (const WeightedRect& rect : rects) {
    for (FeatureEdge edge : edgesOf(rect.rect, EdgeDirection::horizontal)) {
      if (rect.weight < 0) {
        std::swap(edge.from, edge.to);
      }
      feature.edges[i++] = edge;
    }
  }
  return feature;
}

std::optional<HaarFeature> readFeature(const cv::FileNode& node) {
  const std::vector<WeightedRect> rects = readRects(node);
  if (rects.empty()) {
    return std::nullopt;
  }
  int brightArea = 0; // where the weights add up to weight - 1; elsewhere they are -1
  for (std::size_t i = 1; i < rects.size(); ++i) {
    brightArea += rects[i].rect.area();
  }
  const int darkArea = rects[0].rect.area() - brightArea;
  const int highest = (rects[1].weight - 1) * brightArea * kBrightest;
  const int lowest = -darkArea * kBrightest;
  if (lowest >= std::numeric_limits<std::int16_t>::min() &&
      highest <= std::numeric_limits<std::int16_t>::max()) {
    return narrowFeature(rects);
  }
  constexpr int kMost = std::numeric_limits<std::uint16_t>::max();
  if (std::max(brightArea, darkArea) * kBrightest > kMost) {
    return std::nullopt;
  }
  return wideFeature(rects);
}

std::vector<HaarFeature> readFeatures(const cv::FileNode& nodes) {
  std::vector<HaarFeature> features;
  for (const cv::FileNode& node : nodes) {
    const std::optional<HaarFeature> feature = readFeature(node);
    if (!feature) {
      return {};
    }
    features.push_back(*feature);
  }
  return features;
}

// ---- From nodes to stages

std::optional<Stump> readStump(const cv::FileNode& tree, const std::vector<HaarFeature>& features) {
  const cv::FileNode node = tree["internalNodes"];
  const cv::FileNode leaves = tree["leafValues"];
  if (!node.isSeq() || node.size() != 4 || !leaves.isSeq() || leaves.size() != 2) {
    return std::nullopt;
  }
  const int feature = static_cast<int>(node[2]);
  if (feature < 0 || static_cast<std::size_t>(feature) >= features.size()) {
    return std::nullopt;
  }
  Stump stump;
  stump.feature = features[static_cast<std::size_t>(feature)];
  stump.threshold = static_cast<float>(node[3]);
  stump.below = static_cast<float>(leaves[0]);
  stump.above = static_cast<float>(leaves[1]);
  return stump;
}

std::vector<Stump> readStumps(const cv::FileNode& trees, const std::vector<HaarFeature>& features) {
  std::vector<Stump> stumps;
  for (const cv::FileNode& tree : trees) {
    const std::optional<Stump> stump = readStump(tree, features);
    if (!stump) {
      return {};
    }
    stumps.push_back(*stump);
  }
  return stumps;
}

// Sums of such leaves are exact in double precision: multiples of 2^-40 that stay below 2^12. So
// stumps may be added in any order, which is what allows sorting them.
bool addUpExactly(const std::vector<Stump>& stumps) {
  double most = 0;
  for (const Stump& stump : stumps) {
    for (const float leaf : {stump.below, stump.above}) {
      const double scaled = std::ldexp(static_cast<double>(leaf), 40);
      if (!(scaled == std::floor(scaled))) { // nor is it for a NaN
        return false;
      }
    }
    most += std::max(std::abs(stump.below), std::abs(stump.above));
  }
  return most < 4096;
}

double inVotes(double value) {
  return std::ldexp(value, kVoteBits);
}

// Every leaf is rounded by up to half a vote, so that the quick sum of n stumps is off by up to
// n / 2; one more vote covers the rounding of the bounds themselves.
bool setVotes(Stage& stage, std::vector<Stump>& stumps) {
  double allAbove = 0;
  double mostVotes = 0;
  for (Stump& stump : stumps) {
    const double above = std::nearbyint(inVotes(stump.above));
    const double vote = std::nearbyint(inVotes(stump.below)) - above;
    allAbove += above;
    mostVotes += std::abs(vote);
    if (mostVotes > std::numeric_limits<std::int32_t>::max()) {
      return false;
    }
    stump.vote = static_cast<std::int32_t>(vote);
  }
  const double threshold = inVotes(stage.threshold) - allAbove;
  const double doubt = static_cast<double>(stage.count) / 2 + 1;
  constexpr double kMost = std::numeric_limits<std::int32_t>::max();
  if (!(std::abs(threshold) + doubt < kMost)) {
    return false;
  }
  stage.surelyRejected = static_cast<std::int32_t>(std::floor(threshold - doubt));
  stage.surelyPassed = static_cast<std::int32_t>(std::ceil(threshold + doubt));
  return true;
}

int countOf(FeatureKind kind, const std::vector<Stump>& stumps) {
  return static_cast<int>(std::count_if(stumps.begin(), stumps.end(), [kind](const Stump& stump) {
    return stump.feature.kind == kind;
  }));
}

bool addStage(CascadeModel& model, const cv::FileNode& node,
              const std::vector<HaarFeature>& features) {
  std::vector<Stump> stumps = readStumps(node["weakClassifiers"], features);
  const cv::FileNode threshold = node["stageThreshold"];
  if (stumps.empty() || !(threshold.isReal() || threshold.isInt()) || !addUpExactly(stumps)) {
    return false;
  }
  std::stable_sort(stumps.begin(), stumps.end(),
                   [](const Stump& a, const Stump& b) { return a.feature.kind < b.feature.kind; });
  Stage stage;
  stage.first = static_cast<int>(model.stumps.size());
  stage.count = static_cast<int>(stumps.size());
  stage.threeEdges = countOf(FeatureKind::threeEdges, stumps);
  stage.fourEdges = countOf(FeatureKind::fourEdges, stumps);
  stage.sixEdges = countOf(FeatureKind::sixEdges, stumps);
  stage.wide = countOf(FeatureKind::wide, stumps);
  stage.threshold = static_cast<double>(static_cast<float>(threshold) - kThresholdMargin);
  if (!setVotes(stage, stumps)) {
    return false;
  }
  model.stages.push_back(stage);
  model.stumps.insert(model.stumps.end(), stumps.begin(), stumps.end());
  return true;
}

bool isText(const cv::FileNode& node, const char* text) {
  return node.isString() && static_cast<std::string>(node) == text;
}

bool isNumber(const cv::FileNode& node, int number) {
  return node.isInt() && static_cast<int>(node) == number;
}

} // namespace

std::optional<CascadeModel> compileCascade(const cv::FileNode& cascade) {
  if (!isText(cascade["stageType"], "BOOST") || !isText(cascade["featureType"], "HAAR") ||
      !isNumber(cascade["width"], kCascadeWindow) || !isNumber(cascade["height"], kCascadeWindow) ||
      !isNumber(cascade["featureParams"]["maxCatCount"], 0)) {
    return std::nullopt;
  }
  const std::vector<HaarFeature> features = readFeatures(cascade["features"]);
  CascadeModel model;
  for (const cv::FileNode& stage : cascade["stages"]) {
    if (!addStage(model, stage, features)) {
      return std::nullopt;
    }
  }
  if (model.stages.empty()) {
    return std::nullopt;
  }
  return model;
}

} // namespace qorocv
