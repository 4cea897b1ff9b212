// What tells the detection exports apart, side by side. Everything else about them is the one road
// that detectFaces (detection.h) walks.
#pragma once

#include "frame/face_records.h"
#include "pipelines/face_region_measure.h"

namespace qorocv {

/// Which detectors an export works with, and the lazy rule that loads them.
enum class Loading {
  sharedPair,         // the process-wide cascade and landmarker
  cascadeIndependent, // a slot's cascade and landmarker, each where it is missing
  cascadeCombined,    // a slot's cascade, with a fresh landmarker where it is missing
  netAndLandmarker,   // a slot's network, with a fresh landmarker where it is missing
  netAlone,           // a slot's network; the export fits no landmarks
};

/// Whether an export makes a person mask, for which it takes its slot's segmenter.
enum class Segmenter { none, ofSlot };

/// The rule by the slot number that the host passes. A number that names no slot selects slot 1,
/// though not always by slot 1's own rule.
struct LoadingBySlot {
  Loading slots1To4;
  Loading slots5To9;
  Loading otherNumbers;
  Segmenter segmenter;
};

/// When boxes and landmarks are drawn for a host that wants to see or keep the picture.
enum class Drawing {
  never,    // the host cannot ask
  ifFitted, // over a successful fit
  ifFound,  // over every box, also where the fit failed and there are no landmarks to draw
};

/// The colour of the landmarks' outline: the mode of drawLandmarks.
enum class Outline { none = 0, lightBlue = 1, red = 2 };

/// What comes first once faces are found. It shows while the window waits, and where the copy
/// cannot be written.
enum class Order {
  drawRecordCountShow, // the count is set before the host sees the picture
  recordDrawShowCount, // the count is set last of all
};

/// One detection export without a person mask.
struct Recipe {
  LoadingBySlot loading;
  std::vector<cv::Point2f> (*points)(const Face& face); // what follows the box in each record
  Drawing drawing;
  Outline outline;
  Order order;
};

/// What an export with a person mask does about the only face of a photograph.
enum class OnlyFace {
  likeAnyOther, // nothing more
  inCloseUp,    // segments its surroundings too, hands them out, and measures the head there
};

/// How long the display copy, 4 MB, stays in memory.
enum class ViewLifetime { wholeCall, untilCopied };

/// One detection export with a person mask. Its records hold the head centre, by the mask.
struct MaskRecipe {
  LoadingBySlot loading;
  OnlyFace onlyFace;
  ViewLifetime view;
};

namespace recipes {

// clang-format off
//                                     slots 1 to 4                 slots 5 to 9               other numbers              person mask
constexpr LoadingBySlot kSharedPair   { Loading::sharedPair,         Loading::sharedPair,       Loading::sharedPair,       Segmenter::none };
constexpr LoadingBySlot kMixed        { Loading::cascadeIndependent, Loading::cascadeCombined,  Loading::cascadeCombined,  Segmenter::none };
constexpr LoadingBySlot kMixedAndMask { Loading::cascadeIndependent, Loading::cascadeCombined,  Loading::cascadeCombined,  Segmenter::ofSlot };
constexpr LoadingBySlot kCombined     { Loading::cascadeCombined,    Loading::cascadeCombined,  Loading::cascadeCombined,  Segmenter::none };
constexpr LoadingBySlot kNet          { Loading::netAndLandmarker,   Loading::netAndLandmarker, Loading::netAndLandmarker, Segmenter::none };
constexpr LoadingBySlot kNetAndMask   { Loading::netAndLandmarker,   Loading::netAndLandmarker, Loading::netAndLandmarker, Segmenter::ofSlot };
constexpr LoadingBySlot kNetAlone     { Loading::netAlone,           Loading::netAlone,         Loading::netAlone,         Segmenter::none };

//                                                    detectors    points after box     drawn               outline              order
constexpr Recipe findQORFaces                       { kSharedPair, twoLandmarks,        Drawing::ifFitted,  Outline::lightBlue,  Order::drawRecordCountShow };
constexpr Recipe processImage                       { kSharedPair, allLandmarks,        Drawing::ifFitted,  Outline::lightBlue,  Order::drawRecordCountShow };

constexpr Recipe findQORFacesInTread01              { kMixed,      twoLandmarks,        Drawing::never,     Outline::none,       Order::drawRecordCountShow };
constexpr Recipe findQORFacesInTreadDebug           { kCombined,   twoLandmarks,        Drawing::ifFitted,  Outline::lightBlue,  Order::drawRecordCountShow };
constexpr Recipe findQORFacesHAARInTread_TR02       { kMixed,      headCentreByColour,  Drawing::never,     Outline::none,       Order::drawRecordCountShow };

constexpr Recipe findQORFacesDUNInTread01           { kNet,        twoLandmarks,        Drawing::never,     Outline::none,       Order::recordDrawShowCount };
constexpr Recipe findQORFacesDUNInTread01Debug      { kNet,        twoLandmarks,        Drawing::ifFound,   Outline::red,        Order::recordDrawShowCount };
constexpr Recipe findQORFacesDUNInTread02           { kNetAlone,   twoBoxPoints,        Drawing::never,     Outline::none,       Order::recordDrawShowCount };
constexpr Recipe findQORFacesDUNInTread_TR02        { kNet,        headCentreByColour,  Drawing::never,     Outline::none,       Order::recordDrawShowCount };
constexpr Recipe findQORMulitFacesDUNInTread_TR02   { kNet,        headCentreByColour,  Drawing::never,     Outline::none,       Order::recordDrawShowCount };

//                                                    detectors      only face               view image
constexpr MaskRecipe findQORFacesHAARInTreadWithMask02{ kMixedAndMask, OnlyFace::inCloseUp,    ViewLifetime::untilCopied };
constexpr MaskRecipe findQORFacesDUNInTreadWithMask01 { kNetAndMask,   OnlyFace::likeAnyOther, ViewLifetime::wholeCall };
constexpr MaskRecipe findQORFacesDUNInTreadWithMask02 { kNetAndMask,   OnlyFace::inCloseUp,    ViewLifetime::untilCopied };
// clang-format on

} // namespace recipes

} // namespace qorocv
