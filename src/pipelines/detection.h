// The road of every detection export: from a photograph's path to records in the host's array.
#pragma once

#include "frame/call_frame.h"
#include "pipelines/recipes.h"
#include "segmentation/pphs.h"

#include <functional>
#include <vector>

namespace qorocv {

/// Which slot a host names, and which kind of network it wants there. The shared pair has neither.
struct SlotChoice {
  int slot = 0;
  int modelKind = 0;
};

/// What a host wants to see of a call besides its numbers.
struct AnnotationRequest {
  const char* outputPath =
      nullptr;       // UTF-8; a copy is written there if its local form has two bytes or more
  bool show = false; // in a window, until a key is pressed
};

/// What is known of a photograph once its faces are found.
struct FoundFaces {
  const cv::Mat& picture; // scaled
  const std::vector<cv::Rect>& boxes;
  const Fractions& fractions;
  PPHS* segmenter; // null where the recipe takes none
};

/// Where an export does something of its own on the road. A stop that is not set is passed by.
struct Stops {
  /// The photograph is read. Gives the part of it to go on with: its size is what the call reports,
  /// and what coordinates are fractions of.
  std::function<cv::Mat(const cv::Mat& photograph)> choosePart;

  /// The size is reported, and nothing scaled yet.
  std::function<void(const cv::Mat& photograph)> beforeScaling;

  /// The detector has run, the fitter not yet.
  std::function<void(const FoundFaces& found)> beforeFitting;

  /// What follows the box in each record in place of the recipe's points, in the same layout.
  RecordPoints points;
};

/// Reads and scales the photograph, finds faces, fits landmarks, annotates and writes records, as
/// the recipe says, and makes the stops. Returns the number of boxes found, however many records they gave;
/// kRejectedCall, with nothing touched, for an incomplete call; kUnreadablePhotograph, with no
/// output written, where there is no picture to read. Errors of OpenCV are thrown.
int detectFaces(const Recipe& recipe, const HostCall& call, const SlotChoice& choice = {},
                const AnnotationRequest& request = {}, const Stops& stops = {});

} // namespace qorocv
