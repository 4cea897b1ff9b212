#include "row_layer.h"

namespace qorocv::testing {
namespace {

std::array<RowValue, kRowLength> valuesOf(const DetectionRow& row) {
  return {row.image, row.label, row.confidence, row.left, row.top, row.right, row.bottom};
}

} // namespace

RowLayer rowLayer(std::vector<DetectionRow> rows) {
  if (rows.empty()) {
    rows.push_back({0.0F, 0.0F, 0.0F, 0.0F, 0.0F});
  }
  RowLayer layer;
  layer.rows = rows.size();
  for (const DetectionRow& row : rows) {
    for (const RowValue& value : valuesOf(row)) {
      layer.weights.push_back(value.weights);
      layer.biases.push_back(value.constant);
    }
  }
  return layer;
}

std::vector<float> outputMajor(const RowLayer& layer) {
  std::vector<float> flat;
  for (const auto& output : layer.weights) {
    flat.insert(flat.end(), output.begin(), output.end());
  }
  return flat;
}

std::vector<float> planeMajor(const RowLayer& layer) {
  std::vector<float> flat;
  for (std::size_t plane = 0; plane < kPlanes; ++plane) {
    for (const auto& output : layer.weights) {
      flat.push_back(output[plane]);
    }
  }
  return flat;
}

} // namespace qorocv::testing
