#include "settings.h"

namespace qorfaces {

bool writesCutOut(const Settings& settings) {
  return !settings.mask.empty() || !settings.cropMask.empty();
}

bool wantsMask(const Settings& settings) {
  // Tiles have head centres of their own; for every other portrait the mask tells best where a head ends.
  const bool measuresByMask = settings.crop && !settings.tiles;
  return writesCutOut(settings) || measuresByMask;
}

bool usesSlot(const Settings& settings) {
  return settings.slot != 0 || settings.headCentre || settings.detector != Detector::haar ||
         wantsMask(settings);
}

int slotOf(const Settings& settings) {
  if (!usesSlot(settings)) {
    return qorocv::client::kSharedPair;
  }
  return settings.slot == 0 ? QOROCV460_FIRST_SLOT : settings.slot;
}

qorocv::client::Request requestOf(const Settings& settings) {
  using qorocv::client::HeadCentres;
  qorocv::client::Request request;
  request.detector = settings.detector;
  request.maxSide = settings.maxSide;
  request.headCentres = settings.headCentre ? HeadCentres::byColour : HeadCentres::none;
  request.landmarks = settings.landmarks;
  return request;
}

} // namespace qorfaces
