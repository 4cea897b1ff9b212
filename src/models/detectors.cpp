#include "models/detectors.h"

#include "models/cascade_check.h"
#include "models/model_registry.h"
#include "platform/platform.h"

#include <array>

namespace qorocv {

namespace {

SharedDetectors theSharedDetectors;
std::array<DetectorSlot, kSlotCount> theSlots;

// The fitter is stored before it reads its model: one that failed to read stays, and says so at its
// first fit.
void replaceLandmarker(Landmarker& landmarker) {
  const ClassicLocaleOfThread
      classicLocale; // some locales' decimal signs are beyond OpenCV's reader
  const auto fitter = cv::face::FacemarkLBF::create(cv::face::FacemarkLBF::Params());
  landmarker = fitter;
  fitter->loadModel(modelRegistry().readablePath(Model::landmarks));
}

void ensureLandmarker(Landmarker& landmarker) {
  if (landmarker.empty()) {
    replaceLandmarker(landmarker);
  }
}

// A cascade that could not be read stays empty, the next call tries again, and detection with it
// throws. So does one that would lead detection astray.
void loadCascade(cv::CascadeClassifier& cascade) {
  const ClassicLocaleOfThread classicLocale;
  cascade = cv::CascadeClassifier();
  const std::string path = modelRegistry().readablePath(Model::cascade);
  const cv::FileStorage file(path, cv::FileStorage::READ);
  if (!file.isOpened()) {
    return;
  }
  const cv::FileNode root = file.getFirstTopLevelNode();
  if (isSoundCascade(root) && !cascade.read(root)) {
    cascade.load(path); // converts cascades of OpenCV's first format
  }
}

cv::dnn::Net readNet(int modelKind) {
  const ModelRegistry& models = modelRegistry();
  if (modelKind == kCaffeModelKind) {
    return cv::dnn::readNetFromCaffe(models.readablePath(Model::caffeDescription),
                                     models.readablePath(Model::caffeWeights));
  }
  return cv::dnn::readNetFromTensorflow(models.readablePath(Model::tensorflowWeights),
                                        models.readablePath(Model::tensorflowGraph));
}

} // namespace

void reloadSharedDetectors() {
  replaceLandmarker(theSharedDetectors.landmarker);
  loadCascade(theSharedDetectors.cascade);
}

const SharedDetectors& ensureSharedDetectors() {
  if (theSharedDetectors.cascade.empty()) {
    reloadSharedDetectors();
  }
  return theSharedDetectors;
}

bool isSlotNumber(int number) {
  return number >= 1 && number <= kSlotCount;
}

DetectorSlot& selectSlot(int number) {
  const int known = isSlotNumber(number) ? number : 1;
  return theSlots[static_cast<std::size_t>(known - 1)];
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

void ensureSlotSegmenter(DetectorSlot& slot) {
  if (!slot.segmenter) {
    slot.segmenter = std::make_shared<PPHS>(modelRegistry().readablePath(Model::personSegmentation),
                                            cv::dnn::DNN_BACKEND_OPENCV, cv::dnn::DNN_TARGET_CPU);
  }
}

} // namespace qorocv
