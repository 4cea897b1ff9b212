// A file that the program carries, as cmake/embed.cmake makes it.
#pragma once

#include <cstddef>
#include <vector>

namespace qorfaces {

struct EmbeddedFile {
  const char* name;
  const unsigned char* bytes;
  std::size_t size;
};

} // namespace qorfaces
