// Where the centre of a head is.
#pragma once

#include "faces/landmarks.h"

namespace qorocv {

/// On the vertical through the nose bridge, halfway between the chin and the top of the head, which
/// is `headTop` pixels above the nose bridge; its y truncated to a whole pixel. All in pixels of
/// the picture that the landmarks are in.
cv::Point2f headCentre(const LandmarkSet& landmarks, float headTop);

} // namespace qorocv
