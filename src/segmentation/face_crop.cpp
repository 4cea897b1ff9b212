#include "segmentation/face_crop.h"

#include "arithmetic/regions.h"

namespace qorocv {

FaceCrop faceCrop(const cv::Rect& face, const cv::Size& picture) {
  const cv::Rect whole({}, picture);
  if (face.empty() || !liesIn(picture, face)) {
    return {};
  }
  return cv::Rect(face.x - face.width, face.y - face.height, 3 * face.width, 3 * face.height) &
         whole;
}

} // namespace qorocv
