#include "settings.h"

#include <qorocv460/qorocv460.h>

namespace qorfaces {

bool wantsMask(const Settings& settings) {
  return !settings.mask.empty() || !settings.cropMask.empty();
}

bool usesSlot(const Settings& settings) {
  return settings.slot != 0 || settings.headCentre || settings.detector != Detector::haar ||
         wantsMask(settings);
}

int modelKind(const Settings& settings) {
  return settings.detector == Detector::ssd ? QOROCV460_CAFFE : QOROCV460_TENSORFLOW;
}

} // namespace qorfaces
