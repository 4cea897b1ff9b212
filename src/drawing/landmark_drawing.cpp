#include "drawing/landmark_drawing.h"

#include "arithmetic/processor_arithmetic.h"

#include <opencv2/imgproc.hpp>

namespace qorocv {

namespace {

const cv::Scalar kLightBlue(255, 200, 0);
const cv::Scalar kRed(0, 0, 255);

struct Run {
  int first;
  int last;
  bool closed;
};

constexpr Run kFaceRuns[] = {
    {0, 16, false},  // jaw
    {17, 21, false}, // one eyebrow
    {22, 26, false}, // other eyebrow
    {27, 30, false}, // nose bridge
    {30, 35, true},  // lower nose
    {36, 41, true},  // one eye
    {42, 47, true},  // other eye
    {48, 59, true},  // outer lip
    {60, 67, true},  // inner lip
};

} // namespace

void drawLandmarks(cv::Mat& picture, const std::vector<cv::Point2f>& points, float scale,
                   int mode) {
  if (points.size() == kLandmarkCount) {
    for (const Run& run : kFaceRuns) {
      drawLandmarkPolyline(picture, points, run.first, run.last, run.closed, scale, mode);
    }
    return;
  }
  for (const cv::Point2f& point : points) {
    cv::circle(picture, point, 3, kLightBlue, cv::FILLED, cv::LINE_8, 0);
  }
}

void drawLandmarkPolyline(cv::Mat& picture, const std::vector<cv::Point2f>& points, int first,
                          int last, bool closed, float scale, int mode) {
  std::vector<cv::Point> line;
  for (int i = first; i <= last; ++i) {
    const cv::Point2f& point = points[static_cast<std::size_t>(i)];
    line.emplace_back(truncateToInt(point.x / scale), truncateToInt(point.y / scale));
  }
  const cv::Scalar& colour = mode == kLightBlueLandmarks ? kLightBlue : kRed;
  cv::polylines(picture, line, closed, colour, 2, cv::LINE_AA, 0);
}

} // namespace qorocv
