// Draws fitted landmark sets.
#pragma once

#include "faces/landmarks.h"

#include <opencv2/core.hpp>

#include <vector>

namespace qorocv {

/// Values of `mode` below.
constexpr int kLightBlueLandmarks = 1;
constexpr int kRedLandmarks = 2;

/// Draws one face's landmarks on an 8-bit BGR `picture`. A set of 68 points becomes the outline of
/// the face (jaw, brows, nose, eyes, lips) in anti-aliased lines two pixels thick, each point
/// divided by `scale`; `mode` 1 draws them light blue, any other mode red. A set of any other size
/// becomes a filled light-blue dot of radius 3 on every point as it lies, whatever `scale` and
/// `mode` say.
void drawLandmarks(cv::Mat& picture, const std::vector<cv::Point2f>& points, float scale, int mode);

/// Draws points[first] to points[last], both included, as one of those lines; nothing where `first`
/// is greater than `last`. Each coordinate is divided by `scale` in single precision and truncated.
void drawLandmarkPolyline(cv::Mat& picture, const std::vector<cv::Point2f>& points, int first,
                          int last, bool closed, float scale, int mode);

} // namespace qorocv
