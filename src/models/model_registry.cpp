#include "models/model_registry.h"

#include "platform/platform.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

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

// Hosts that place the models beside the library bring the segmentation model by placeAt, or leave
// it to the current directory: placeBesideLibrary stops before it.
constexpr std::size_t kModelsBesideLibrary = kModelCount - 1;

bool isReadable(const std::string& path) {
  return !isNamedPipe(path) && std::ifstream(path).good();
}

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

std::string ModelRegistry::readablePath(Model model) const {
  const std::string& wanted = path(model);
  return isNamedPipe(wanted) ? wanted + "/no-file" : wanted; // nothing lies in a pipe
}

int ModelRegistry::placeBesideLibrary() {
  const std::filesystem::path module = ownModulePath();
  if (!module.empty()) {
    for (std::size_t i = 0; i < kModelsBesideLibrary; ++i) {
      paths_[i] = pathBesideModule(module, kFileNames[i].stem, kFileNames[i].extension);
    }
  }
  int missing = 0;
  for (std::size_t i = 0; i < kModelsBesideLibrary; ++i) {
    missing += isReadable(paths_[i]) ? 0 : 1;
  }
  std::ofstream report(reportFilePath());
  if (!report.good()) {
    std::cerr << "Uh oh, SomeText.txt could not be opened for writing!" << std::endl;
    std::exit(1); // Part of the contract: hosts count on never running on without their report.
  }
  writeReport(report, module.c_str());
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

void ModelRegistry::writeReport(std::ostream& report, const void* modulePathBuffer) const {
  // Readers of the report count lines: an address, two empty lines, six paths, the first path twice
  // more.
  report << modulePathBuffer << std::endl << std::endl << std::endl;
  for (std::size_t i = 0; i < kModelsBesideLibrary; ++i) {
    report << paths_[i] << std::endl;
  }
  report << paths_.front() << std::endl << paths_.front() << std::endl;
}

} // namespace qorocv
