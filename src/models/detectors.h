// The detectors that outlive a call: one shared pair, and nine slots for hosts with several
// threads. Nothing here is locked. A host lets one thread at a time use a slot, and one thread at a
// time use the shared pair; calls on different slots share no detector.
#pragma once

#include "segmentation/pphs.h"

#include <opencv2/dnn.hpp>
#include <opencv2/face.hpp>
#include <opencv2/objdetect.hpp>

#include <memory>

namespace qorocv {

using Landmarker = cv::Ptr<cv::face::Facemark>;

/// The pair of the single-image exports. Copies of its members are handles on the same detectors.
struct SharedDetectors {
  cv::CascadeClassifier cascade; // empty until loaded from model 06
  Landmarker landmarker;         // null until made; an LBF fitter that reads model 05
};

/// The detectors of one slot, each empty or null until an export first needs it. Copies of the
/// members are handles on the same detectors.
struct DetectorSlot {
  cv::dnn::Net net;
  cv::CascadeClassifier cascade;
  Landmarker landmarker;
  std::shared_ptr<PPHS> segmenter;
};

/// Makes the shared pair anew from the registry's current paths, whatever it held. Throws
/// cv::Exception where model 05 cannot be read; a cascade that cannot be read stays empty.
void reloadSharedDetectors();

/// The shared pair, loaded first where its cascade is empty.
const SharedDetectors& ensureSharedDetectors();

constexpr int kSlotCount = 9;

/// True for 1 to 9, the numbers that name a slot.
bool isSlotNumber(int number);

/// Slot `number`; slot 1 for every number that names none.
DetectorSlot& selectSlot(int number);

/// How a slot without a cascade gets one.
enum class CascadeRule {
  independent, // the cascade, and a landmarker only where the slot has none
  combined,    // a fresh landmarker, then the cascade
};

/// Loads what the slot lacks for cascade detection and fitting. The independent rule also gives a
/// landmarker to a slot that has only its cascade; the combined rule looks at the cascade alone.
void ensureSlotCascade(DetectorSlot& slot, CascadeRule rule);

/// The value of `modelKind` that stands for the Caffe network; every other one means TensorFlow.
constexpr int kCaffeModelKind = 1;

/// Reads the face network into a slot that has none. A loaded network stays, whatever its kind.
/// Throws cv::Exception where the files cannot be read.
void ensureSlotNetOnly(DetectorSlot& slot, int modelKind);

/// Gives a slot without a network a fresh landmarker and then the network; and a slot whose network
/// came without a landmarker (ensureSlotNetOnly) the landmarker it lacks.
void ensureSlotNet(DetectorSlot& slot, int modelKind);

/// Makes the segmenter of a slot that has none, from model 07. Throws cv::Exception where the file
/// cannot be read; the slot then stays without.
void ensureSlotSegmenter(DetectorSlot& slot);

} // namespace qorocv
