#include "faces/lbf_model.h"

#include <tuple>

namespace qorocv {

// Not in a namespace without a name: the standard containers would not find them.
static bool operator==(const LbfShape& a, const LbfShape& b) {
  return a.x == b.x && a.y == b.y;
}

template <typename Number>
static bool operator==(const LbfSplit<Number>& a, const LbfSplit<Number>& b) {
  return std::tie(a.x1, a.y1, a.x2, a.y2) == std::tie(b.x1, b.y1, b.x2, b.y2);
}

template <typename Number>
static bool operator==(const LbfStep<Number>& a, const LbfStep<Number>& b) {
  return a.offsets == b.offsets;
}

template <typename Number>
static bool operator==(const LbfStageOf<Number>& a, const LbfStageOf<Number>& b) {
  return a.splits == b.splits && a.thresholds == b.thresholds && a.steps == b.steps;
}

bool operator==(const LbfModel& a, const LbfModel& b) {
  return a.treesPerLandmark == b.treesPerLandmark && a.depth == b.depth &&
         a.meanShape == b.meanShape && a.stages == b.stages;
}

} // namespace qorocv
