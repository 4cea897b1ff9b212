// The numbers that a detection export hands to its host: one record per face, all coordinates as
// fractions of the photograph.
#pragma once

#include "call/host_call.h"
#include "faces/landmarks.h"
#include "qorocv460/qorocv460.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <vector>

namespace qorocv {

/// The most records that one call writes, whatever it finds and whatever capacity the host states:
/// the arrays of existing hosts are made for it.
constexpr std::size_t kMaxRecords = QOROCV460_MAX_RECORDS;

/// One face of the scaled picture, in its pixels.
struct Face {
  const cv::Mat& picture;
  cv::Rect box;
  const LandmarkSet& landmarks;
};

/// What a host learns of one face, in pixels of the scaled picture: the box, of which left, top,
/// right and bottom are written, and then points, x before y. Exports differ in the points.
struct FaceRecord {
  cv::Rect box;
  std::vector<cv::Point2f> points;
};

/// Nose bridge and chin: 8 values.
FaceRecord twoLandmarkRecord(const Face& face);

/// All 68 landmarks: 140 values.
FaceRecord allLandmarkRecord(const Face& face);

/// Where a face without landmarks has its nose bridge and chin, as far as its box tells: the middle
/// of the box and of its bottom edge, half the width truncated. 8 values.
FaceRecord boxRecord(const cv::Rect& box);

/// Nose bridge, chin and the head's centre, with the top of the head `headTop` pixels above the
/// nose bridge: 10 values.
FaceRecord headCentreRecord(const Face& face, float headTop);

/// The same with the top of the head as the colours above the face tell it.
FaceRecord headCentreRecordByColour(const Face& face);

/// Turns pixels of the scaled picture into fractions of the photograph (or of the tile that was
/// scaled), in single precision: first divided by the scale, then by the photograph's side.
struct Fractions {
  float scale;
  /// Columns and rows of the photograph as read.
  float width;
  float height;

  double ofWidth(float x) const { return static_cast<double>(x / scale / width); }
  double ofHeight(float y) const { return static_cast<double>(y / scale / height); }
};

/// The size comes from the host's variables: what it holds there is what it will divide by.
Fractions fractionsOf(const HostCall& call, float scale);

/// Writes one record to `next`; returns the place behind it.
double* writeRecord(double* next, const FaceRecord& record, const Fractions& fractions);

/// Writes `count`, the number of landmark sets, to results[0] and behind it recordOf(k), the
/// FaceRecord of face k, for each of the first 30. Returns how many values were written. Where
/// recordOf throws, nothing of its record and of those behind it is written.
template <typename RecordOf>
int writeRecords(double* results, std::size_t count, const Fractions& fractions,
                 RecordOf recordOf) {
  double* next = results;
  *next++ = static_cast<double>(count);
  for (std::size_t k = 0; k < std::min(count, kMaxRecords); ++k) {
    const FaceRecord record = recordOf(k);
    next = writeRecord(next, record, fractions);
  }
  return static_cast<int>(next - results);
}

} // namespace qorocv
