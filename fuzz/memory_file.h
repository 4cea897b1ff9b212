// A file that an input stands for.
#pragma once

#include "fuzz_input.h"

#include <sys/mman.h>
#include <unistd.h>

namespace qorocv::fuzzing {

/// A file in memory only, which one input after another fills.
class MemoryFile {
public:
  void keep(const void* content, std::size_t size) const {
    require(ftruncate(file_, 0) == 0 &&
                pwrite(file_, content, size, 0) == static_cast<ssize_t>(size),
            "a file in memory");
  }
  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

private:
  int file_ = memfd_create("input", 0);
};

} // namespace qorocv::fuzzing
