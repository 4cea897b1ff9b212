#include "bench.h"

#include <opencv2/core/utility.hpp>

#include <cstdio>

namespace qorocv::bench {

namespace {

constexpr double kMostRatio = 1.02;

/// Of exports that detect with the cascade, in pictures of 1000 pixels and more.
constexpr double kMostCascadeRatio = 0.15;
constexpr int kLargePicture = 1000;
constexpr const char* kCascadeExports[] = {"findQORFaces",
                                           "processImage",
                                           "findQORFacesInTread01",
                                           "findQORFacesInTreadDebug",
                                           "findQORFacesHAARInTread_TR02",
                                           "findQORFacesHAARInTreadWithMask02"};

double mostRatio(const std::string& exportName, int longerSide) {
  const bool byCascade = std::find(std::begin(kCascadeExports), std::end(kCascadeExports),
                                   exportName) != std::end(kCascadeExports);
  return byCascade && longerSide >= kLargePicture ? kMostCascadeRatio : kMostRatio;
}
constexpr const char* kPhotos[] = {"painting.jpg", "quartet.jpg", "crowd.jpg"};

} // namespace

bool compareCalls(int rounds) {
  std::printf("## Calls\n\nMedians of at least %d calls after a first one, the bare calls in turns "
              "with the exports that need them. A ratio is the median of those of all rounds. The "
              "detectors of both sides have seen the same photographs before.\n\n"
              "| photograph | maxSide | export | export ms | bare ms | ratio |\n"
              "|---|--:|---|--:|--:|--:|\n",
              rounds);
  bool good = true;
  resetPeakMemory();
  // Loaded once, as the slot is: a cascade keeps the widest row that it has needed so far, and how
  // well later photographs suit the processor's caches hangs on that, by up to 4 %.
  BareDetectors detectors = Material(kPhotos[0]).loadBare();
  HostMemory memory;
  for (const char* const photo : kPhotos) {
    const Material material(photo);
    for (const int maxSide : {480, 1000, 0}) {
      for (const MeasuredGroup& group : measuredGroups(material.photo())) {
        std::vector<std::function<void()>> works;
        for (const MeasuredExport& measured : group.exports) {
          works.emplace_back([&] { measured.call(memory, maxSide); });
        }
        works.emplace_back([&] { group.bare(detectors, maxSide); });
        const std::vector<std::vector<double>> times = timesInTurns(works, rounds);
        const std::vector<double>& bare = times.back();
        for (std::size_t i = 0; i < group.exports.size(); ++i) {
          const double ratio = medianRatio(times[i], bare);
          const int longerSide =
              maxSide > 0 ? maxSide : std::max(memory.outcome.width, memory.outcome.height);
          good = good && ratio <= mostRatio(group.exports[i].name, longerSide);
          std::printf("| %s | %d | `%s` | %.2f | %.2f | %.3f |\n", material.name().c_str(), maxSide,
                      group.exports[i].name.c_str(), median(times[i]) * 1e3, median(bare) * 1e3,
                      ratio);
          std::fflush(stdout);
        }
      }
    }
  }
  std::printf(
      "\nThe most memory that the process held meanwhile, both sides' models included: %.0f MiB.\n",
      peakMiB());
  std::printf(
      "\n%s\n\n",
      good ? "Every ratio is at most 1.02, and at most 0.15 for detection with the cascade in "
             "pictures of 1000 pixels and more."
           : "**A ratio is above 1.02, or above 0.15 for detection with the cascade in "
             "pictures of 1000 pixels and more.**");
  return good;
}

} // namespace qorocv::bench
