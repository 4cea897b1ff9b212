// Loaded before the library into workers: ends the process at a photograph whose name has "poison" in it.
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

extern "C" __attribute__((visibility("default"))) int
findQORFacesDUNInTread01(const char* path, double* results, int* count, int kind, int slot,
                         int maxSide, int* width, int* height) {
  if (std::strstr(path, "poison") != nullptr) {
    std::abort();
  }
  using Function = int (*)(const char*, double*, int*, int, int, int, int*, int*);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "findQORFacesDUNInTread01"));
  return real(path, results, count, kind, slot, maxSide, width, height);
}
