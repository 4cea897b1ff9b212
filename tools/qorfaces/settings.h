// How photographs are to be analysed.
#pragma once

#include "grid.h"
#include "portrait_crop.h"

#include <optional>
#include <qorocv460/client.h>
#include <string>

namespace qorfaces {

using qorocv::client::Detector;

struct Settings {
  Detector detector = Detector::ssd;
  int slot = 0;    // 1 to 9; 0: the shared cascade, and slot 1 for everything that it cannot do
  int maxSide = 0; // pixels; 0: the photograph's own size
  bool landmarks = false;
  bool headCentre = false;
  std::string annotatedCopy; // empty: none
  std::string mask;          // where to write the person cut out; empty: nowhere
  std::string cropMask;      // where to write the only face's person cut out; empty: nowhere
  std::optional<Grid> tiles; // for a group photograph; with the SSD network
  std::optional<PortraitShape> crop;   // of the portraits; nothing: none
  std::string portraits = "portraits"; // where to write them
};

/// Whether the person is to be cut out.
bool writesCutOut(const Settings& settings);

/// Whether person masks are looked for.
bool wantsMask(const Settings& settings);

/// Whether the detectors of a slot are at work, and not the shared cascade.
bool usesSlot(const Settings& settings);

/// The slot that works, or the shared pair.
int slotOf(const Settings& settings);

/// What the library is asked, but for masks and copies.
qorocv::client::Request requestOf(const Settings& settings);

} // namespace qorfaces
