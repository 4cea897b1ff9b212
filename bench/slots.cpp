#include "bench.h"

#include <array>
#include <cstdio>
#include <malloc.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace qorocv::bench {

namespace {

using made::DetectorKind;
using made::SlotExport;

constexpr double kMostFirstCall = 1.02;
constexpr double kLeastThroughput = 0.95;
constexpr int kMaxSide = 480;

void callInSlot(const SlotExport& slotExport, const std::string& photo, HostMemory& memory,
                int slot) {
  made::SlotOptions options;
  options.slot = slot;
  options.maxSide = kMaxSide;
  slotExport.call(photo.c_str(), memory.variables(), options);
}

void callBarely(const SlotExport& slotExport, const std::string& photo, BareDetectors& detectors) {
  if (slotExport.detector == DetectorKind::cascade) {
    made::bareCascade(detectors, photo, kMaxSide);
  } else {
    made::bareNetwork(detectors, photo, kMaxSide, 1);
  }
}

BareDetectors loadBarely(const SlotExport& slotExport, const Material& material) {
  const std::string landmarks = material.modelPath("model05.yaml");
  return slotExport.detector == DetectorKind::cascade
             ? made::loadBareCascade(landmarks, material.modelPath("model06.xml"))
             : made::loadBareNetwork(landmarks, material.modelPath("model01.prototxt"),
                                     material.modelPath("model02.caffemodel"));
}

/// Resident memory once the heap has given back what is free, which any call may have left.
double trimmedMiB() {
  malloc_trim(0);
  return residentMiB();
}

struct FirstCall {
  double seconds = 0;
  double slotMiB = 0;
  double callMiB = 0;
};

/// What `measure` gives in a process of its own, whose heap and slots nobody has used before.
template <typename Measure> FirstCall inFreshProcess(const Measure& measure) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    throw std::runtime_error("no pipe to a process that measures");
  }
  const pid_t process = fork();
  if (process == 0) {
    const FirstCall measured = measure();
    _exit(write(ends[1], &measured, sizeof measured) == sizeof measured ? 0 : 1);
  }
  close(ends[1]);
  FirstCall measured;
  const bool told = read(ends[0], &measured, sizeof measured) == sizeof measured;
  close(ends[0]);
  waitpid(process, nullptr, 0);
  if (!told) {
    throw std::runtime_error("a process that measures ended early");
  }
  return measured;
}

/// The first call of one slot, and the memory of another: the first one's contains the pages of
/// the libraries, which all slots share.
FirstCall measureFirstCall(const SlotExport& slotExport, const Material& material) {
  HostMemory memory;
  const auto call = [&](int slot) { callInSlot(slotExport, material.photo(), memory, slot); };
  FirstCall measured;
  measured.seconds = secondsOf([&] { call(1); });
  const double before = trimmedMiB();
  call(2);
  const double between = trimmedMiB();
  measured.slotMiB = between - before;
  resetPeakMemory();
  call(2);
  measured.callMiB = peakMiB() - between;
  return measured;
}

/// The median first call, in turns with loading and doing the same barely. Gives the ratio.
double compareFirstCalls(const SlotExport& slotExport, const Material& material, int rounds) {
  std::vector<double> ours;
  std::vector<double> theirs;
  std::vector<double> slotMiB;
  std::vector<double> callMiB;
  for (int round = 0; round < rounds; ++round) {
    const FirstCall measured =
        inFreshProcess([&] { return measureFirstCall(slotExport, material); });
    ours.push_back(measured.seconds);
    slotMiB.push_back(measured.slotMiB);
    callMiB.push_back(measured.callMiB);
    const FirstCall bare = inFreshProcess([&] {
      FirstCall timed;
      timed.seconds = secondsOf([&] {
        BareDetectors detectors = loadBarely(slotExport, material);
        callBarely(slotExport, material.photo(), detectors);
      });
      return timed;
    });
    theirs.push_back(bare.seconds);
  }
  const double ratio = medianRatio(ours, theirs);
  std::printf("| `%s` | %.1f | %.1f | %.3f | %.1f | %.1f |\n", slotExport.name, median(ours) * 1e3,
              median(theirs) * 1e3, ratio, median(slotMiB), median(callMiB));
  std::fflush(stdout);
  return ratio;
}

/// Seconds until `work` is done in each of k threads, which are told their numbers from 1.
template <typename Work> double onThreads(int k, const Work& work) {
  return secondsOf([&] {
    std::vector<std::thread> threads;
    for (int i = 1; i <= k; ++i) {
      threads.emplace_back([&, i] { work(i); });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  });
}

/// Seconds until `work` is done in each of k processes. What the parent has loaded, every process
/// has as its own copy.
template <typename Work> double inProcesses(int k, const Work& work) {
  return secondsOf([&] {
    for (int i = 1; i <= k; ++i) {
      if (fork() == 0) {
        work();
        _exit(0);
      }
    }
    for (int i = 1; i <= k; ++i) {
      wait(nullptr);
    }
  });
}

/// Calls per second of k slots over those of k processes; the best of several rounds in turns each.
double compareThroughput(const SlotExport& slotExport, const Material& material,
                         BareDetectors& detectors, int k) {
  constexpr int rounds = 7;
  constexpr int calls = 25;
  double ours = 1e9;
  double theirs = 1e9;
  for (int round = 0; round < rounds; ++round) {
    ours = std::min(ours, onThreads(k, [&](int slot) {
                      HostMemory memory;
                      for (int i = 0; i < calls; ++i) {
                        callInSlot(slotExport, material.photo(), memory, slot);
                      }
                    }));
    theirs = std::min(theirs, inProcesses(k, [&] {
                        for (int i = 0; i < calls; ++i) {
                          callBarely(slotExport, material.photo(), detectors);
                        }
                      }));
  }
  std::printf("| `%s` | %d | %.1f | %.1f | %.3f |\n", slotExport.name, k, k * calls / ours,
              k * calls / theirs, theirs / ours);
  std::fflush(stdout);
  return theirs / ours;
}

} // namespace

bool compareSlots(int rounds) {
  const Material material("couple.jpg");
  const SlotExport families[] = {made::kDun01, made::kInTread01};
  bool good = true;

  std::printf(
      "## First calls and memory\n\n%s at maxSide %d. A first call loads what its slot lacks; "
      "beside it the bare loads and calls. Medians of %d, each in a process of its own. Memory: "
      "what a further slot holds from its first call on, and the most that a later call takes on "
      "top.\n\n"
      "| export | first call ms | bare ms | ratio | MiB per slot | MiB per call |\n"
      "|---|--:|--:|--:|--:|--:|\n",
      material.name().c_str(), kMaxSide, rounds);
  for (const SlotExport& slotExport : families) {
    good = compareFirstCalls(slotExport, material, rounds) <= kMostFirstCall && good;
  }

  std::printf(
      "\n## Throughput\n\nThe same photograph: calls a second of k slots on k threads, beside k "
      "processes that make the bare calls.\n\n"
      "| export | k | slots | processes | ratio |\n|---|--:|--:|--:|--:|\n");
  BareDetectors detectors = material.loadBare();
  for (const SlotExport& slotExport : families) {
    for (const int k : {1, 2, 4, 9}) {
      onThreads(k, [&](int slot) {
        HostMemory memory;
        callInSlot(slotExport, material.photo(), memory, slot); // loads
      });
      good = compareThroughput(slotExport, material, detectors, k) >= kLeastThroughput && good;
    }
  }
  std::printf(
      "\nWith network, cascade and landmarks in all nine slots the process holds %.0f MiB.\n",
      residentMiB());
  std::printf("\n%s\n\n", good ? "First calls are at most 1.02, throughput is at least 0.95."
                               : "**A first call is above 1.02, or a throughput below 0.95.**");
  return good;
}

} // namespace qorocv::bench
