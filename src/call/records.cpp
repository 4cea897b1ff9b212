#include "call/records.h"

#include "arithmetic/processor_arithmetic.h"
#include "heads/face_region_measure.h"
#include "heads/head_centre.h"

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

FaceRecord twoLandmarkRecord(const Face& face) {
  return {face.box, {face.landmarks[kNoseBridge], face.landmarks[kChin]}};
}

FaceRecord allLandmarkRecord(const Face& face) {
  const auto first = face.landmarks.begin();
  return {face.box, {first, first + kLandmarkCount}};
}

FaceRecord boxRecord(const cv::Rect& box) {
  const int middle = wrappingSum(box.x, box.width / 2);
  return {box,
          {pixel(middle, wrappingSum(box.y, box.height / 2)),
           pixel(middle, wrappingSum(box.y, box.height))}};
}

FaceRecord headCentreRecord(const Face& face, float headTop) {
  return {
      face.box,
      {face.landmarks[kNoseBridge], face.landmarks[kChin], headCentre(face.landmarks, headTop)}};
}

FaceRecord headCentreRecordByColour(const Face& face) {
  return headCentreRecord(face, faceRegionMeasure(face.picture, face.box, face.landmarks));
}

Fractions fractionsOf(const HostCall& call, float scale) {
  return {scale, static_cast<float>(*call.width), static_cast<float>(*call.height)};
}

double* writeRecord(double* next, const FaceRecord& record, const Fractions& fractions) {
  const cv::Rect& box = record.box;
  next = writePoint(next, pixel(box.x, box.y), fractions);
  next = writePoint(next, pixel(wrappingSum(box.x, box.width), wrappingSum(box.y, box.height)),
                    fractions);
  for (const cv::Point2f& point : record.points) {
    next = writePoint(next, point, fractions);
  }
  return next;
}

} // namespace qorocv
