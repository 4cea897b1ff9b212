#include "models/model_registry.h"

#include "platform/platform.h"

#include <fstream>

namespace qorocv {

namespace {

struct ModelFileName {
  const char* stem;
  const char* extension;
  const char* shortName;
};

constexpr std::array<ModelFileName, kModelCount> kFileNames{{
    {"deploy", "prototxt", "model01.prototxt"},
    {"res10_300x300_ssd_iter_140000_fp16", "caffemodel", "model02.caffemodel"},
    {"opencv_face_detector", "pbtxt", "model03.pbtxt"},
    {"opencv_face_detector_uint8", "pb", "model04.pb"},
    {"lbfmodel", "yaml", "model05.yaml"},
    {"haarcascade_frontalface_alt", "xml", "model06.xml"},
    {"human_segmentation_pphumanseg_2023mar", "onnx", "model07.onnx"},
}};

bool isReadable(const std::string& path) {
  return !isNamedPipe(path) && std::ifstream(path).good();
}

// Owned by the library: made when it is loaded, ended when it is unloaded, and usable in between.
ModelRegistry theRegistry;

} // namespace

ModelRegistry& modelRegistry() {
  return theRegistry;
}

ModelRegistry::ModelRegistry() {
  for (std::size_t i = 0; i < kModelCount; ++i) {
    paths_[i] = std::string(kFileNames[i].stem) + "." + kFileNames[i].extension;
  }
}

int ModelRegistry::placeBeside(const std::filesystem::path& library) {
  int missing = 0;
  for (std::size_t i = 0; i < kModelsBesideLibrary; ++i) {
    if (!library.empty()) {
      paths_[i] = pathBesideModule(library, kFileNames[i].stem, kFileNames[i].extension);
    }
    missing += isReadable(paths_[i]) ? 0 : 1;
  }
  return missing;
}

int ModelRegistry::placeAt(const std::string& directory) {
  int missing = 0;
  int weight = 1;
  for (std::size_t i = 0; i < kModelCount; ++i) {
    paths_[i] = directory + kFileNames[i].shortName;
    missing += isReadable(paths_[i]) ? 0 : weight;
    weight *= 10;
  }
  return missing;
}

} // namespace qorocv
