// The instruction sets that an engine is compiled for.
#pragma once

namespace qorocv {

enum class InstructionSet {
  plain, // what every processor of the architecture has
  avx2,
};

/// Whether this program has code for the set and this processor runs it.
bool isAvailable(InstructionSet set);

/// The fastest set that is available.
InstructionSet bestInstructionSet();

} // namespace qorocv
