// What a process holds.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace qorocv::testing {

/// The process's resident memory.
inline double residentMiB() {
  std::size_t total = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

/// The most resident memory that the process has had since the last resetPeakMemory.
inline double peakMiB() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") {
      double kibibytes = 0;
      status >> kibibytes;
      return kibibytes / 1024;
    }
  }
  return 0;
}
inline void resetPeakMemory() {
  std::ofstream("/proc/self/clear_refs") << 5;
}

/// How many descriptors the process has open.
inline std::ptrdiff_t openDescriptors() {
  const std::filesystem::directory_iterator open("/proc/self/fd");
  return std::distance(begin(open), end(open));
}

/// How many threads the process has.
inline std::ptrdiff_t ownThreads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

} // namespace qorocv::testing
