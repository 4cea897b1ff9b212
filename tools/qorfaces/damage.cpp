#include "damage.h"

namespace qorfaces {

bool tellsOfDamage(const std::string& printed) {
  // libjpeg's words: the file ends too early, and everything else that is wrong with its data.
  for (const char* const words : {"Premature end of JPEG file", "Corrupt JPEG data"}) {
    if (printed.find(words) != std::string::npos) {
      return true;
    }
  }
  return false;
}

} // namespace qorfaces
