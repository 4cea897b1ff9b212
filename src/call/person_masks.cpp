#include "call/person_masks.h"

#include "call/photograph.h"
#include "heads/face_region_measure.h"
#include "heads/mask_measures.h"

#include <optional>
#include <utility>

namespace qorocv {

namespace {

/// The closer look at a photograph's only face.
struct CloseUp {
  /// Empty where there is none.
  FaceCrop crop;
  PersonMask mask;
};

CloseUp takeCloseUp(const cv::Mat& picture, const cv::Rect& face, PPHS& segmenter) {
  const FaceCrop crop = faceCrop(face, picture.size());
  return {crop, crop.empty() ? PersonMask() : segmenter.infer(picture(crop))};
}

void handOut(const CloseUp& closeUp, const PixelBuffers& buffers, const Fractions& fractions) {
  copyPixels(closeUp.mask, buffers.cropMask, QOROCV460_MASK_BYTES);
  buffers.cropBox[0] = fractions.ofWidth(static_cast<float>(closeUp.crop.x));
  buffers.cropBox[1] = fractions.ofHeight(static_cast<float>(closeUp.crop.y));
  buffers.cropBox[2] = fractions.ofWidth(static_cast<float>(closeUp.crop.width));
  buffers.cropBox[3] = fractions.ofHeight(static_cast<float>(closeUp.crop.height));
}

float headTop(const Face& face, PictureMask& mask, const CloseUp& closeUp) {
  if (!closeUp.crop.empty()) {
    return headTopDistanceInCrop(face.box, face.landmarks, closeUp.mask, closeUp.crop);
  }
  return mask.empty() ? faceRegionMeasure(face.picture, face.box, face.landmarks)
                      : headTopDistance(face.box, face.landmarks, mask);
}

} // namespace

int detectFacesWithMask(const MaskExport& kind, const HostCall& call, const SlotChoice& choice,
                        const PixelBuffers& buffers) {
  Opened opened = openPhotograph(call);
  if (opened.photograph.empty()) {
    return opened.refusal;
  }
  cv::Mat picture = std::move(opened.photograph);
  reportSize(picture, call.width, call.height);
  ViewImage view = viewImage(picture);
  const float scale = scaleToMaxSide(picture, call.maxSide);

  const Detectors detectors = loadDetectors(kind.loading, choice.slot, choice.modelKind);
  const std::shared_ptr<PPHS> segmenter = ensureSlotSegmenter(selectSlot(choice.slot));
  const std::vector<cv::Rect> boxes = findFaces(detectors, picture);
  const Fractions fractions = fractionsOf(call, scale);

  const PersonMask personMask = segmenter->infer(picture);
  copyPixels(personMask, buffers.mask, QOROCV460_MASK_BYTES);
  copyPixels(view, buffers.view, QOROCV460_VIEW_BYTES);
  view.release();
  CloseUp closeUp;
  if (kind.onlyFace == OnlyFace::inCloseUp && boxes.size() == 1) {
    closeUp = takeCloseUp(picture, boxes.front(), *segmenter);
    handOut(closeUp, buffers, fractions);
  }

  const auto landmarkSets = fitLandmarks(detectors.landmarker, picture, boxes);
  PictureMask mask(personMask, picture.size());
  *call.resultCount =
      landmarkSets ? writeRecords(call.results, landmarkSets->size(), fractions,
                                  [&](std::size_t k) {
                                    const Face face{picture, boxes[k], (*landmarkSets)[k]};
                                    return headCentreRecord(face, headTop(face, mask, closeUp));
                                  })
                   : 0;
  return static_cast<int>(boxes.size());
}

} // namespace qorocv
