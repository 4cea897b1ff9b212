// The detectors that outlive a call, and when each is loaded: one shared pair, and nine slots for
// hosts with several threads. Nothing here is locked. A host lets one thread at a time use a slot,
// and one thread at a time use the shared pair; calls on different slots share no detector.
#pragma once

#include "faces/face_cascade.h"
#include "faces/landmark_fitting.h"
#include "segmentation/pphs.h"

#include <opencv2/dnn.hpp>

#include <memory>
#include <variant>

namespace qorocv {

/// The pair of the single-image exports. Copies of its members are handles on the same detectors.
struct SharedDetectors {
  /// Empty until loaded from model 06.
  FaceCascade cascade;
  /// Null until made; an LBF fitter that reads model 05.
  Landmarker landmarker;
};

/// The detectors of one slot, each empty or null until an export first needs it. Copies of the
/// members are handles on the same detectors.
struct DetectorSlot {
  cv::dnn::Net net;
  FaceCascade cascade;
  Landmarker landmarker;
  std::shared_ptr<PPHS> segmenter;
};

/// Makes the shared pair anew from the registry's current paths, whatever it held. Throws
/// cv::Exception where model 05 cannot be read; a cascade that cannot be read stays empty.
void reloadSharedDetectors();

/// The shared pair, loaded first where its cascade is empty.
const SharedDetectors& ensureSharedDetectors();

/// Slot `number`, 1 to 9; slot 1 for every other number.
DetectorSlot& selectSlot(int number);

/// How a slot without a cascade gets one.
enum class CascadeRule {
  /// The cascade, and a landmarker only where the slot has none.
  independent,
  /// A fresh landmarker, then the cascade.
  combined,
};

/// Loads what the slot lacks for cascade detection and fitting. The independent rule also gives a
/// landmarker to a slot that has only its cascade; the combined rule looks at the cascade alone.
void ensureSlotCascade(DetectorSlot& slot, CascadeRule rule);

/// Reads the face network into a slot that has none. A loaded network stays, whatever its kind.
/// Throws cv::Exception where the files cannot be read.
void ensureSlotNetOnly(DetectorSlot& slot, int modelKind);

/// Gives a slot without a network a fresh landmarker and then the network; and a slot whose network
/// came without a landmarker (ensureSlotNetOnly) the landmarker it lacks.
void ensureSlotNet(DetectorSlot& slot, int modelKind);

/// Makes the segmenter of a slot that has none, from model 07. Throws cv::Exception where the file
/// cannot be read; the slot then stays without. Returns the slot's.
const std::shared_ptr<PPHS>& ensureSlotSegmenter(DetectorSlot& slot);

/// What an export detects with.
enum class Loading {
  /// The shared pair.
  sharedPair,
  /// A slot's cascade and landmarker, by a rule that goes by the slot's number.
  cascade,
  /// The same, by the combined rule for every slot.
  cascadeCombined,
  /// A slot's network and landmarker.
  net,
  /// A slot's network alone: nothing is fitted.
  netOnly,
};

/// The network of a slot, and the kind that a call takes it for.
struct FaceNet {
  cv::dnn::Net net;
  int modelKind;
};

/// Handles on what one call works with.
struct Detectors {
  std::variant<FaceCascade, FaceNet> faces;
  /// Null where nothing is fitted.
  Landmarker landmarker;
};

/// Loads what the pair, or the slot that `slotNumber` selects, lacks, and hands it out. Throws
/// cv::Exception where a model cannot be read.
Detectors loadDetectors(Loading loading, int slotNumber, int modelKind);

} // namespace qorocv
