// Writes made models and a picture with a painted face, for trying the library without real models.

#include "made_models.h"
#include "made_pictures.h"

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>

namespace {

void writeAll(const std::filesystem::path& directory) {
  using namespace qorocv::testing;
  writeMadeModels(directory);
  const std::filesystem::path picture =
      writePicture(directory / "made_face.png", pictureWithFace());
  for (const char* name :
       {kMadeCaffeText, kMadeCaffeWeights, kMadeTensorflowText, kMadeTensorflowWeights,
        kMadeLandmarks, kMadeCascade, kMadeSegmentation}) {
    std::cout << (directory / name).string() << '\n';
  }
  std::cout << picture.string() << '\n';
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_models DIR\n";
    return EXIT_FAILURE;
  }
  try {
    writeAll(argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "make_models: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
