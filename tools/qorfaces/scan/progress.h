// How far a scan is, on standard error.
#pragma once

#include <chrono>
#include <string>

namespace qorfaces {

/// One line that is written anew on a terminal, and a line now and then elsewhere.
class Progress {
public:
  explicit Progress(bool quiet);

  std::chrono::milliseconds interval() const;

  void skipped() { ++skipped_; } // was done before
  void done(bool isGood, long faces);

  /// Shows the count, of `total` photographs where that is above 0.
  void show(long total);

  /// A line that stays, also for the quiet.
  void note(const std::string& text);

  /// Ends the line that is written anew.
  void end();

private:
  const bool isQuiet_;
  const bool isTerminal_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  long skipped_ = 0;
  long done_ = 0;
  long failed_ = 0;
  long faces_ = 0;
  std::size_t shown_ = 0; // letters in the line that is written anew
};

} // namespace qorfaces
