// Each export against the OpenCV calls that it cannot do without, in turns on the same photograph,
// so that whatever else the machine does meets both. The ratio of the medians is at most 1.02.
#include "bench_support.h"

#include <benchmark/benchmark.h>
#include <opencv2/core/utility.hpp>

#include <chrono>
#include <iostream>
#include <memory>

namespace {

using namespace qorocv::bench;
using Clock = std::chrono::steady_clock;

constexpr double kMostRatio = 1.02;

template <typename Work> double secondsOf(const Work& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Registers a benchmark that takes turns between an export and its bare calls.
void registerPair(const std::string& name, const std::function<void()>& call,
                  const std::function<void()>& bare, int iterations, bool& withinBound) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [=, &withinBound](benchmark::State& state) {
                                 std::vector<double> ours;
                                 std::vector<double> theirs;
                                 call();
                                 bare();
                                 bool oursFirst = true;
                                 for ([[maybe_unused]] auto _ : state) {
                                   if (oursFirst) {
                                     ours.push_back(secondsOf(call));
                                     theirs.push_back(secondsOf(bare));
                                   } else {
                                     theirs.push_back(secondsOf(bare));
                                     ours.push_back(secondsOf(call));
                                   }
                                   oursFirst = !oursFirst;
                                   state.SetIterationTime(ours.back());
                                 }
                                 const double ratio = median(ours) / median(theirs);
                                 state.counters["export_ms"] = median(ours) * 1e3;
                                 state.counters["bare_ms"] = median(theirs) * 1e3;
                                 state.counters["ratio"] = ratio;
                                 withinBound = withinBound && ratio <= kMostRatio;
                               })
      ->UseManualTime()
      ->Iterations(iterations)
      ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  cv::setNumThreads(1);
  const Material material("couple.jpg");
  const auto detectors = std::make_shared<qorocv::testing::BareDetectors>(material.loadBare());
  const auto memory = std::make_shared<HostMemory>();
  bool withinBound = true;
  for (const MeasuredExport& measured : measuredExports(material.photo())) {
    for (const int maxSide : {0, 480, 1000}) {
      registerPair(
          measured.name + "/maxSide:" + std::to_string(maxSide),
          [=] { measured.call(*memory, maxSide); }, [=] { measured.bare(*detectors, maxSide); }, 25,
          withinBound);
    }
  }
  registerPair(
      "initDetector", [] { initDetector(); },
      [&material] {
        qorocv::testing::loadBareCascade(material.modelPath("model05.yaml"),
                                         material.modelPath("model06.xml"));
      },
      7, withinBound);
  std::cerr << material.label() << std::endl;
  benchmark::RunSpecifiedBenchmarks();
  std::cerr << (withinBound ? "every ratio is at most 1.02" : "A RATIO IS ABOVE 1.02") << std::endl;
  return withinBound ? 0 : 1;
}
