#include "pipelines/detector_loading.h"

#include "pipelines/haar_detector.h"
#include "pipelines/ssd_detector.h"

namespace qorocv {

namespace {

Loading ruleFor(const LoadingBySlot& loading, int slotNumber) {
  if (!isSlotNumber(slotNumber)) {
    return loading.otherNumbers;
  }
  return slotNumber <= 4 ? loading.slots1To4 : loading.slots5To9;
}

Detectors withCascade(const cv::CascadeClassifier& cascade, const Landmarker& landmarker) {
  return {[cascade](const cv::Mat& picture) { return detectFacesHaar(cascade, picture); },
          landmarker, nullptr};
}

Detectors withNet(const cv::dnn::Net& net, int modelKind, const Landmarker& landmarker) {
  const auto findFaces = [net, modelKind](const cv::Mat& picture) {
    std::vector<cv::Rect> faces;
    detectFacesSsd(net, picture, modelKind, faces);
    return faces;
  };
  return {findFaces, landmarker, nullptr};
}

Detectors loadFaceDetectors(DetectorSlot& slot, Loading rule, int modelKind) {
  switch (rule) {
  case Loading::sharedPair:
    break;
  case Loading::cascadeIndependent:
    ensureSlotCascade(slot, CascadeRule::independent);
    return withCascade(slot.cascade, slot.landmarker);
  case Loading::cascadeCombined:
    ensureSlotCascade(slot, CascadeRule::combined);
    return withCascade(slot.cascade, slot.landmarker);
  case Loading::netAndLandmarker:
    ensureSlotNet(slot, modelKind);
    return withNet(slot.net, modelKind, slot.landmarker);
  case Loading::netAlone:
    ensureSlotNetOnly(slot, modelKind);
    return withNet(slot.net, modelKind, nullptr);
  }
  const SharedDetectors& shared = ensureSharedDetectors();
  return withCascade(shared.cascade, shared.landmarker);
}

} // namespace

Detectors loadDetectors(const LoadingBySlot& loading, int slotNumber, int modelKind) {
  DetectorSlot& slot = selectSlot(slotNumber);
  Detectors detectors = loadFaceDetectors(slot, ruleFor(loading, slotNumber), modelKind);
  if (loading.segmenter == Segmenter::ofSlot) {
    ensureSlotSegmenter(slot);
    detectors.segmenter = slot.segmenter;
  }
  return detectors;
}

} // namespace qorocv
