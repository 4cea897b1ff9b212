// What the benchmark measures: every detection export, and beside it the OpenCV calls that it
// cannot do without, on the same photograph. All tables are Markdown.
#pragma once

#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/bare_pipelines.h"
#include "support/process.h"
#include "support/shared_files.h"
#include "support/slot_exports.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qorocv::bench {

namespace made = qorocv::testing;
using made::BareDetectors;
using made::peakMiB;
using made::resetPeakMemory;
using made::residentMiB;

// Each prints its tables and gives false where a bound is broken.
bool compareCalls(int rounds);
bool compareEngines(int rounds);
bool compareSlots();
bool compareHeadMeasures();

/// Prints the seconds of a first call of findQORFacesDUNInTread01 or findQORFacesInTread01, or of
/// the bare loads and calls beside it. For a process that has done nothing else.
void printFirstCall(const std::string& exportName, bool bare);

/// The real models and a photograph to measure with; where it is missing, the one that is always there.
class Material {
public:
  explicit Material(const char* photo) {
    const auto path = made::realPhoto(made::haveRealPhoto(photo) ? photo : "astronaut.jpg");
    photo_ = path.string();
    name_ = path.filename().string();
    initModelsAtPath(made::realModels().c_str());
  }

  const std::string& photo() const { return photo_; }
  const std::string& name() const { return name_; }
  made::BareDetectors loadBare(int modelKind = 1) const {
    return made::loadBare(made::realModels(), modelKind);
  }
  std::string modelPath(const char* name) const { return made::realModels() + name; }

private:
  std::string photo_;
  std::string name_;
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
};

/// Exports that need the same OpenCV calls.
struct MeasuredGroup {
  std::function<void(BareDetectors& detectors, int maxSide)> bare;
  std::vector<MeasuredExport> exports;
};

inline MeasuredExport measuredExport(const made::SlotExport& slotExport, const std::string& photo) {
  return {slotExport.name, [photo, slotExport](HostMemory& memory, int maxSide) {
            made::CallOptions options;
            options.maxSide = maxSide;
            slotExport.call(photo.c_str(), memory.variables(), options);
          }};
}

inline MeasuredExport measuredExport(const char* name, made::SingleImageExport detection,
                                     const std::string& photo) {
  return {name, [photo, detection](HostMemory& memory, int maxSide) {
            const made::HostVariables host = memory.variables();
            detection(photo.c_str(), "", host.results, host.count, maxSide, false, host.width,
                      host.height);
          }};
}

/// Every detection export; the per-slot ones in slot 1, their networks in the Caffe form, and the
/// only tile of a grid of one.
inline std::vector<MeasuredGroup> measuredGroups(const std::string& photo) {
  const auto of = [&](const made::SlotExport& slotExport) {
    return measuredExport(slotExport, photo);
  };
  const auto masks = [photo](made::BareFinder finder, bool closeUp) {
    const auto pixels = std::make_shared<made::BarePixels>();
    return [=](BareDetectors& detectors, int maxSide) {
      made::bareMasks(detectors, photo, maxSide, finder, closeUp, *pixels);
    };
  };
  return {
      {[=](BareDetectors& detectors, int maxSide) { made::bareCascade(detectors, photo, maxSide); },
       {measuredExport("findQORFaces", findQORFaces, photo),
        measuredExport("processImage", processImage, photo), of(made::kInTread01),
        of(made::kInTreadDebug)}},
      {[=](BareDetectors& detectors, int maxSide) {
         made::bareHeadCentres(made::bareCascade(detectors, photo, maxSide));
       },
       {of(made::kHaarTr02)}},
      {[=](BareDetectors& detectors, int maxSide) {
         made::bareNetworkBoxes(detectors, photo, maxSide, 1);
       },
       {of(made::kDun02)}},
      {[=](BareDetectors& detectors, int maxSide) {
         made::bareNetwork(detectors, photo, maxSide, 1);
       },
       {of(made::kDun01), of(made::kDun01Debug)}},
      {[=](BareDetectors& detectors, int maxSide) {
         made::bareHeadCentres(made::bareNetwork(detectors, photo, maxSide, 1));
       },
       {of(made::kDunTr02), of(made::kDunTile)}},
      {masks(made::BareFinder::cascade, true), {of(made::kHaarMask02)}},
      {masks(made::BareFinder::network, false), {of(made::kDunMask01)}},
      {masks(made::BareFinder::network, true), {of(made::kDunMask02)}},
  };
}

template <typename Work> double secondsOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Cheap works are repeated for so many seconds: their times spread more.
constexpr double kLeastSeconds = 10;

/// Each work's times, of `rounds` at least. All take turns, each round beginning with another, so
/// that whatever else the machine does meets them all.
inline std::vector<std::vector<double>>
timesInTurns(const std::vector<std::function<void()>>& works, int rounds) {
  std::vector<std::vector<double>> seconds(works.size());
  for (const auto& work : works) {
    work(); // the first call loads
  }
  double all = 0;
  for (int round = 0; round < rounds || all < kLeastSeconds; ++round) {
    for (std::size_t i = 0; i < works.size(); ++i) {
      const std::size_t next = (i + static_cast<std::size_t>(round)) % works.size();
      seconds[next].push_back(secondsOf(works[next]));
      all += seconds[next].back();
    }
  }
  return seconds;
}

inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// The median of what each round gives. A machine changes its speed, by 5 % for seconds on end, and
/// both sides of a round meet the same; of the two sides' medians one may come from fast seconds
/// and one from slow ones.
inline double medianRatio(const std::vector<double>& ours, const std::vector<double>& theirs) {
  std::vector<double> ratios(ours.size());
  std::transform(ours.begin(), ours.end(), theirs.begin(), ratios.begin(), std::divides<>());
  return median(ratios);
}

} // namespace qorocv::bench
