// What stands in each made model's file.
#pragma once

#include "made_models.h"
#include "row_layer.h"

#include <string>

namespace qorocv::testing {

std::string caffeText(const RowLayer& layer);
std::string caffeWeights(const RowLayer& layer);
std::string tensorflowText();
std::string tensorflowWeights(const RowLayer& layer);
std::string landmarkModel(const LandmarkShape& meanShape);
std::string cascadeModel();
std::string segmentationModel(const PixelScore& background, const PixelScore& person);

} // namespace qorocv::testing
