/* A program that has this in it cannot place models: the library would only fail so under another thread's detection. */
#include "qorocv460/safe.h"

int qorocv460_initModelsAtPath(const char* directory) {
  (void)directory;
  return QOROCV460_FAILED;
}

const char* qorocv460_lastError(void) {
  return "the models are at work";
}
