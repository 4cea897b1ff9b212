// What the library costs beside the OpenCV calls that it makes.
#include "bench.h"

#include <CLI/CLI.hpp>
#include <opencv2/core/utility.hpp>

int main(int argc, char** argv) {
  CLI::App app("Measures every detection export beside the OpenCV calls that it cannot do without, "
               "and prints tables in Markdown. Ends with 1 where a bound is broken.");
  int rounds = 7;
  int threads = 1;
  app.add_option("--rounds", rounds, "Calls of each export that are measured, at least")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.add_option("--threads", threads, "Threads that OpenCV works with, for both sides alike")
      ->check(CLI::Range(1, 64))
      ->capture_default_str();
  // A part has a process, and with it slots, of its own.
  app.require_subcommand(1);
  const CLI::App* const calls = app.add_subcommand("calls", "Calls by photograph and size");
  const CLI::App* const engines =
      app.add_subcommand("engines", "The engines alone, beside OpenCV's and dlib's detector");
  const CLI::App* const slots =
      app.add_subcommand("slots", "First calls, memory, and throughput of several slots");
  app.add_subcommand("head-measures", "The head measures of many faces by a mask");
  CLI::App* const firstCall = app.add_subcommand("first-call", "The seconds of one first call");
  std::string exportName;
  bool bare = false;
  firstCall->add_option("EXPORT", exportName, "Whose")
      ->check(CLI::IsMember({"findQORFacesDUNInTread01", "findQORFacesInTread01"}))
      ->required();
  firstCall->add_flag("--bare", bare, "The bare loads and calls in its place");
  CLI11_PARSE(app, argc, argv);

  cv::setNumThreads(threads);
  if (firstCall->parsed()) {
    qorocv::bench::printFirstCall(exportName, bare);
    return 0;
  }
  const bool good = calls->parsed()     ? qorocv::bench::compareCalls(rounds)
                    : engines->parsed() ? qorocv::bench::compareEngines(rounds)
                    : slots->parsed()   ? qorocv::bench::compareSlots()
                                        : qorocv::bench::compareHeadMeasures();
  return good ? 0 : 1;
}
