// catch_errors MODELS/ PHOTO: a host in C++ that outlives what the library throws.
#include <exception>
#include <iostream>
#include <qorocv460/qorocv460.h>
#include <vector>

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  initModelsAtPath(argv[1]);
  std::vector<double> results(QOROCV460_FACE_RESULTS);
  int count = QOROCV460_FACE_RESULTS;
  int width = 0;
  int height = 0;
  try {
    const int found =
        findQORFaces(argv[2], nullptr, results.data(), &count, 480, false, &width, &height);
    std::cout << found << " found" << std::endl;
  } catch (const std::exception& error) {
    std::cout << "caught: " << error.what() << std::endl;
  }
  return 0;
}
