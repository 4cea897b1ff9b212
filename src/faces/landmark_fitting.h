// Landmarks for the faces that a detector found.
#pragma once

#include "faces/landmarks.h"

#include <opencv2/face.hpp>

#include <optional>
#include <vector>

namespace qorocv {

/// A fitter; copies are handles on the same one.
using Landmarker = cv::Ptr<cv::face::Facemark>;

/// Fits the landmarks of every box in an 8-bit BGR `picture`: one set per box, in the order of the
/// boxes. Nothing where the fit fails: for an empty list, and for a box that leaves the fitter no
/// pixel to read (lbf_surroundings.h). What the fitter answers with an exception is thrown.
std::optional<std::vector<LandmarkSet>> fitLandmarks(const Landmarker& landmarker,
                                                     const cv::Mat& picture,
                                                     const std::vector<cv::Rect>& boxes);

} // namespace qorocv
