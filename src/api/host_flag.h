// A host's true or false.
#pragma once

#include <cstring>

namespace qorocv {

/// Hosts in other languages pass any byte but 0 for true, which a C++ bool may not hold.
inline bool isSet(const bool& flag) {
  unsigned char byte = 0;
  static_assert(sizeof byte == sizeof flag);
  std::memcpy(&byte, &flag, sizeof byte);
  return byte != 0;
}

} // namespace qorocv
