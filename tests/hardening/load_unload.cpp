// load_unload LIBRARY TIMES: loads the library, lets it analyse a photograph, and unloads it, over and
// over; the process grows neither in memory nor in descriptors.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "qorocv460/qorocv460.h"
#include "support/process.h"
#include "support/temporary_directory.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

namespace qorocv::testing {
namespace {

// Of the resident memory, each time: one per cent in a thousand times.
constexpr double kMostGrowth = 0.01 / 1000;

bool findsTheFace(const char* path, const std::string& models, const std::string& photo) {
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return false;
  }
  using Init = int(const char*);
  using Detect = int(const char*, double*, int*, int, int, int*, int*);
  double results[QOROCV460_FACE_RESULTS];
  int count = 1;
  int width = 0;
  int height = 0;
  const auto init = reinterpret_cast<Init*>(dlsym(library, "initModelsAtPath"));
  const auto detect = reinterpret_cast<Detect*>(dlsym(library, "findQORFacesInTread01"));
  const bool found = init(models.c_str()) == 0 &&
                     detect(photo.c_str(), results, &count, 1, 0, &width, &height) == 1;
  return dlclose(library) == 0 && dlopen(path, RTLD_NOW | RTLD_NOLOAD) == nullptr && found;
}

int run(const char* path, int times) {
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  const std::string photo = writePicture(directory / "face.png", pictureWithFace()).string();
  if (freopen("/dev/null", "w", stdout) == nullptr) { // OpenCV says each time what it loads
    return 1;
  }
  double memory = 0;
  std::ptrdiff_t descriptors = 0;
  for (int i = 0; i < times; ++i) {
    if (!findsTheFace(path, directory.asPrefix(), photo)) {
      std::fprintf(stderr, "not loaded, not unloaded, or no face the %dth time\n", i + 1);
      return 1;
    }
    if (i == times / 10) {
      memory = residentMiB();
      descriptors = openDescriptors();
    }
  }
  const double growth = (residentMiB() - memory) / memory;
  std::fprintf(stderr, "%d times: resident memory %.1f MiB after a tenth, %+.2f %% at the end\n",
               times, memory, 100 * growth);
  return growth < kMostGrowth * times && openDescriptors() == descriptors ? 0 : 1;
}

} // namespace
} // namespace qorocv::testing

int main(int argc, char** argv) {
  return argc == 3 ? qorocv::testing::run(argv[1], std::atoi(argv[2])) : 2;
}
