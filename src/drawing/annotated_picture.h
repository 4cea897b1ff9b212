// The picture that a host can look at: drawn on, shown, written to a file.
#pragma once

#include "drawing/landmark_drawing.h"

#include <opencv2/core.hpp>

#include <vector>

namespace qorocv {

/// Frames every box in green, three pixels thick, then draws every landmark set over them at scale
/// 1 in the given drawLandmarks mode.
void drawFaces(cv::Mat& picture, const std::vector<cv::Rect>& boxes,
               const std::vector<LandmarkSet>& landmarkSets, int mode);

/// Shows `picture` at its own size in the "Display window" and waits for a key. The window stays.
void showAndWait(const cv::Mat& picture);

} // namespace qorocv
