#include "models/model_registry.h"

#include "platform/platform.h"

#include <fstream>

namespace qorocv {

namespace {

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
    paths_[i] = std::string(kModelFileNames[i].stem) + "." + kModelFileNames[i].extension;
  }
}

int ModelRegistry::placeBeside(const std::filesystem::path& library) {
  int missing = 0;
  for (std::size_t i = 0; i < kModelsBesideLibrary; ++i) {
    if (!library.empty()) {
      paths_[i] = pathBesideModule(library, kModelFileNames[i].stem, kModelFileNames[i].extension);
    }
    missing += isReadable(paths_[i]) ? 0 : 1;
  }
  return missing;
}

int ModelRegistry::placeAt(const std::string& directory) {
  int missing = 0;
  int weight = 1;
  for (std::size_t i = 0; i < kModelCount; ++i) {
    paths_[i] = directory + kModelFileNames[i].shortName;
    missing += isReadable(paths_[i]) ? 0 : weight;
    weight *= 10;
  }
  return missing;
}

} // namespace qorocv
