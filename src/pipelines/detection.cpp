#include "pipelines/detection.h"

#include "drawing/annotated_picture.h"
#include "pipelines/detector_loading.h"
#include "pipelines/landmark_fitting.h"
#include "platform/platform.h"

#include <opencv2/imgcodecs.hpp>

namespace qorocv {

namespace {

// Nothing where no face was found or the fit failed: then there are no records.
using LandmarkSets = std::optional<std::vector<LandmarkSet>>;

LandmarkSets landmarksOf(const Detectors& detectors, const cv::Mat& picture,
                         const std::vector<cv::Rect>& boxes) {
  if (!detectors.landmarker.empty()) {
    return fitLandmarks(detectors.landmarker, picture, boxes);
  }
  if (boxes.empty()) {
    return std::nullopt;
  }
  return std::vector<LandmarkSet>(boxes.size()); // faces without landmarks still have their records
}

bool isDrawn(Drawing drawing, bool fitted) {
  return drawing == Drawing::ifFound || (drawing == Drawing::ifFitted && fitted);
}

} // namespace

int detectFaces(const Recipe& recipe, const HostCall& call, const SlotChoice& choice,
                const AnnotationRequest& request, const Stops& stops) {
  if (!isComplete(call)) {
    return kRejectedCall;
  }
  adoptUserLocale();
  const std::string imagePath = utf8ToLocalePath(call.imagePath);
  const std::string outputPath = utf8ToLocalePath(request.outputPath);
  cv::Mat picture = readPhotograph(imagePath);
  if (picture.empty()) {
    return kUnreadablePhotograph;
  }
  if (stops.choosePart) {
    picture = stops.choosePart(picture);
  }
  reportSize(picture, call.width, call.height);
  if (stops.beforeScaling) {
    stops.beforeScaling(picture);
  }
  const float scale = scaleToMaxSide(picture, call.maxSide);

  const Detectors detectors = loadDetectors(recipe.loading, choice.slot, choice.modelKind);
  const std::vector<cv::Rect> boxes = detectors.findFaces(picture);
  // The size comes back from the host's variables: what it holds there is what it will divide by.
  const Fractions fractions{scale, static_cast<float>(*call.width),
                            static_cast<float>(*call.height)};
  if (stops.beforeFitting) {
    stops.beforeFitting({picture, boxes, fractions, detectors.segmenter.get()});
  }
  const LandmarkSets landmarkSets = landmarksOf(detectors, picture, boxes);

  const auto writeResults = [&] {
    if (!landmarkSets) {
      return 0;
    }
    return writeRecords(call.results, picture, boxes, *landmarkSets,
                        stops.points ? stops.points : recipe.points, fractions);
  };
  // Hosts pass a blank for "no copy", so a single character is no path.
  const bool keepsCopy = outputPath.size() > 1;
  const auto draw = [&] {
    if ((request.show || keepsCopy) && isDrawn(recipe.drawing, landmarkSets.has_value())) {
      drawFaces(picture, boxes, landmarkSets.value_or(std::vector<LandmarkSet>()),
                static_cast<int>(recipe.outline));
    }
  };
  const auto showAndKeep = [&] {
    if (request.show) {
      showAndWait(picture);
    }
    if (keepsCopy) {
      cv::imwrite(outputPath, picture);
    }
  };

  switch (recipe.order) {
  case Order::drawRecordCountShow:
    draw();
    *call.resultCount = writeResults();
    showAndKeep();
    break;
  case Order::recordDrawShowCount:
    const int written = writeResults();
    draw();
    showAndKeep();
    *call.resultCount = written;
    break;
  }
  return static_cast<int>(boxes.size());
}

} // namespace qorocv
