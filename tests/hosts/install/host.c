/* host MODELS/ PHOTO: a host of the installed package, in C. */
#include <qorocv460/qorocv460.h>
#include <stdio.h>

int main(int argc, char** argv) {
  double results[QOROCV460_FACE_RESULTS];
  int count = QOROCV460_FACE_RESULTS;
  int width, height, found;
  if (argc != 3 || initModelsAtPath(argv[1]) != 0) {
    return 1;
  }
  found = findQORFacesDUNInTread01(argv[2], results, &count, QOROCV460_CAFFE, QOROCV460_LAST_SLOT,
                                   0, &width, &height);
  printf("QOROCV460 %s found %d\n", QOROCV460_VERSION, found);
  return found == QOROCV460_UNREADABLE ? 1 : 0;
}
