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

/// The rule by the slot number that the host passes. A number that names no slot selects slot 1,
/// though not always by slot 1's own rule.
struct LoadingBySlot {
  Loading slots1To4;
  Loading slots5To9;
  Loading otherNumbers;
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

/// One detection export.
struct Recipe {
  LoadingBySlot loading;
  RecordPoints points; // what follows the box in each record
  Drawing drawing;
  Outline outline;
  Order order;
};

namespace recipes {

// clang-format off
//                                  slots 1 to 4                 slots 5 to 9               other numbers
constexpr LoadingBySlot kSharedPair{ Loading::sharedPair,         Loading::sharedPair,       Loading::sharedPair };
constexpr LoadingBySlot kMixed     { Loading::cascadeIndependent, Loading::cascadeCombined,  Loading::cascadeCombined };
constexpr LoadingBySlot kCombined  { Loading::cascadeCombined,    Loading::cascadeCombined,  Loading::cascadeCombined };
constexpr LoadingBySlot kNet       { Loading::netAndLandmarker,   Loading::netAndLandmarker, Loading::netAndLandmarker };
constexpr LoadingBySlot kNetAlone  { Loading::netAlone,           Loading::netAlone,         Loading::netAlone };

//                                                detectors    points after box  drawn               outline              order
constexpr Recipe findQORFaces                   { kSharedPair, twoLandmarks,     Drawing::ifFitted,  Outline::lightBlue,  Order::drawRecordCountShow };
constexpr Recipe processImage                   { kSharedPair, allLandmarks,     Drawing::ifFitted,  Outline::lightBlue,  Order::drawRecordCountShow };

constexpr Recipe findQORFacesInTread01          { kMixed,      twoLandmarks,     Drawing::never,     Outline::none,       Order::drawRecordCountShow };
constexpr Recipe findQORFacesInTreadDebug       { kCombined,   twoLandmarks,     Drawing::ifFitted,  Outline::lightBlue,  Order::drawRecordCountShow };
constexpr Recipe findQORFacesHAARInTread_TR02   { kMixed,      headCentre,       Drawing::never,     Outline::none,       Order::drawRecordCountShow };

constexpr Recipe findQORFacesDUNInTread01       { kNet,        twoLandmarks,     Drawing::never,     Outline::none,       Order::recordDrawShowCount };
constexpr Recipe findQORFacesDUNInTread01Debug  { kNet,        twoLandmarks,     Drawing::ifFound,   Outline::red,        Order::recordDrawShowCount };
constexpr Recipe findQORFacesDUNInTread02       { kNetAlone,   twoBoxPoints,     Drawing::never,     Outline::none,       Order::recordDrawShowCount };
constexpr Recipe findQORFacesDUNInTread_TR02    { kNet,        headCentre,       Drawing::never,     Outline::none,       Order::recordDrawShowCount };
// clang-format on

} // namespace recipes

} // namespace qorocv
