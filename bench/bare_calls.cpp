// bare_calls MODELS/ PHOTO...: what a scan is measured against: one export, called for each photograph in turn.
#include <cstdio>
#include <qorocv460/qorocv460.h>
#include <vector>

int main(int argc, char** argv) {
  if (argc < 3 || initModelsAtPath(argv[1]) != 0) {
    std::fputs("usage: bare_calls MODELS/ PHOTO...\n", stderr);
    return 1;
  }
  std::vector<double> results(QOROCV460_FACE_RESULTS);
  for (int i = 2; i < argc; ++i) {
    int count = QOROCV460_FACE_RESULTS;
    int width = 0;
    int height = 0;
    findQORFacesDUNInTread01(argv[i], results.data(), &count, QOROCV460_CAFFE, QOROCV460_FIRST_SLOT,
                             1000, &width, &height);
  }
  return 0;
}
