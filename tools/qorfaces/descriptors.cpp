#include "descriptors.h"

#include <algorithm>

namespace qorfaces {

bool writeAll(int descriptor, const char* bytes, std::size_t size) {
  while (size > 0) {
    const int written = writeSome(descriptor, bytes, std::min(size, kMostAtOnce));
    if (written <= 0) {
      return false;
    }
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

} // namespace qorfaces
