#include "progress.h"

#include "descriptors.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace qorfaces {

namespace {

constexpr int kErrors = 2;

std::string inHours(double seconds) {
  const auto whole = std::lround(std::min(seconds, 3.6e6));
  char text[32];
  std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
  return text;
}

} // namespace

Progress::Progress(bool quiet) : isQuiet_(quiet), isTerminal_(isTerminal(kErrors)) {}

std::chrono::milliseconds Progress::interval() const {
  return std::chrono::milliseconds(isTerminal_ ? 200 : 10000);
}

void Progress::done(bool isGood, long faces) {
  ++done_;
  failed_ += isGood ? 0 : 1;
  faces_ += faces;
}

void Progress::show(long total) {
  if (isQuiet_) {
    return;
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  const double rate = static_cast<double>(done_) / std::max(seconds, 0.001);
  std::string text = std::to_string(skipped_ + done_);
  if (total > 0) {
    text += " of " + std::to_string(total);
  }
  char number[32];
  std::snprintf(number, sizeof number, "%.1f", rate);
  text += " photographs, " + std::string(number) + " a second";
  if (total > 0 && done_ > 0) {
    const auto left = static_cast<double>(std::max(0L, total - skipped_ - done_));
    text += ", " + inHours(left / rate) + " left";
  }
  text += ", " + std::to_string(faces_) + " faces, " + std::to_string(failed_) + " failed";
  if (!isTerminal_) {
    std::cerr << "qorfaces: " << text << std::endl;
    return;
  }
  std::size_t letters = text.size();
  text.append(shown_ > letters ? shown_ - letters : 0, ' '); // over what stood there
  if (const auto columns = columnsOf(kErrors)) {
    // The next one would begin on the last of several lines, and the others stay.
    letters = std::min(letters, static_cast<std::size_t>(*columns - 1));
    text.resize(std::min(text.size(), static_cast<std::size_t>(*columns - 1)));
  }
  std::cerr << '\r' << text << std::flush;
  shown_ = letters;
}

void Progress::note(const std::string& text) {
  end();
  std::cerr << "qorfaces: " << text << std::endl;
}

void Progress::end() {
  if (shown_ > 0) {
    std::cerr << std::endl;
    shown_ = 0;
  }
}

} // namespace qorfaces
