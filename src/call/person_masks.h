// Detection with person masks: who stands in the photograph, and pixels to show it with.
#pragma once

#include "call/detection.h"

namespace qorocv {

/// What an export with a person mask does about the only face of a photograph.
enum class OnlyFace {
  /// Nothing more.
  likeAnyOther,
  /// Segments its surroundings too, hands them out, and measures the head there.
  inCloseUp,
};

/// What tells the exports with a person mask apart.
struct MaskExport {
  Loading loading;
  OnlyFace onlyFace;
};

/// The host's buffers for pixels, four bytes each. None is checked for null.
struct PixelBuffers {
  /// QOROCV460_VIEW_BYTES: the photograph.
  unsigned char* view;
  /// QOROCV460_MASK_BYTES: its person mask.
  unsigned char* mask;
  /// QOROCV460_MASK_BYTES: the person mask of the close-up, where the export makes one.
  unsigned char* cropMask;
  /// 4 values: the close-up's left, top, width, height as fractions.
  double* cropBox;
};

/// Finds faces, segments the photograph, fits landmarks and writes records with the head's centre
/// by the mask. Once the faces are found it fills `view` and `mask`; for an only face, where the
/// export makes a close-up, also `cropMask` and `cropBox`, or only `cropBox`, with zeros, where
/// there can be none. Returns and throws as detectFaces does.
int detectFacesWithMask(const MaskExport& kind, const HostCall& call, const SlotChoice& choice,
                        const PixelBuffers& buffers);

} // namespace qorocv
