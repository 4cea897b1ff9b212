// One photograph through the library: what qorfaces asks and what it gets back.
#pragma once

#include "face.h"
#include "group_photo.h"

#include <optional>
#include <string>
#include <vector>

namespace qorfaces {

enum class Detector {
  haar,  // the Haar cascade
  ssd,   // the SSD network, Caffe
  ssdTf, // the SSD network, TensorFlow
};

/// How photographs are to be analysed.
struct Settings {
  Detector detector = Detector::haar;
  int slot = 0;    // 1 to 9; 0: the shared cascade, and slot 1 for everything that it cannot do
  int maxSide = 0; // pixels; 0: the photograph's own size
  bool landmarks = false;
  bool headCentre = false;
  std::string annotatedCopy; // empty: none
  std::string mask;          // where to write the person cut out; empty: nowhere
  std::string cropMask;      // where to write the only face's person cut out; empty: nowhere
  std::optional<Grid> tiles; // for a group photograph; with the SSD network
};

/// Whether the detectors of a slot are at work, and not the shared cascade.
bool usesSlot(const Settings& settings);

struct Analysis {
  int width; // of the photograph, in pixels
  int height;
  int found;               // boxes, which may be more than there are faces to report
  std::vector<Face> faces; // at most 30, but for tiles
};

/// Places the models at a directory, with or without a separator at its end. Returns the names of
/// those missing among the ones that the settings need; empty when all are there.
std::vector<std::string> placeModels(std::string directory, const Settings& settings);

/// Loads the shared cascade where it is used, so that a bad model shows before any photograph.
/// Slots load theirs with their first photograph. Throws std::exception.
void loadModels(const Settings& settings);

/// Nothing where the photograph cannot be read. Throws std::exception for what the library throws
/// and where a picture that was asked for cannot be written.
std::optional<Analysis> analyse(const std::string& photo, const Settings& settings);

} // namespace qorfaces
