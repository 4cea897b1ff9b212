/* The public headers stand alone, in every language standard that hosts use; see CMakeLists.txt. */
#include "qorocv460/safe.h"

int headerAlone(void) {
  return QOROCV460_FACE_RESULTS + QOROCV460_FAILED;
}
