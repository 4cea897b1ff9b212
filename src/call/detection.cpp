#include "call/detection.h"

#include "call/photograph.h"
#include "drawing/annotated_picture.h"
#include "faces/haar_detector.h"
#include "faces/ssd_detector.h"

#include <opencv2/imgcodecs.hpp>

#include <optional>
#include <string>
#include <utility>

namespace qorocv {

namespace {

/// What is known of a photograph once the landmarks of its faces are fitted.
struct FittedFaces {
  /// Scaled.
  cv::Mat picture;
  std::vector<cv::Rect> boxes;
  /// Nothing where there is no face, and where the fit failed: then there are no records.
  std::optional<std::vector<LandmarkSet>> landmarkSets;
  Fractions fractions;

  int found() const { return static_cast<int>(boxes.size()); }
};

FittedFaces findAndFit(cv::Mat picture, Loading loading, const HostCall& call,
                       const SlotChoice& choice) {
  reportSize(picture, call.width, call.height);
  const float scale = scaleToMaxSide(picture, call.maxSide);
  const Detectors detectors = loadDetectors(loading, choice.slot, choice.modelKind);
  const std::vector<cv::Rect> boxes = findFaces(detectors, picture);
  auto landmarkSets = fitLandmarks(detectors.landmarker, picture, boxes);
  return {picture, boxes, std::move(landmarkSets), fractionsOf(call, scale)};
}

int writeFaces(const FaceExport& kind, const HostCall& call, const FittedFaces& faces) {
  if (!faces.landmarkSets) {
    return 0;
  }
  const std::vector<LandmarkSet>& sets = *faces.landmarkSets;
  return writeRecords(call.results, sets.size(), faces.fractions, [&](std::size_t k) {
    return kind.record({faces.picture, faces.boxes[k], sets[k]});
  });
}

/// Where the picture goes that a host wants to look at.
struct Annotation {
  /// Local path of the copy.
  std::string copy;
  bool show;

  /// Hosts pass a blank for "no copy", so a single character is no path.
  bool keepsCopy() const { return copy.size() > 1; }
  bool isWanted() const { return show || keepsCopy(); }
};

void draw(FittedFaces& faces, const Annotation& annotation, int landmarkMode) {
  if (annotation.isWanted()) {
    drawFaces(faces.picture, faces.boxes, faces.landmarkSets.value_or(std::vector<LandmarkSet>()),
              landmarkMode);
  }
}

void showAndKeep(const FittedFaces& faces, const Annotation& annotation) {
  if (annotation.show) {
    showAndWait(faces.picture);
  }
  if (annotation.keepsCopy()) {
    cv::imwrite(annotation.copy, faces.picture);
  }
}

} // namespace

std::vector<cv::Rect> findFaces(const Detectors& detectors, const cv::Mat& picture) {
  if (const auto* const cascade = std::get_if<FaceCascade>(&detectors.faces)) {
    return detectFacesHaar(*cascade, picture);
  }
  const auto& face = std::get<FaceNet>(detectors.faces);
  std::vector<cv::Rect> faces;
  detectFacesSsd(face.net, picture, face.modelKind, faces);
  return faces;
}

int detectFaces(const FaceExport& kind, const HostCall& call, const SlotChoice& choice) {
  Opened opened = openPhotograph(call);
  if (opened.photograph.empty()) {
    return opened.refusal;
  }
  return detectFacesIn(std::move(opened.photograph), kind, call, choice);
}

int detectFacesIn(cv::Mat photograph, const FaceExport& kind, const HostCall& call,
                  const SlotChoice& choice) {
  const FittedFaces faces = findAndFit(std::move(photograph), kind.loading, call, choice);
  *call.resultCount = writeFaces(kind, call, faces);
  return faces.found();
}

int detectBoxes(const HostCall& call, const SlotChoice& choice) {
  Opened opened = openPhotograph(call);
  if (opened.photograph.empty()) {
    return opened.refusal;
  }
  cv::Mat picture = std::move(opened.photograph);
  reportSize(picture, call.width, call.height);
  const float scale = scaleToMaxSide(picture, call.maxSide);
  const Detectors detectors = loadDetectors(Loading::netOnly, choice.slot, choice.modelKind);
  const std::vector<cv::Rect> boxes = findFaces(detectors, picture);
  *call.resultCount = boxes.empty()
                          ? 0
                          : writeRecords(call.results, boxes.size(), fractionsOf(call, scale),
                                         [&](std::size_t k) { return boxRecord(boxes[k]); });
  return static_cast<int>(boxes.size());
}

int detectAndAnnotate(const FaceExport& kind, const HostCall& call, const SlotChoice& choice,
                      const AnnotationRequest& request) {
  Opened opened = openPhotograph(call, request.outputPath);
  if (opened.photograph.empty()) {
    return opened.refusal;
  }
  const Annotation annotation{opened.copyPath, request.show};
  FittedFaces faces = findAndFit(std::move(opened.photograph), kind.loading, call, choice);
  if (faces.landmarkSets) {
    draw(faces, annotation, kLightBlueLandmarks);
  }
  *call.resultCount = writeFaces(kind, call, faces);
  showAndKeep(faces, annotation);
  return faces.found();
}

int detectAndAnnotateNet(const FaceExport& kind, const HostCall& call, const SlotChoice& choice,
                         const AnnotationRequest& request) {
  Opened opened = openPhotograph(call, request.outputPath);
  if (opened.photograph.empty()) {
    return opened.refusal;
  }
  const Annotation annotation{opened.copyPath, request.show};
  FittedFaces faces = findAndFit(std::move(opened.photograph), kind.loading, call, choice);
  const int written = writeFaces(kind, call, faces);
  draw(faces, annotation, kRedLandmarks);
  showAndKeep(faces, annotation);
  *call.resultCount = written;
  return faces.found();
}

} // namespace qorocv
