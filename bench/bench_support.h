// What the benchmarks measure: every detection export, and beside it the OpenCV calls that it
// cannot do without, on the same photograph.
#pragma once

#include "support/bare_pipelines.h"
#include "support/made_models.h"
#include "support/made_pictures.h"
#include "support/process.h"
#include "support/shared_files.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qorocv::bench {

namespace made = qorocv::testing;
using made::residentMiB;

/// Models and a photograph to measure with: the real ones beside the checkout, else made ones.
class Material {
public:
  explicit Material(const char* photo) {
    if (made::haveRealFiles()) {
      made::linkRealModels(directory_.path());
      photo_ = made::realPhoto(photo).string();
      label_ = std::string("real models, ") + photo;
    } else {
      made::writeMadeModels(directory_.path());
      photo_ = made::writePicture(directory_ / "face.png", made::pictureWithFace()).string();
      label_ = "MADE models and picture: there are no real ones beside the checkout";
    }
    initModelsAtPath(directory_.asPrefix().c_str());
  }

  const std::string& photo() const { return photo_; }
  const std::string& label() const { return label_; }
  made::BareDetectors loadBare(int modelKind = 1) const {
    return made::loadBare(directory_.path(), modelKind);
  }
  std::string modelPath(const char* name) const { return (directory_ / name).string(); }

private:
  made::TemporaryDirectory directory_;
  std::string photo_;
  std::string label_;
};

/// The host's variables of one call, kept from call to call as a host would keep them.
struct HostMemory {
  HostMemory() { outcome.results.resize(QOROCV460_LANDMARK_RESULTS); }

  made::HostVariables variables() {
    outcome.count = 1;
    return made::variablesOf(outcome);
  }

  made::Outcome outcome;
};

struct MeasuredExport {
  std::string name;
  std::function<void(HostMemory& memory, int maxSide)> call;
  std::function<void(made::BareDetectors& detectors, int maxSide)> bare;
};

/// Every detection export; the per-slot ones in slot 1, their networks in the Caffe form.
inline std::vector<MeasuredExport> measuredExports(const std::string& photo) {
  const auto bareCascade = [photo](made::BareDetectors& detectors, int maxSide) {
    made::bareCascade(detectors, photo, maxSide);
  };
  const auto single = [photo](made::SingleImageExport detection) {
    return [photo, detection](HostMemory& memory, int maxSide) {
      const made::HostVariables host = memory.variables();
      detection(photo.c_str(), "", host.results, host.count, maxSide, false, host.width,
                host.height);
    };
  };
  std::vector<MeasuredExport> all{{"findQORFaces", single(findQORFaces), bareCascade},
                                  {"processImage", single(processImage), bareCascade}};
  for (const made::SlotExport& slotExport : made::kSlotExports) {
    const auto call = [photo, slotExport](HostMemory& memory, int maxSide) {
      made::SlotOptions options;
      options.maxSide = maxSide;
      slotExport.call(photo.c_str(), memory.variables(), options);
    };
    const bool cascade = slotExport.detector == made::DetectorKind::cascade;
    if (made::makesMask(slotExport)) {
      const bool closeUp = slotExport.name != made::kDunMask01.name;
      const auto pixels = std::make_shared<made::BarePixels>();
      all.push_back({slotExport.name, call, [=](made::BareDetectors& detectors, int maxSide) {
                       made::bareMasks(detectors, photo, maxSide,
                                       cascade ? made::BareFinder::cascade
                                               : made::BareFinder::network,
                                       closeUp, *pixels);
                     }});
      continue;
    }
    const bool headCentres = slotExport.recordSize == QOROCV460_HEAD_CENTRE_RECORD;
    all.push_back({slotExport.name, call, [=](made::BareDetectors& detectors, int maxSide) {
                     const made::BareFaces faces =
                         cascade           ? made::bareCascade(detectors, photo, maxSide)
                         : slotExport.fits ? made::bareNetwork(detectors, photo, maxSide, 1)
                                           : made::bareNetworkBoxes(detectors, photo, maxSide, 1);
                     if (headCentres) {
                       made::bareHeadCentres(faces);
                     }
                   }});
  }
  return all;
}

inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

} // namespace qorocv::bench
