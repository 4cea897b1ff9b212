// A host of the library, as tests play one: arrays full of canaries around each call.
#pragma once

#include "qorocv460/qorocv460.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace qorocv::testing {

constexpr double kUntouchedValue = -98765.4375;
constexpr int kUntouchedSize = -4321;

/// Everything that a detection export writes for its host, and what it returned and printed.
struct Outcome {
  int returned = 0;
  int count = 0;
  int width = kUntouchedSize;
  int height = kUntouchedSize;
  std::vector<double> results; // larger than any export needs
  std::string printed;

  /// The first value that the call left untouched, counted from the start.
  std::size_t written() const {
    std::size_t n = results.size();
    while (n > 0 && results[n - 1] == kUntouchedValue) {
      --n;
    }
    return n;
  }
};

/// The values that a call says it wrote.
inline std::vector<double> records(const Outcome& outcome) {
  return {outcome.results.begin(), outcome.results.begin() + outcome.count};
}

/// The variables that a call writes to.
struct HostVariables {
  double* results;
  int* count;
  int* width;
  int* height;
};

/// Makes one call on fresh variables. `count` holds `capacity` on entry.
inline Outcome call(const std::function<int(const HostVariables&)>& body, int capacity = 1) {
  constexpr std::size_t room = QOROCV460_LANDMARK_RESULTS + 64;
  Outcome outcome;
  outcome.count = capacity;
  outcome.results.assign(room, kUntouchedValue);
  ::testing::internal::CaptureStdout();
  try {
    outcome.returned =
        body({outcome.results.data(), &outcome.count, &outcome.width, &outcome.height});
  } catch (...) {
    ::testing::internal::GetCapturedStdout();
    throw;
  }
  outcome.printed = ::testing::internal::GetCapturedStdout();
  return outcome;
}

/// Expects that a call wrote nothing at all.
inline void expectNothingTouched(const Outcome& outcome, int capacity) {
  EXPECT_EQ(outcome.count, capacity);
  EXPECT_EQ(outcome.width, kUntouchedSize);
  EXPECT_EQ(outcome.height, kUntouchedSize);
  EXPECT_EQ(outcome.written(), 0U);
}

inline constexpr const char* kUnreadableMessage = "Could not open or find the image\n";

/// findQORFaces and processImage share their arguments.
using SingleImageExport = decltype(&findQORFaces);

struct SingleImageOptions {
  std::string outputPath;
  int maxSide = 0;
  bool show = false;
};

inline Outcome detect(SingleImageExport detection, const std::filesystem::path& photo,
                      const SingleImageOptions& options = {}, int capacity = 1) {
  return call(
      [&](const HostVariables& host) {
        return detection(photo.c_str(), options.outputPath.c_str(), host.results, host.count,
                         options.maxSide, options.show, host.width, host.height);
      },
      capacity);
}

} // namespace qorocv::testing
