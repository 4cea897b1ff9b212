/* find_faces MODELS/ PHOTO: the box of every face in a photograph, in pixels. */
#include <qorocv460/qorocv460.h>
#include <stdio.h>

int main(int argc, char** argv) {
  double results[QOROCV460_FACE_RESULTS];
  int count = QOROCV460_FACE_RESULTS;
  int width, height;
  if (argc != 3 || initModelsAtPath(argv[1]) != 0 ||
      findQORFaces(argv[2], NULL, results, &count, 480, false, &width, &height) < 0) {
    return 1;
  }
  for (int at = 1; at < count; at += QOROCV460_FACE_RECORD) {
    printf("from %.0f, %.0f to %.0f, %.0f\n", results[at] * width, results[at + 1] * height,
           results[at + 2] * width, results[at + 3] * height);
  }
  return 0;
}
