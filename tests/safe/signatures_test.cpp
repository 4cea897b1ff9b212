// Every function of qorocv460.h has its like in safe.h. The names come from exports.txt; a signature
// that differs, or a name that is missing, breaks the build.
#include "qorocv460/qorocv460.h"
#include "qorocv460/safe.h"

#include <type_traits>

#define SAME_SIGNATURE(name)                                                                       \
  static_assert(std::is_same_v<decltype(name), decltype(qorocv460_##name)>, #name);
#include "same_signatures.inc"
