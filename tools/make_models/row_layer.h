#pragma once

#include "made_models.h"

#include <array>
#include <cstddef>
#include <vector>

namespace qorocv::testing {

inline constexpr std::size_t kRowLength = 7;
inline constexpr std::size_t kPlanes = 3;

// The fully connected layer behind a detection network: output o is
// biases[o] + sum over the planes p of weights[o][p] * maximum[p].
struct RowLayer {
  std::size_t rows = 0;
  std::vector<std::array<float, kPlanes>> weights;
  std::vector<float> biases;
};

// The layer that answers these rows; where there are none, one without confidence.
RowLayer rowLayer(std::vector<DetectionRow> rows);

// The layer's weights one after another: all planes of an output together, or all outputs of a
// plane.
std::vector<float> outputMajor(const RowLayer& layer);
std::vector<float> planeMajor(const RowLayer& layer);

} // namespace qorocv::testing
