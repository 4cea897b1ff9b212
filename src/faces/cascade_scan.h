// One scale of cascade detection.
#pragma once

#include "faces/cascade_scales.h"
#include "faces/instruction_set.h"
#include "faces/placed_stumps.h"

#include <opencv2/core/mat.hpp>

#include <vector>

namespace qorocv {

/// Corners of the windows that pass every stage, in pixels of `picture`, row after row from the
/// left. The stages are those of a whole model, for windows in a patch. `picture` has 8 bits, one
/// channel and the size that the scale tells. The result does not depend on the instruction set,
/// which has to be available.
std::vector<cv::Point> scanCascade(const PlacedStages& inPatch, const CascadeScale& scale,
                                   const cv::Mat& picture, InstructionSet set);

} // namespace qorocv
