#include "faces/instruction_set.h"

namespace qorocv {

bool isAvailable(InstructionSet set) {
  switch (set) {
  case InstructionSet::plain:
    return true;
  case InstructionSet::avx2:
#if defined(__GNUC__) && defined(__x86_64__)
    // Asks the system as well: a kernel that does not keep the wide registers has no AVX2.
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
  }
  return false;
}

InstructionSet bestInstructionSet() {
  static const InstructionSet best =
      isAvailable(InstructionSet::avx2) ? InstructionSet::avx2 : InstructionSet::plain;
  return best;
}

} // namespace qorocv
