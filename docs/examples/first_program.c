/* first_program MODELS PHOTO...: the box of every face in photographs, in pixels. */
#include <qorocv460/safe.h>
#include <stdio.h>

int main(int argc, char** argv) {
  int missing, bad = 0;
  if (argc < 3) {
    fprintf(stderr, "first_program MODELS PHOTO...\n");
    return 2;
  }
  missing = qorocv460_initModelsAtPath(argv[1]);
  if (missing == QOROCV460_FAILED) {
    fprintf(stderr, "%s\n", qorocv460_lastError());
    return 2;
  }
  if (missing != 0) {
    fprintf(stderr, "models missing in %s: %s\n", argv[1], qorocv460_missingModels(missing));
    return 2;
  }
  for (int i = 2; i < argc; ++i) {
    double results[QOROCV460_FACE_RESULTS];
    int count = QOROCV460_FACE_RESULTS;
    int width, height;
    const int found = qorocv460_findQORFacesDUNInTread01(
        argv[i], results, &count, QOROCV460_CAFFE, QOROCV460_FIRST_SLOT, 1000, &width, &height);
    if (found == QOROCV460_FAILED) {
      fprintf(stderr, "%s: %s\n", argv[i], qorocv460_lastError());
      bad = 1;
      continue;
    }
    if (found == QOROCV460_UNREADABLE) {
      fprintf(stderr, "%s cannot be read\n", argv[i]);
      bad = 1;
      continue;
    }
    printf("%s: %d found\n", argv[i], found);
    for (int at = 1; at < count; at += QOROCV460_FACE_RECORD) {
      printf("from %.0f, %.0f to %.0f, %.0f\n", results[at] * width, results[at + 1] * height,
             results[at + 2] * width, results[at + 3] * height);
    }
  }
  return bad;
}
