#include "models/detector_slots.h"

#include "faces/lbf_landmarker.h"
#include "faces/ssd_detector.h"
#include "models/cascade_check.h"
#include "models/model_registry.h"
#include "networks/network_check.h"
#include "platform/platform.h"
#include "qorocv460/qorocv460.h"

#include <array>
#include <string>

namespace qorocv {

namespace {

// Owned by the library: made empty at the first use, so that nothing of OpenCV runs while the
// system still loads it, and ended with the library, before what OpenCV itself set up earlier.
SharedDetectors& theSharedDetectors() {
  static SharedDetectors detectors;
  return detectors;
}

// Owned, made and ended like the shared pair.
std::array<DetectorSlot, QOROCV460_LAST_SLOT>& theSlots() {
  static std::array<DetectorSlot, QOROCV460_LAST_SLOT> slots;
  return slots;
}

// What the readers say of a directory does not name it, and some say it in an exception that is not
// OpenCV's. The code is the one of cv::FileStorage.
void refuseDirectory(const std::string& path) {
  if (opensDirectory(path)) {
    CV_Error(cv::Error::StsAssert, path + " is a directory and no model file");
  }
}

// Reading a named pipe waits, perhaps for ever, for somebody to write into it: it is no model file.
// `missing` is the code with which the model's reader answers where there is no file.
std::string modelFile(Model model, cv::Error::Code missing) {
  const std::string& path = modelRegistry().path(model);
  if (isNamedPipe(path)) {
    CV_Error(missing, path + " is a named pipe and no model file");
  }
  refuseDirectory(path);
  return path;
}

// The fitter is stored before it reads its model: one that failed to read stays, and says so at its
// first fit.
void replaceLandmarker(Landmarker& landmarker) {
  // Some locales' decimal signs are beyond OpenCV's reader.
  const ClassicLocaleOfThread classicLocale;
  const auto fitter = cv::makePtr<LbfLandmarker>();
  landmarker = fitter;
  fitter->loadModel(modelFile(Model::landmarks, cv::Error::StsBadArg));
}

void ensureLandmarker(Landmarker& landmarker) {
  if (landmarker.empty()) {
    replaceLandmarker(landmarker);
  }
}

// A cascade that could not be read stays empty, the next call tries again, and detection with it
// throws. So does one that would lead detection astray.
void loadCascade(FaceCascade& cascade) {
  const ClassicLocaleOfThread classicLocale;
  cascade = FaceCascade();
  const std::string& path = modelRegistry().path(Model::cascade);
  if (isNamedPipe(path)) {
    return;
  }
  refuseDirectory(path);
  const cv::FileStorage file(path, cv::FileStorage::READ);
  if (!file.isOpened()) {
    return;
  }
  const cv::FileNode root = file.getFirstTopLevelNode();
  if (!isSoundCascade(root)) {
    return;
  }
  cascade = FaceCascade::read(root);
  if (cascade.empty()) {
    cascade =
        FaceCascade(cv::CascadeClassifier(path)); // converts cascades of OpenCV's first format
  }
}

cv::dnn::Net readNet(int modelKind) {
  const auto file = [](Model model) { return modelFile(model, cv::Error::StsError); };
  // Checking makes the layers, which fold the case of their parameters by the locale.
  const ClassicLocaleOfThread classicLocale;
  const cv::dnn::MatShape input{1, 3, kFaceNetworkSide, kFaceNetworkSide};
  cv::dnn::Net net;
  if (modelKind == QOROCV460_CAFFE) {
    const std::string description = file(Model::caffeDescription);
    const std::string weights = file(Model::caffeWeights);
    checkCaffe(description, weights);
    net = cv::dnn::readNetFromCaffe(description, weights);
    checkLayers(net, input, weights);
  } else {
    const std::string weights = file(Model::tensorflowWeights);
    const std::string graph = file(Model::tensorflowGraph);
    checkTensorflow(weights, graph);
    net = cv::dnn::readNetFromTensorflow(weights, graph);
    checkLayers(net, input, weights);
  }
  return net;
}

// Which rule loads a slot's cascade, by the number that the host passes.
struct CascadeRules {
  CascadeRule slots1To4;
  CascadeRule slots5To9;
  CascadeRule otherNumbers;
};

constexpr auto kIndependent = CascadeRule::independent;
constexpr auto kCombined = CascadeRule::combined;

//                                        1 to 4        5 to 9     any other
constexpr CascadeRules kCascadeRules{kIndependent, kCombined, kCombined};
constexpr CascadeRules kDebugCascadeRules{kCombined, kCombined, kCombined};

bool isSlotNumber(int number) {
  return number >= QOROCV460_FIRST_SLOT && number <= QOROCV460_LAST_SLOT;
}

CascadeRule ruleFor(int slotNumber, const CascadeRules& rules) {
  if (!isSlotNumber(slotNumber)) {
    return rules.otherNumbers;
  }
  return slotNumber <= 4 ? rules.slots1To4 : rules.slots5To9;
}

} // namespace

void reloadSharedDetectors() {
  SharedDetectors& shared = theSharedDetectors();
  replaceLandmarker(shared.landmarker);
  loadCascade(shared.cascade);
}

const SharedDetectors& ensureSharedDetectors() {
  if (theSharedDetectors().cascade.empty()) {
    reloadSharedDetectors();
  }
  return theSharedDetectors();
}

DetectorSlot& selectSlot(int number) {
  const int known = isSlotNumber(number) ? number : QOROCV460_FIRST_SLOT;
  return theSlots()[static_cast<std::size_t>(known - QOROCV460_FIRST_SLOT)];
}

void ensureSlotCascade(DetectorSlot& slot, CascadeRule rule) {
  switch (rule) {
  case CascadeRule::independent:
    if (slot.cascade.empty()) {
      loadCascade(slot.cascade);
    }
    ensureLandmarker(slot.landmarker);
    return;
  case CascadeRule::combined:
    if (slot.cascade.empty()) {
      replaceLandmarker(slot.landmarker);
      loadCascade(slot.cascade);
    }
    return;
  }
}

void ensureSlotNetOnly(DetectorSlot& slot, int modelKind) {
  if (slot.net.empty()) {
    slot.net = readNet(modelKind);
  }
}

void ensureSlotNet(DetectorSlot& slot, int modelKind) {
  if (slot.net.empty()) {
    replaceLandmarker(slot.landmarker);
    ensureSlotNetOnly(slot, modelKind);
    return;
  }
  ensureLandmarker(slot.landmarker);
}

const std::shared_ptr<PPHS>& ensureSlotSegmenter(DetectorSlot& slot) {
  if (!slot.segmenter) {
    slot.segmenter =
        std::make_shared<PPHS>(modelFile(Model::personSegmentation, cv::Error::StsBadArg),
                               cv::dnn::DNN_BACKEND_OPENCV, cv::dnn::DNN_TARGET_CPU);
  }
  return slot.segmenter;
}

Detectors loadDetectors(Loading loading, int slotNumber, int modelKind) {
  DetectorSlot& slot = selectSlot(slotNumber);
  switch (loading) {
  case Loading::sharedPair:
    break;
  case Loading::cascade:
    ensureSlotCascade(slot, ruleFor(slotNumber, kCascadeRules));
    return {slot.cascade, slot.landmarker};
  case Loading::cascadeCombined:
    ensureSlotCascade(slot, ruleFor(slotNumber, kDebugCascadeRules));
    return {slot.cascade, slot.landmarker};
  case Loading::net:
    ensureSlotNet(slot, modelKind);
    return {FaceNet{slot.net, modelKind}, slot.landmarker};
  case Loading::netOnly:
    ensureSlotNetOnly(slot, modelKind);
    return {FaceNet{slot.net, modelKind}, nullptr};
  }
  const SharedDetectors& shared = ensureSharedDetectors();
  return {shared.cascade, shared.landmarker};
}

} // namespace qorocv
