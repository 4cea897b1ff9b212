#include "faces/cascade_scales.h"

#include "faces/cascade_model.h"

#include <opencv2/core.hpp>

#include <algorithm>

namespace qorocv {

namespace {

constexpr double kScaleFactor = 1.1;

// Below this scale every second window and row is left out.
constexpr float kFirstDenseScale = 2;

// OpenCV cuts a scale into as many stripes as the first scale is wide in these units.
constexpr int kStripeWidth = 32;

int divideUp(int number, int divisor) {
  return (number + divisor - 1) / divisor;
}

int windowPlaces(int pixels) {
  return std::max(pixels + 1 - kCascadeWindow, 0);
}

template <typename Factor> bool windowFits(const cv::Size& picture, Factor factor) {
  const int side = cvRound(kCascadeWindow * factor);
  return side <= picture.width && side <= picture.height;
}

// OpenCV rounds the height of a stripe down to whole steps, so that the stripes together may end
// above the last rows, which it then never looks at.
int lookedAtRows(int places, int step, int stripes) {
  const int stripeHeight = std::max(divideUp(places / step, stripes), 1) * step;
  return std::min(stripes * stripeHeight, places);
}

CascadeScale scaleBy(float factor, const cv::Size& picture) {
  CascadeScale scale;
  scale.factor = factor;
  // Divided in single precision, as OpenCV does.
  scale.picture = {cvRound(static_cast<float>(picture.width) / factor),
                   cvRound(static_cast<float>(picture.height) / factor)};
  scale.step = factor >= kFirstDenseScale ? 1 : 2;
  scale.windows = divideUp(windowPlaces(scale.picture.width), scale.step);
  scale.pixelRows = lookedAtRows(windowPlaces(scale.picture.height), scale.step,
                                 divideUp(windowPlaces(picture.width), kStripeWidth));
  return scale;
}

} // namespace

std::vector<CascadeScale> cascadeScales(const cv::Size& picture) {
  std::vector<CascadeScale> scales;
  // OpenCV grows the factor in double precision, works with it in single precision, and asks in
  // both whether the window fits.
  for (double factor = 1; windowFits(picture, factor); factor *= kScaleFactor) {
    const float narrowed = static_cast<float>(factor);
    if (!windowFits(picture, narrowed)) {
      break;
    }
    scales.push_back(scaleBy(narrowed, picture));
  }
  return scales;
}

cv::Rect boxOfWindow(const CascadeScale& scale, const cv::Point& corner) {
  const int side = cvRound(kCascadeWindow * scale.factor);
  return {cvRound(static_cast<float>(corner.x) * scale.factor),
          cvRound(static_cast<float>(corner.y) * scale.factor), side, side};
}

} // namespace qorocv
