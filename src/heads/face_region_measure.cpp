#include "heads/face_region_measure.h"

#include "arithmetic/processor_arithmetic.h"
#include "arithmetic/regions.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <exception>
#include <optional>

namespace qorocv {

namespace {

constexpr float kStripWidth = 12.0F;
constexpr float kStripHeight = 100.0F;
const cv::Point kBackgroundPixel(6, 10);
constexpr int kHueTolerance = 10;

// `wanted`, but for a pixel less where the rounding of this very product says so.
int stripLength(int length, float wanted) {
  const auto pixels = static_cast<float>(length);
  return truncateToInt(pixels * (wanted / pixels));
}

cv::Mat shrinkToStrip(const cv::Mat& band) {
  cv::Mat strip;
  cv::resize(band, strip,
             {stripLength(band.cols, kStripWidth), stripLength(band.rows, kStripHeight)}, 0, 0,
             cv::INTER_LINEAR);
  return strip;
}

// 255 where the hue is near the background's, else 0.
cv::Mat backgroundMask(const cv::Mat& strip) {
  cv::Mat hsv;
  cv::cvtColor(strip, hsv, cv::COLOR_BGR2HSV);
  const int hue = hsv.at<cv::Vec3b>(kBackgroundPixel)[0];
  cv::Mat mask;
  cv::inRange(hsv, cv::Scalar(hue - kHueTolerance, 0, 0, 0),
              cv::Scalar(hue + kHueTolerance, 255, 255, 0), mask);
  return mask;
}

bool isUniform(const cv::Mat& mask, int row) {
  const uchar* const first = mask.ptr<uchar>(row);
  return std::all_of(first, first + mask.cols, [](uchar value) { return value != 0; });
}

// Nothing where no row is background.
std::optional<float> shareBelowBackground(const cv::Mat& mask) {
  for (int row = mask.rows - 1; row >= 0; --row) {
    if (isUniform(mask, row)) {
      return static_cast<float>(mask.rows - row - 1) / static_cast<float>(mask.rows);
    }
  }
  return std::nullopt;
}

// Nothing also where there is no such band, and where OpenCV cannot shrink it: it may be empty.
std::optional<float> shareBelowBackground(const cv::Mat& image, const cv::Rect& band) {
  if (!liesIn(image.size(), band)) {
    return std::nullopt;
  }
  try {
    return shareBelowBackground(backgroundMask(shrinkToStrip(image(band).clone())));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

} // namespace

float faceRegionMeasure(const cv::Mat& image, cv::Rect face, const LandmarkSet& landmarks) {
  const float faceLength = noseToChin(landmarks);
  const int bandHeight = truncateToInt(landmarks[kNoseBridge].y);
  const auto share = shareBelowBackground(image, {face.x, 0, face.width, bandHeight});
  if (!share) {
    return faceLength;
  }
  const float estimate = static_cast<float>(bandHeight) * *share;
  return estimate > faceLength * 3.0F ? faceLength : estimate;
}

} // namespace qorocv
