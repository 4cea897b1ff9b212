// A host of the library, as tests play one: arrays full of canaries around each call.
#pragma once

#include "qorocv460/qorocv460.h"
#include "support/call_options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace qorocv::testing {

constexpr double kUntouchedValue = -98765.4375;
constexpr int kUntouchedSize = -4321;
constexpr unsigned char kUntouchedByte = 0xA5; // grey: no mask has it

/// A host's array with canaries behind its end.
template <typename Value, std::size_t size> class Guarded {
public:
  explicit Guarded(Value untouched) : untouched_(untouched), values_(size + kGuards, untouched) {}

  Value* data() { return values_.data(); }
  const Value& operator[](std::size_t i) const { return values_[i]; }
  std::vector<Value> inside() const { return {values_.begin(), values_.end() - kGuards}; }
  bool isUntouched() const {
    return std::count(values_.begin(), values_.end(), untouched_) ==
           static_cast<std::ptrdiff_t>(values_.size());
  }
  bool isUntouchedBehind() const {
    return std::count(values_.end() - kGuards, values_.end(), untouched_) == kGuards;
  }
  bool operator==(const Guarded& other) const { return values_ == other.values_; }

private:
  static constexpr std::ptrdiff_t kGuards = 64;
  Value untouched_;
  std::vector<Value> values_;
};

/// Everything that a detection export writes for its host, and what it returned and printed.
struct Outcome {
  int returned = 0;
  int count = 0;
  int width = kUntouchedSize;
  int height = kUntouchedSize;
  std::vector<double> results; // larger than any export needs
  std::string printed;

  // Of the exports with a person mask.
  Guarded<unsigned char, QOROCV460_VIEW_BYTES> view{kUntouchedByte};
  Guarded<unsigned char, QOROCV460_MASK_BYTES> mask{kUntouchedByte};
  Guarded<unsigned char, QOROCV460_MASK_BYTES> cropMask{kUntouchedByte};
  Guarded<double, QOROCV460_CROP_BOX> cropBox{kUntouchedValue};

  // Of the tile export.
  int tileLeft = kUntouchedSize;
  int tileTop = kUntouchedSize;
  int tileWidth = kUntouchedSize;
  int tileHeight = kUntouchedSize;

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
  unsigned char* view;
  unsigned char* mask;
  unsigned char* cropMask;
  double* cropBox;
  int* tileLeft;
  int* tileTop;
  int* tileWidth;
  int* tileHeight;
};

inline HostVariables variablesOf(Outcome& outcome) {
  return {outcome.results.data(),  &outcome.count,         &outcome.width,
          &outcome.height,         outcome.view.data(),    outcome.mask.data(),
          outcome.cropMask.data(), outcome.cropBox.data(), &outcome.tileLeft,
          &outcome.tileTop,        &outcome.tileWidth,     &outcome.tileHeight};
}

/// Whether two calls gave their host the same, bit for bit.
inline bool sameOutputs(const Outcome& a, const Outcome& b) {
  return a.returned == b.returned && a.count == b.count && a.width == b.width &&
         a.height == b.height && a.results == b.results && a.view == b.view && a.mask == b.mask &&
         a.cropMask == b.cropMask && a.cropBox == b.cropBox && a.tileLeft == b.tileLeft &&
         a.tileTop == b.tileTop && a.tileWidth == b.tileWidth && a.tileHeight == b.tileHeight;
}

/// Makes one call on fresh variables. `count` holds `capacity` on entry.
inline Outcome call(const std::function<int(const HostVariables&)>& body, int capacity = 1) {
  constexpr std::size_t room = QOROCV460_LANDMARK_RESULTS + 64;
  Outcome outcome;
  outcome.count = capacity;
  outcome.results.assign(room, kUntouchedValue);
  ::testing::internal::CaptureStdout();
  try {
    outcome.returned = body(variablesOf(outcome));
  } catch (...) {
    ::testing::internal::GetCapturedStdout();
    throw;
  }
  outcome.printed = ::testing::internal::GetCapturedStdout();
  EXPECT_TRUE(outcome.view.isUntouchedBehind());
  EXPECT_TRUE(outcome.mask.isUntouchedBehind());
  EXPECT_TRUE(outcome.cropMask.isUntouchedBehind());
  EXPECT_TRUE(outcome.cropBox.isUntouchedBehind());
  return outcome;
}

/// Expects that a call wrote nothing at all.
inline void expectNothingTouched(const Outcome& outcome, int capacity) {
  EXPECT_EQ(outcome.count, capacity);
  EXPECT_EQ(outcome.width, kUntouchedSize);
  EXPECT_EQ(outcome.height, kUntouchedSize);
  EXPECT_EQ(outcome.written(), 0U);
  EXPECT_TRUE(outcome.view.isUntouched());
  EXPECT_TRUE(outcome.mask.isUntouched());
  EXPECT_TRUE(outcome.cropMask.isUntouched());
  EXPECT_TRUE(outcome.cropBox.isUntouched());
  for (const int value :
       {outcome.tileLeft, outcome.tileTop, outcome.tileWidth, outcome.tileHeight}) {
    EXPECT_EQ(value, kUntouchedSize);
  }
}

inline constexpr const char* kUnreadableMessage = "Could not open or find the image\n";

/// findQORFaces and processImage share their arguments.
using SingleImageExport = decltype(&findQORFaces);

inline Outcome detect(SingleImageExport detection, const std::filesystem::path& photo,
                      const CallOptions& options = {}, int capacity = 1) {
  return call(
      [&](const HostVariables& host) {
        return detection(photo.u8string().c_str(), options.outputPath.c_str(), host.results,
                         host.count, options.maxSide, options.show, host.width, host.height);
      },
      capacity);
}

} // namespace qorocv::testing
