// soak CALLS: nine threads on nine slots make so many calls each, of every export, each thread in an
// order of its own. Every call gives what it gave in a slot with the same kind of network when nobody
// else called, which is what OpenCV's own calls come to where a function writes no more than those find;
// in the second half of the calls the process grows neither in memory nor in descriptors.
#include "support/bare_pipelines.h"
#include "support/process.h"
#include "support/shared_files.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <opencv2/core/utility.hpp>
#include <opencv2/core/utils/logger.hpp>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace qorocv::testing {
namespace {

constexpr int kSlots = QOROCV460_LAST_SLOT;
constexpr double kMostGrowth = 0.01; // of the resident memory after the warm-up

struct Step {
  SlotExport slotExport;
  std::filesystem::path photo;
  int maxSide;
};

int modelKindOf(int slot) {
  return slot % 2; // Caffe in odd slots
}
constexpr std::array<int, 2> kOneOfEachKind{1, 2};

/// A number that differs where any of the outputs does: FNV-1a, 64 bits, over all of them. Keeping
/// the outputs themselves would hide a leak among them.
class Digest {
public:
  template <typename Number> void add(const Number* numbers, std::size_t count) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(numbers);
    for (std::size_t i = 0; i < count * sizeof(Number); ++i) {
      value_ = (value_ ^ bytes[i]) * 0x100000001B3U;
    }
  }
  std::uint64_t value() const { return value_; }

private:
  std::uint64_t value_ = 0xCBF29CE484222325U;
};

/// The variables of one host thread, the same for all its calls.
class HostThread {
public:
  HostThread() : results_(QOROCV460_HEAD_CENTRE_RESULTS), pixels_(QOROCV460_VIEW_BYTES) {}

  std::uint64_t digestOf(const Step& step, int slot, const std::string& copy) {
    std::fill(results_.begin(), results_.end(), kUntouchedValue);
    std::fill(pixels_.begin(), pixels_.end(), kUntouchedByte);
    std::fill(mask_.begin(), mask_.end(), kUntouchedByte);
    std::fill(cropMask_.begin(), cropMask_.end(), kUntouchedByte);
    std::fill(cropBox_.begin(), cropBox_.end(), kUntouchedValue);
    Sizes sizes;
    CallOptions options;
    options.slot = slot;
    options.maxSide = step.maxSide;
    options.modelKind = modelKindOf(slot);
    options.outputPath = copy;
    const int returned =
        step.slotExport.call(step.photo.c_str(),
                             {results_.data(), &sizes.count, &sizes.width, &sizes.height,
                              pixels_.data(), mask_.data(), cropMask_.data(), cropBox_.data(),
                              &sizes.tileLeft, &sizes.tileTop, &sizes.tileWidth, &sizes.tileHeight},
                             options);
    Digest digest;
    digest.add(&returned, 1);
    digest.add(&sizes, 1);
    digest.add(results_.data(), results_.size());
    digest.add(pixels_.data(), pixels_.size());
    digest.add(mask_.data(), mask_.size());
    digest.add(cropMask_.data(), cropMask_.size());
    digest.add(cropBox_.data(), cropBox_.size());
    return digest.value();
  }

  /// Whether the last call has written these, and nothing behind them.
  bool hasWritten(const std::vector<double>& records) const {
    const auto behind = results_.begin() + static_cast<std::ptrdiff_t>(records.size());
    return std::equal(records.begin(), records.end(), results_.begin()) &&
           *behind == kUntouchedValue;
  }

private:
  struct Sizes {
    int count = 1;
    int width = 0;
    int height = 0;
    int tileLeft = 0;
    int tileTop = 0;
    int tileWidth = 0;
    int tileHeight = 0;
  };

  std::vector<double> results_;
  std::vector<unsigned char> pixels_;
  std::array<unsigned char, QOROCV460_MASK_BYTES> mask_{};
  std::array<unsigned char, QOROCV460_MASK_BYTES> cropMask_{};
  std::array<double, QOROCV460_CROP_BOX> cropBox_{};
};

/// What OpenCV's own calls come to, for the steps that write just that; nothing for the others.
std::vector<std::optional<std::vector<double>>> openCvRecords(const std::vector<Step>& steps,
                                                              int modelKind) {
  const std::vector<std::size_t> landmarks{QOROCV460_NOSE_BRIDGE, QOROCV460_CHIN};
  BareDetectors detectors = loadBare(realModels(), modelKind);
  std::vector<std::optional<std::vector<double>>> records;
  for (const Step& step : steps) {
    const bool isComparable = step.slotExport.fits &&
                              step.slotExport.recordSize == QOROCV460_FACE_RECORD &&
                              std::filesystem::exists(step.photo);
    if (!isComparable) {
      records.emplace_back();
    } else if (step.slotExport.detector == DetectorKind::cascade) {
      records.emplace_back(
          bareRecords(bareCascade(detectors, step.photo.string(), step.maxSide), landmarks));
    } else {
      records.emplace_back(bareRecords(
          bareNetwork(detectors, step.photo.string(), step.maxSide, modelKind), landmarks));
    }
  }
  return records;
}

std::vector<Step> programme(const std::vector<std::filesystem::path>& photos) {
  std::vector<Step> steps;
  for (const auto& photo : photos) {
    for (const SlotExport& slotExport : kSlotExports) {
      const int maxSide = steps.size() % 2 == 0 ? 160 : 320;
      steps.push_back({slotExport, photo, maxSide});
    }
  }
  return steps;
}

int run(int callsPerSlot) {
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  cv::setNumThreads(1); // nine are enough, and the cascade's order of faces stays
  const TemporaryDirectory directory;
  std::vector<std::filesystem::path> photos{directory / "no such photograph.jpg"};
  for (const char* const name :
       photosAtHand({"astronaut.jpg", "couple.jpg", "painting.jpg", "player.jpg"})) {
    photos.push_back(realPhoto(name));
  }
  if (initModelsAtPath(realModels().c_str()) != 0) {
    std::fprintf(stderr, "no models in %s\n", realModels().c_str());
    return 1;
  }
  std::cout.setstate(std::ios::failbit); // every unreadable photograph would be reported there

  const std::vector<Step> steps = programme(photos);
  const auto copyOf = [&](int slot) {
    return (directory / ("copy" + std::to_string(slot) + ".png")).string();
  };
  std::vector<HostThread> hosts(kSlots);
  std::map<int, std::vector<std::uint64_t>> alone; // by the kind of network
  int compared = 0;
  std::atomic<long> different{0};
  for (const int slot : kOneOfEachKind) {
    HostThread& host = hosts[static_cast<std::size_t>(slot - 1)];
    const auto openCvs = openCvRecords(steps, modelKindOf(slot));
    for (std::size_t i = 0; i < steps.size(); ++i) {
      alone[modelKindOf(slot)].push_back(host.digestOf(steps[i], slot, copyOf(slot)));
      if (openCvs[i]) {
        ++compared;
        different += host.hasWritten(*openCvs[i]) ? 0 : 1;
      }
    }
  }

  std::vector<std::mt19937> orders;
  for (unsigned slot = 1; slot <= kSlots; ++slot) {
    orders.emplace_back(slot);
  }
  // All slots at once; none is left calling when this returns.
  const auto callEverySlot = [&](int times) {
    std::vector<std::thread> threads;
    for (int slot = 1; slot <= kSlots; ++slot) {
      threads.emplace_back([&, slot, times] {
        const auto index = static_cast<std::size_t>(slot - 1);
        for (int call = 0; call < times; ++call) {
          const std::size_t step = orders[index]() % steps.size();
          const bool same = hosts[index].digestOf(steps[step], slot, copyOf(slot)) ==
                            alone.at(modelKindOf(slot))[step];
          different += same ? 0 : 1;
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  };
  const int warmUp = callsPerSlot / 2;
  callEverySlot(warmUp);
  const double memory = residentMiB();
  const auto descriptors = openDescriptors();
  callEverySlot(callsPerSlot - warmUp);
  const double growth = (residentMiB() - memory) / memory;
  const auto left = openDescriptors();
  std::printf("%d calls alone compared with OpenCV's own, %d on each of %d slots with those alone; "
              "%ld different\n",
              compared, callsPerSlot, kSlots, different.load());
  std::printf("resident memory %.1f MiB after the warm-up, %+.2f %% at the end\n", memory,
              100 * growth);
  std::printf("descriptors %td after the warm-up, %td at the end\n", descriptors, left);
  return compared > 0 && different == 0 && growth < kMostGrowth && left <= descriptors ? 0 : 1;
}

} // namespace
} // namespace qorocv::testing

int main(int argc, char** argv) {
  const int callsPerSlot = argc == 2 ? std::atoi(argv[1]) : 0;
  if (callsPerSlot < 2) {
    std::fprintf(stderr, "usage: soak CALLS (of each slot, at least 2)\n");
    return 2;
  }
  return qorocv::testing::run(callsPerSlot);
}
