/* The public header stands alone, in every language standard that hosts use; see CMakeLists.txt. */
#include "qorocv460/qorocv460.h"

int headerAlone(void) {
  return QOROCV460_FACE_RESULTS;
}
