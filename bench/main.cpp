// What the library costs beside the OpenCV calls that it makes.
#include "bench.h"

#include <CLI/CLI.hpp>
#include <opencv2/core/utility.hpp>

int main(int argc, char** argv) {
  CLI::App app("Measures every detection export beside the OpenCV calls that it cannot do without, "
               "and prints tables in Markdown. Ends with 1 where a bound is broken.");
  int rounds = 21;
  int threads = 1;
  std::string part;
  app.add_option("--rounds", rounds,
                 "Calls of each export that are measured, at least; first calls, exactly")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.add_option("--threads", threads, "Threads that OpenCV works with, for both sides alike")
      ->check(CLI::Range(1, 64))
      ->capture_default_str();
  app.add_option("PART", part, "What to measure, in a process whose slots are fresh")
      ->check(CLI::IsMember({"calls", "slots", "head-measures"}))
      ->required();
  CLI11_PARSE(app, argc, argv);

  cv::setNumThreads(threads);
  const bool good = part == "calls"   ? qorocv::bench::compareCalls(rounds)
                    : part == "slots" ? qorocv::bench::compareSlots(rounds)
                                      : qorocv::bench::compareHeadMeasures();
  return good ? 0 : 1;
}
