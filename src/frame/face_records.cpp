#include "frame/face_records.h"

#include "arithmetic/processor_arithmetic.h"

#include <algorithm>

namespace qorocv {

namespace {

cv::Point2f pixel(int x, int y) {
  return {static_cast<float>(x), static_cast<float>(y)};
}

double* writePoint(double* next, const cv::Point2f& point, const Fractions& fractions) {
  *next++ = fractions.ofWidth(point.x);
  *next++ = fractions.ofHeight(point.y);
  return next;
}

} // namespace

std::vector<cv::Point2f> twoLandmarks(const Face& face) {
  return {face.landmarks[kNoseBridge], face.landmarks[kChin]};
}

std::vector<cv::Point2f> allLandmarks(const Face& face) {
  const auto first = face.landmarks.begin();
  return {first, first + kLandmarkCount};
}

std::vector<cv::Point2f> twoBoxPoints(const Face& face) {
  const cv::Rect& box = face.box;
  const int middle = wrappingSum(box.x, box.width / 2);
  return {pixel(middle, wrappingSum(box.y, box.height / 2)),
          pixel(middle, wrappingSum(box.y, box.height))};
}

int writeRecords(double* results, const cv::Mat& picture, const std::vector<cv::Rect>& boxes,
                 const std::vector<LandmarkSet>& landmarkSets, const RecordPoints& points,
                 const Fractions& fractions) {
  double* next = results;
  *next++ = static_cast<double>(landmarkSets.size());
  const std::size_t records = std::min(landmarkSets.size(), kMaxRecords);
  for (std::size_t k = 0; k < records; ++k) {
    const cv::Rect& box = boxes[k];
    const cv::Point2f rightBottom =
        pixel(wrappingSum(box.x, box.width), wrappingSum(box.y, box.height));
    next = writePoint(next, pixel(box.x, box.y), fractions);
    next = writePoint(next, rightBottom, fractions);
    for (const cv::Point2f& point : points({picture, box, landmarkSets[k]})) {
      next = writePoint(next, point, fractions);
    }
  }
  return static_cast<int>(next - results);
}

} // namespace qorocv
