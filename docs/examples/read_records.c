/* read_records MODELS/ PHOTO: nose bridge and chin of every face, from records with all 68
 * landmarks. */
#include <qorocv460/qorocv460.h>
#include <stdio.h>

typedef struct {
  double x, y; /* fractions of the photograph's width and height */
} Point;

static Point landmark(const double* record, int number) {
  const double* x = record + 4 + 2 * number; /* the box comes first */
  const Point point = {x[0], x[1]};
  return point;
}

int main(int argc, char** argv) {
  static double results[QOROCV460_LANDMARK_RESULTS];
  int count = QOROCV460_LANDMARK_RESULTS;
  int width, height, found;
  if (argc != 3 || initModelsAtPath(argv[1]) != 0) {
    return 1;
  }
  found = processImage(argv[2], NULL, results, &count, 480, false, &width, &height);
  if (found == QOROCV460_UNREADABLE) {
    return 1;
  }
  printf("%d found\n", found);
  for (int at = 1; at < count; at += QOROCV460_LANDMARK_RECORD) {
    const Point bridge = landmark(&results[at], QOROCV460_NOSE_BRIDGE);
    const Point chin = landmark(&results[at], QOROCV460_CHIN);
    printf("bridge %.3f %.3f, chin %.3f %.3f\n", bridge.x, bridge.y, chin.x, chin.y);
  }
  return 0;
}
