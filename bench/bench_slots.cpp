// What slots cost and bring: the first call on a fresh one against the bare loads, k slots on k
// threads against k processes with the bare calls, and the memory that each takes.
#include "bench_support.h"

#include <opencv2/core/utility.hpp>

#include <chrono>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace qorocv::bench;
using qorocv::testing::BareDetectors;
using qorocv::testing::SlotExport;
using qorocv::testing::SlotOptions;
using Clock = std::chrono::steady_clock;

constexpr double kMostFirstCall = 1.02;
constexpr double kLeastThroughput = 0.95;
constexpr int kMaxSide = 480;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void callInSlot(const SlotExport& slotExport, const std::string& photo, int slot) {
  HostMemory memory;
  SlotOptions options;
  options.slot = slot;
  options.maxSide = kMaxSide;
  slotExport.call(photo.c_str(), memory.variables(), options);
}

struct FirstCalls {
  std::string name;
  double exportSeconds;
  double bareSeconds;
  double slotMiB;
};

/// The median first call over fresh slots, in turns with loading and doing the same barely.
FirstCalls firstCalls(const SlotExport& slotExport, const Material& material, int firstSlot,
                      int lastSlot) {
  const bool cascade = slotExport.detector == qorocv::testing::DetectorKind::cascade;
  std::vector<double> ours;
  std::vector<double> theirs;
  std::vector<double> memory;
  for (int slot = firstSlot; slot <= lastSlot; ++slot) {
    {
      const auto start = Clock::now();
      if (cascade) {
        BareDetectors detectors = qorocv::testing::loadBareCascade(
            material.modelPath("model05.yaml"), material.modelPath("model06.xml"));
        qorocv::testing::bareCascade(detectors, material.photo(), kMaxSide);
      } else {
        BareDetectors detectors = qorocv::testing::loadBareNetwork(
            material.modelPath("model05.yaml"), material.modelPath("model01.prototxt"),
            material.modelPath("model02.caffemodel"));
        qorocv::testing::bareNetwork(detectors, material.photo(), kMaxSide, 1);
      }
      theirs.push_back(secondsSince(start));
    }
    const double before = residentMiB();
    const auto start = Clock::now();
    callInSlot(slotExport, material.photo(), slot);
    ours.push_back(secondsSince(start));
    memory.push_back(residentMiB() - before);
  }
  return {slotExport.name, median(ours), median(theirs), median(memory)};
}

/// Runs `work(k)` on each of k threads and returns the seconds until all are done.
template <typename Work> double onThreads(int k, const Work& work) {
  const auto start = Clock::now();
  std::vector<std::thread> threads;
  for (int i = 1; i <= k; ++i) {
    threads.emplace_back([&, i] { work(i); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return secondsSince(start);
}

/// Runs `work` in each of k processes and returns the seconds until all are done. What the parent
/// has loaded, every process has as its own copy.
template <typename Work> double inProcesses(int k, const Work& work) {
  const auto start = Clock::now();
  for (int i = 1; i <= k; ++i) {
    if (fork() == 0) {
      work();
      _exit(0);
    }
  }
  for (int i = 1; i <= k; ++i) {
    wait(nullptr);
  }
  return secondsSince(start);
}

/// Calls per second of k slots over those of k processes; the best of several rounds in turns each.
double throughputRatio(int k, const SlotExport& slotExport, const Material& material,
                       BareDetectors& detectors) {
  constexpr int rounds = 7;
  constexpr int calls = 25;
  double ours = 1e9;
  double theirs = 1e9;
  const bool cascade = slotExport.detector == qorocv::testing::DetectorKind::cascade;
  for (int round = 0; round < rounds; ++round) {
    ours = std::min(ours, onThreads(k, [&](int slot) {
                      for (int i = 0; i < calls; ++i) {
                        callInSlot(slotExport, material.photo(), slot);
                      }
                    }));
    theirs = std::min(theirs, inProcesses(k, [&] {
                        for (int i = 0; i < calls; ++i) {
                          if (cascade) {
                            qorocv::testing::bareCascade(detectors, material.photo(), kMaxSide);
                          } else {
                            qorocv::testing::bareNetwork(detectors, material.photo(), kMaxSide, 1);
                          }
                        }
                      }));
  }
  return theirs / ours;
}

} // namespace

int main() {
  cv::setNumThreads(1);
  const Material material("couple.jpg");
  BareDetectors detectors = material.loadBare();
  bool good = true;

  // Each family loads fresh slots of its own.
  const std::vector<FirstCalls> first{firstCalls(qorocv::testing::kDun01, material, 1, 5),
                                      firstCalls(qorocv::testing::kInTread01, material, 6, 9)};
  std::printf("\n%s\n\n%-28s %12s %12s %8s %14s\n", material.label().c_str(),
              "first call on a fresh slot", "export ms", "bare ms", "ratio", "MiB per slot");
  for (const FirstCalls& row : first) {
    const double ratio = row.exportSeconds / row.bareSeconds;
    good = good && ratio <= kMostFirstCall;
    std::printf("%-28s %12.1f %12.1f %8.3f %14.1f\n", row.name.c_str(), row.exportSeconds * 1e3,
                row.bareSeconds * 1e3, ratio, row.slotMiB);
  }

  std::printf("\n%-28s %12s %12s\n", "throughput over processes", "k", "ratio");
  for (const SlotExport& slotExport : {qorocv::testing::kDun01, qorocv::testing::kInTread01}) {
    for (const int k : {1, 2}) {
      const double ratio = throughputRatio(k, slotExport, material, detectors);
      good = good && ratio >= kLeastThroughput;
      std::printf("%-28s %12d %12.3f\n", slotExport.name, k, ratio);
    }
  }
  std::printf("\n%s\n",
              good ? "first calls at most 1.02, throughput at least 0.95" : "A BOUND IS BROKEN");
  return good ? 0 : 1;
}
