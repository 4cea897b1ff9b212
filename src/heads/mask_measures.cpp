#include "heads/mask_measures.h"

#include "arithmetic/processor_arithmetic.h"
#include "arithmetic/regions.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <numeric>
#include <optional>
#include <utility>

namespace qorocv {

namespace {

// The highest values that still count as background. Enlarging to a whole picture leaves faint
// traces of the person around its outline; a crop's mask is read to the letter.
constexpr uchar kBackgroundOfPicture = 3;
constexpr uchar kBackgroundOfCrop = 0;

cv::Mat greyMask(const PersonMask& personMask, const cv::Size& size) {
  cv::Mat grey;
  cv::cvtColor(personMask, grey, cv::COLOR_RGBA2GRAY);
  cv::Mat scaled;
  cv::resize(grey, scaled, size, 0, 0, cv::INTER_LINEAR);
  return scaled;
}

uchar highest(const uchar* first, const uchar* end) {
  return std::accumulate(first, end, uchar{0}, [](uchar a, uchar b) { return std::max(a, b); });
}

// In blocks: each is one vectorised pass, and most rows of a person end with their first.
bool anyAbove(uchar background, const uchar* first, const uchar* end) {
  constexpr std::ptrdiff_t block = 64;
  for (; end - first > block; first += block) {
    if (highest(first, first + block) > background) {
      return true;
    }
  }
  return highest(first, end) > background;
}

// How many rows of the region, from its last upward, show a person in every one of them. Nothing
// where all do, and where there is no row.
std::optional<int> personRowsAtBottom(const cv::Mat& mask, const cv::Rect& region,
                                      uchar background) {
  for (int row = region.height - 1; row >= 0; --row) {
    const uchar* const first = mask.ptr<uchar>(region.y + row) + region.x;
    if (!anyAbove(background, first, first + region.width)) {
      return region.height - row - 1;
    }
  }
  return std::nullopt;
}

} // namespace

PictureMask::PictureMask(PersonMask personMask, cv::Size pictureSize)
    : personMask_(std::move(personMask)), pictureSize_(pictureSize) {}

const cv::Mat& PictureMask::pixels() {
  if (pixels_.empty()) {
    pixels_ = greyMask(personMask_, pictureSize_);
  }
  return pixels_;
}

float headTopDistance(cv::Rect face, const LandmarkSet& landmarks, PictureMask& mask) {
  const float faceLength = noseToChin(landmarks);
  const int height = truncateToInt(landmarks[kNoseBridge].y);
  const cv::Rect band(face.x, 0, face.width, height);
  if (height == 0 || !liesIn(mask.pictureSize(), band)) {
    return faceLength;
  }
  try {
    const auto personRows = personRowsAtBottom(mask.pixels(), band, kBackgroundOfPicture);
    if (!personRows) {
      return faceLength;
    }
    const float fraction = static_cast<float>(*personRows) / static_cast<float>(height);
    const float distance = static_cast<float>(height) * fraction;
    return distance > 3.0F * faceLength ? faceLength : distance;
  } catch (const std::exception&) {
    return faceLength;
  }
}

float headTopDistanceInCrop(cv::Rect face, const LandmarkSet& landmarks, const PersonMask& cropMask,
                            FaceCrop crop) {
  const float faceLength = noseToChin(landmarks);
  const cv::Mat mask = greyMask(cropMask, crop.size());
  const int noseBridge = truncateToInt(landmarks[kNoseBridge].y);
  const cv::Rect band(wrappingDifference(face.x, crop.x), 0, face.width,
                      std::max(wrappingDifference(noseBridge, crop.y), 0));
  CV_Assert(liesIn(crop.size(), band));
  const auto personRows = personRowsAtBottom(mask, band, kBackgroundOfCrop);
  if (personRows) {
    const auto height = static_cast<float>(band.height);
    const float distance = height * static_cast<float>(*personRows) / height;
    const bool tooLong = distance > 3.0F * faceLength;
    if (!tooLong) {
      return distance;
    }
  }
  return static_cast<float>(crop.y) + faceLength;
}

} // namespace qorocv
