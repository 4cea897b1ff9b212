// Detection with person masks: who stands in the photograph, and pixels to show it with.
#pragma once

#include "pipelines/detection.h"

namespace qorocv {

/// The host's buffers for pixels, four bytes each. None is checked for null.
struct PixelBuffers {
  unsigned char* view; // kViewBytes: the photograph
  unsigned char* mask; // kMaskBytes: its person mask
  unsigned char*
      cropMask;    // kMaskBytes: the person mask of the close-up, where the recipe makes one
  double* cropBox; // 4 values: the close-up's left, top, width, height as fractions
};

/// The surroundings of a face in its picture, three times the face in each direction, clipped.
/// Empty for a face that is empty or not wholly inside.
cv::Rect closeUp(const cv::Rect& face, const cv::Size& picture);

/// detectFaces for an export with a person mask. Once the faces are found it fills `view` and
/// `mask`; for an only face, where the recipe wants a close-up, also `cropMask` and `cropBox`, or
/// only `cropBox`, with zeros, where there can be none. Records hold the head centre by the mask: by
/// the close-up's where there is one.
int detectFacesWithMask(const MaskRecipe& recipe, const HostCall& call, const SlotChoice& choice,
                        const PixelBuffers& host);

} // namespace qorocv
