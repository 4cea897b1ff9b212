// Stumps with the points of their features turned into places in memory.
#pragma once

#include "faces/cascade_model.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qorocv {

/// What the scan needs of a stump. Places are counted from the window's corner.
struct PlacedStump {
  std::array<std::int32_t, kMostEdges> from;
  std::array<std::int32_t, kMostEdges> to;
  float threshold;
  std::int32_t vote;
  std::int32_t weight;
  std::int32_t padding; // a power of two in all: as long as a cache line
};

/// A model's stumps, or those of its first stages, for windows that lie in one kind of place.
struct PlacedStages {
  const CascadeModel& model;
  const std::vector<PlacedStump>& stumps;
};

/// The stumps of the model's first `stages`, each point (x, y) at placeOf(x, y).
template <typename PlaceOf>
std::vector<PlacedStump> placeStumps(const CascadeModel& model, std::size_t stages,
                                     const PlaceOf& placeOf) {
  const Stage& last = model.stages[stages - 1];
  std::vector<PlacedStump> placed(static_cast<std::size_t>(last.first + last.count));
  for (std::size_t i = 0; i < placed.size(); ++i) {
    const Stump& stump = model.stumps[i];
    for (std::size_t edge = 0; edge < kMostEdges; ++edge) {
      const FeatureEdge& points = stump.feature.edges[edge];
      placed[i].from[edge] = static_cast<std::int32_t>(placeOf(points.from.x, points.from.y));
      placed[i].to[edge] = static_cast<std::int32_t>(placeOf(points.to.x, points.to.y));
    }
    placed[i].threshold = stump.threshold;
    placed[i].vote = stump.vote;
    placed[i].weight = stump.feature.weight;
  }
  return placed;
}

} // namespace qorocv
