// How far a head reaches above the nose bridge, judged by the colours above the face.
#pragma once

#include "faces/landmarks.h"

#include <opencv2/core.hpp>

namespace qorocv {

/// Length in pixels of `image` (8-bit BGR) from the top of the nose bridge up to where the plain
/// background above the head ends.
///
/// The columns of the face box, from the image's top edge down to the nose bridge, are squeezed to
/// a strip of about 12 x 100 pixels. The background's hue is that of the pixel a tenth of the way
/// down. The lowest row of the strip whose every hue lies within 10 of it (of 180, without wrapping
/// round) ends the background; the share of the strip below that row, times the height of the band,
/// is the length.
///
/// Returns the distance from nose bridge down to chin instead where it cannot tell: no row is
/// background, the length comes out above three times that distance, or the band does not lie in
/// the image. Never throws for those. `landmarks` holds all points up to the nose bridge. A pure
/// function.
float faceRegionMeasure(const cv::Mat& image, cv::Rect face, const LandmarkSet& landmarks);

} // namespace qorocv
