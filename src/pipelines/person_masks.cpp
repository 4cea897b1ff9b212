#include "pipelines/person_masks.h"

#include "arithmetic/regions.h"
#include "segmentation/mask_measures.h"
#include "segmentation/pixel_block.h"

namespace qorocv {

namespace {

/// The person masks of one call, and what is read from them.
class PersonMasks {
public:
  PersonMasks(const MaskRecipe& recipe, const PixelBuffers& host) : recipe_(recipe), host_(host) {}

  void takeView(const cv::Mat& photograph) { view_ = viewImage(photograph); }

  void segment(const FoundFaces& found) {
    const cv::Mat mask = found.segmenter->infer(found.picture);
    copyPixels(mask, host_.mask, kMaskBytes);
    copyPixels(view_, host_.view, kViewBytes);
    if (recipe_.view == ViewLifetime::untilCopied) {
      view_.release();
    }
    mask_ = PictureMask(mask, found.picture.size());
    if (recipe_.onlyFace == OnlyFace::inCloseUp && found.boxes.size() == 1) {
      segmentCloseUp(found);
    }
  }

  float headTop(const Face& face) {
    if (!crop_.empty()) {
      return headTopDistanceInCrop(face.box, face.landmarks, cropMask_, crop_);
    }
    return mask_.empty() ? faceRegionMeasure(face.picture, face.box, face.landmarks)
                         : headTopDistance(face.box, face.landmarks, mask_);
  }

private:
  void segmentCloseUp(const FoundFaces& found) {
    crop_ = closeUp(found.boxes.front(), found.picture.size());
    if (!crop_.empty()) {
      cropMask_ = found.segmenter->infer(found.picture(crop_));
      copyPixels(cropMask_, host_.cropMask, kMaskBytes);
    }
    host_.cropBox[0] = found.fractions.ofWidth(static_cast<float>(crop_.x));
    host_.cropBox[1] = found.fractions.ofHeight(static_cast<float>(crop_.y));
    host_.cropBox[2] = found.fractions.ofWidth(static_cast<float>(crop_.width));
    host_.cropBox[3] = found.fractions.ofHeight(static_cast<float>(crop_.height));
  }

  const MaskRecipe& recipe_;
  const PixelBuffers& host_;
  cv::Mat view_;
  PictureMask mask_;
  cv::Rect crop_;
  cv::Mat cropMask_;
};

} // namespace

cv::Rect closeUp(const cv::Rect& face, const cv::Size& picture) {
  const cv::Rect whole({}, picture);
  if (face.empty() || !liesIn(picture, face)) {
    return {};
  }
  return cv::Rect(face.x - face.width, face.y - face.height, 3 * face.width, 3 * face.height) &
         whole;
}

int detectFacesWithMask(const MaskRecipe& recipe, const HostCall& call, const SlotChoice& choice,
                        const PixelBuffers& host) {
  const Recipe detection{recipe.loading, headCentreByColour, Drawing::never, Outline::none,
                         Order::recordDrawShowCount};
  PersonMasks masks(recipe, host);
  Stops stops;
  stops.beforeScaling = [&](const cv::Mat& photograph) { masks.takeView(photograph); };
  stops.beforeFitting = [&](const FoundFaces& found) { masks.segment(found); };
  stops.points = [&](const Face& face) { return headCentre(face.landmarks, masks.headTop(face)); };
  return detectFaces(detection, call, choice, {}, stops);
}

} // namespace qorocv
