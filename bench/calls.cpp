#include "bench.h"

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <cstdio>

namespace qorocv::bench {

namespace {

constexpr double kMostRatio = 1.02;

/// Slots, and as many sets of bare detectors. Where in memory its detectors happen to lie makes a
/// slot, or a set, some per cent faster or slower for as long as it lives, so each gets only its
/// share of the rounds.
constexpr int kSlots = 3;

int slotOfRound(int round) {
  return 1 + round % kSlots;
}

/// Medians of the exports' times and, at the end, of their bare calls'. All take turns, each round
/// beginning with another, so that whatever else the machine does meets them all.
std::vector<double> mediansInTurns(const std::vector<std::function<void(int slot)>>& works,
                                   int rounds) {
  std::vector<std::vector<double>> seconds(works.size());
  for (const auto& work : works) {
    work(1);
  }
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < works.size(); ++i) {
      const std::size_t next = (i + static_cast<std::size_t>(round)) % works.size();
      seconds[next].push_back(secondsOf([&] { works[next](slotOfRound(round)); }));
    }
  }
  std::vector<double> medians;
  medians.reserve(works.size());
  for (const std::vector<double>& one : seconds) {
    medians.push_back(median(one));
  }
  return medians;
}

} // namespace

bool compareCalls(int rounds) {
  std::printf("## Calls\n\nMedians of %d calls after a first one, the bare calls in turns with the "
              "exports that need them, in %d slots and with as many bare detectors.\n\n"
              "| photograph | maxSide | export | export ms | bare ms | ratio |\n"
              "|---|--:|---|--:|--:|--:|\n",
              rounds, kSlots);
  bool good = true;
  resetPeakMemory();
  for (const char* const photo : {"painting.jpg", "quartet.jpg", "crowd.jpg"}) {
    const Material material(photo);
    std::vector<BareDetectors> detectors(kSlots);
    std::generate(detectors.begin(), detectors.end(), [&] { return material.loadBare(); });
    const std::vector<MeasuredGroup> groups = measuredGroups(material.photo());
    HostMemory memory;
    for (int slot = 1; slot <= kSlots; ++slot) {
      for (const MeasuredGroup& group : groups) {
        group.exports.front().call(memory, 480, slot); // loads
      }
    }
    for (const int maxSide : {480, 1000, 0}) {
      for (const MeasuredGroup& group : groups) {
        std::vector<std::function<void(int)>> works;
        for (const MeasuredExport& measured : group.exports) {
          works.emplace_back([&](int slot) { measured.call(memory, maxSide, slot); });
        }
        works.emplace_back(
            [&](int slot) { group.bare(detectors[static_cast<std::size_t>(slot - 1)], maxSide); });
        const std::vector<double> medians = mediansInTurns(works, rounds);
        for (std::size_t i = 0; i < group.exports.size(); ++i) {
          const double ratio = medians[i] / medians.back();
          good = good && ratio <= kMostRatio;
          std::printf("| %s | %d | `%s` | %.2f | %.2f | %.3f |\n", material.name().c_str(), maxSide,
                      group.exports[i].name.c_str(), medians[i] * 1e3, medians.back() * 1e3, ratio);
          std::fflush(stdout);
        }
      }
    }
  }
  std::printf(
      "\nThe most memory that the process held meanwhile, both sides' models included: %.0f MiB.\n",
      peakMiB());
  std::printf("\n%s\n\n", good ? "Every ratio is at most 1.02." : "**A ratio is above 1.02.**");
  return good;
}

} // namespace qorocv::bench
