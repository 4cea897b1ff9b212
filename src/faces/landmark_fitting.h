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
/// pixel to read (leavesNothingToRead). What the fitter answers with an exception is thrown.
std::optional<std::vector<LandmarkSet>> fitLandmarks(const Landmarker& landmarker,
                                                     const cv::Mat& picture,
                                                     const std::vector<cv::Rect>& boxes);

/// True for a box whose surroundings, half a box wider on each side and clipped to the picture, are
/// zero pixels wide or high. OpenCV 4.6's LBF fitter reads through such an empty crop and brings
/// the process down. False also where the fitter throws before it gets that far: it does so for a
/// box of no width, and for surroundings that lie outside the picture.
bool leavesNothingToRead(const cv::Rect& box, const cv::Size& picture);

} // namespace qorocv
