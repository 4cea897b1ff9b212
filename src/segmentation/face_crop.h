// The surroundings of a face that are looked at closer.
#pragma once

#include <opencv2/core.hpp>

namespace qorocv {

/// Part of the working picture, in its pixels; empty where there is no closer look.
using FaceCrop = cv::Rect;

/// Three times the face in each direction, centred on it and clipped to the picture. Empty for a
/// face that is empty or not wholly inside.
FaceCrop faceCrop(const cv::Rect& face, const cv::Size& picture);

} // namespace qorocv
