// The page of a report, as the program carries it.
#pragma once

#include <cstddef>
#include <vector>

namespace qorfaces {

struct EmbeddedFile {
  const char* name;
  const unsigned char* bytes;
  std::size_t size;
};

/// index.html and what it loads, but for data. What the build makes of the files beside this one.
const std::vector<EmbeddedFile>& pageFiles();

} // namespace qorfaces
