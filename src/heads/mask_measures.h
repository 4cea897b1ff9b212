// How far a person reaches above the nose bridge, read from a person mask.
#pragma once

#include "faces/landmarks.h"
#include "segmentation/face_crop.h"
#include "segmentation/pixel_block.h"

namespace qorocv {

/// A person mask at the size of the picture that it was made from, grey, with intermediate values
/// along the outline. All faces of a picture share one; it is made when the first of them needs it.
class PictureMask {
public:
  PictureMask() = default;
  PictureMask(PersonMask personMask, cv::Size pictureSize);

  /// True where there is no person mask to make it from.
  bool empty() const { return personMask_.empty(); }
  const cv::Size& pictureSize() const { return pictureSize_; }

  /// Throws cv::Exception where it cannot be made.
  const cv::Mat& pixels();

private:
  PersonMask personMask_;
  cv::Size pictureSize_;
  cv::Mat pixels_;
};

/// Length in pixels of the picture from the top of the nose bridge straight up to the first row in
/// which, over the columns of the face box, no pixel of the mask is above 3.
///
/// Returns the distance from nose bridge down to chin instead where it cannot tell: every row up to
/// the picture's top edge shows the person, the length comes out above three times that distance,
/// the columns or rows do not lie in the picture, or there is no mask. Never throws for those.
/// `landmarks` holds all points up to the nose bridge.
float headTopDistance(cv::Rect face, const LandmarkSet& landmarks, PictureMask& mask);

/// The same from the person mask of a FaceCrop of the picture, to which the columns and rows
/// are confined; here a row is background only if every pixel is 0. `face` and `landmarks` are in
/// pixels of the picture.
///
/// Returns the distance from nose bridge down to chin plus the crop's top edge where it cannot
/// tell; hosts have always been given that sum. Throws cv::Exception where the columns or rows do
/// not lie in the crop, or the mask is empty.
float headTopDistanceInCrop(cv::Rect face, const LandmarkSet& landmarks, const PersonMask& cropMask,
                            FaceCrop crop);

} // namespace qorocv
