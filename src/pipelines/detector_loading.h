// From a recipe's lazy rule to detectors that are ready for one call.
#pragma once

#include "models/detectors.h"
#include "pipelines/recipes.h"

#include <functional>
#include <memory>
#include <vector>

namespace qorocv {

/// Handles on the detectors that one call works with.
struct Detectors {
  /// Boxes of the faces in an 8-bit BGR picture, in its pixels.
  std::function<std::vector<cv::Rect>(const cv::Mat& picture)> findFaces;

  /// Null where the export fits no landmarks.
  Landmarker landmarker;

  /// Null where the export makes no person mask.
  std::shared_ptr<PPHS> segmenter;
};

/// Selects the slot, loads what it lacks by the recipe's rule for that number (its segmenter last),
/// and hands out its detectors. Throws cv::Exception where a model cannot be read.
Detectors loadDetectors(const LoadingBySlot& loading, int slotNumber, int modelKind);

} // namespace qorocv
