// The public headers stand alone, in every language standard that hosts use; see CMakeLists.txt.
#include "qorocv460/safe.h"

int headerAlone();
int headerAlone() {
  return static_cast<int>(QOROCV460_FACE_RESULTS) + static_cast<int>(QOROCV460_FAILED);
}
