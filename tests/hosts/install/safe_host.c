/* safe_host MODELS PHOTO: a host of the installed safe library, in C. */
#include <qorocv460/safe.h>
#include <stdio.h>

int main(int argc, char** argv) {
  double results[QOROCV460_FACE_RESULTS];
  int count = QOROCV460_FACE_RESULTS;
  int width, height, found;
  if (argc != 3 || qorocv460_initModelsAtPath(argv[1]) != 0) {
    return 1;
  }
  found = qorocv460_findQORFacesDUNInTread01(argv[2], results, &count, QOROCV460_CAFFE,
                                             QOROCV460_LAST_SLOT, 0, &width, &height);
  printf("QOROCV460 %s found %d\n", qorocv460_version(), found);
  return found < 0 ? 1 : 0;
}
