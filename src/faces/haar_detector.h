// Face boxes from a Haar cascade.
#pragma once

#include "faces/face_cascade.h"

#include <opencv2/core/mat.hpp>

#include <vector>

namespace qorocv {

/// Boxes of the faces in an 8-bit BGR `picture`, in its pixels, in the cascade's own order. Throws
/// cv::Exception for an empty cascade.
std::vector<cv::Rect> detectFacesHaar(const FaceCascade& cascade, const cv::Mat& picture);

} // namespace qorocv
