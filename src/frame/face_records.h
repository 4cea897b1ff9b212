// The numbers that a detection export hands to its host: one record per face, all coordinates as
// fractions of the photograph. A record is the face's box (left, top, right, bottom) and then
// points (x, y), two to sixty-eight of them; the exports differ only in the points.
#pragma once

#include <opencv2/core.hpp>

#include <functional>
#include <vector>

namespace qorocv {

/// The 68 points of one face in pixels, in the order of the 68-point scheme. Empty for a face that
/// no landmarks were fitted to.
using LandmarkSet = std::vector<cv::Point2f>;

constexpr std::size_t kNoseBridge = 27; // top of the nose bridge, between the eyes
constexpr std::size_t kChin = 8;        // tip of the chin
constexpr std::size_t kLandmarkCount = 68;

/// The most records that one call writes, whatever it finds and whatever capacity the host states:
/// the arrays of existing hosts are made for it.
constexpr std::size_t kMaxRecords = 30;

/// One face of the scaled picture, in its pixels.
struct Face {
  const cv::Mat& picture;
  cv::Rect box;
  const LandmarkSet& landmarks;
};

/// Which points follow the box in a face's record, in pixels of the scaled picture.
using RecordPoints = std::function<std::vector<cv::Point2f>(const Face& face)>;

/// Nose bridge and chin: a record of 8 values.
std::vector<cv::Point2f> twoLandmarks(const Face& face);

/// All 68 landmarks: a record of 140 values.
std::vector<cv::Point2f> allLandmarks(const Face& face);

/// Where a face without landmarks has its nose bridge and chin, as far as its box tells: the middle
/// of the box and of its bottom edge, half the width truncated. A record of 8 values.
std::vector<cv::Point2f> twoBoxPoints(const Face& face);

/// Turns pixels of the scaled picture into fractions of the photograph (or of the part of it that
/// was scaled), in single precision: first divided by the scale, then by the photograph's side.
struct Fractions {
  float scale;
  float width; // of the photograph as read
  float height;

  double ofWidth(float x) const { return static_cast<double>(x / scale / width); }
  double ofHeight(float y) const { return static_cast<double>(y / scale / height); }
};

/// Writes the number of landmark sets to results[0] and a record for each of the first 30 behind
/// it; boxes[k] belongs to landmarkSets[k]. Returns how many values were written.
int writeRecords(double* results, const cv::Mat& picture, const std::vector<cv::Rect>& boxes,
                 const std::vector<LandmarkSet>& landmarkSets, const RecordPoints& points,
                 const Fractions& fractions);

} // namespace qorocv
