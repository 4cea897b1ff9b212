// The landmarks of a face: 68 points, numbered from 0 (0 to 16 jaw, 17 to 26 brows, 27 to 35 nose,
// 36 to 47 eyes, 48 to 67 lips).
#pragma once

#include "qorocv460/qorocv460.h"

#include <opencv2/core/types.hpp>

#include <cstddef>
#include <vector>

namespace qorocv {

/// The points of one face, in pixels of the picture that they were fitted to.
using LandmarkSet = std::vector<cv::Point2f>;

constexpr std::size_t kLandmarkCount = QOROCV460_LANDMARKS;

/// Tip of the chin.
constexpr std::size_t kChin = QOROCV460_CHIN;

/// Top of the nose bridge, between the eyes.
constexpr std::size_t kNoseBridge = QOROCV460_NOSE_BRIDGE;

/// From the top of the nose bridge down to the tip of the chin, in pixels; negative where the face
/// stands on its head.
inline float noseToChin(const LandmarkSet& landmarks) {
  return landmarks[kChin].y - landmarks[kNoseBridge].y;
}

} // namespace qorocv
