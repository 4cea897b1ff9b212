// Loaded before the library into workers: ends the process at a photograph whose name has "poison" in it, and never
// comes back from one with "endless", beside which it leaves a file with the process's number.
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <string>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int
findQORFacesDUNInTread01(const char* path, double* results, int* count, int kind, int slot,
                         int maxSide, int* width, int* height) {
  if (std::strstr(path, "poison") != nullptr) {
    std::abort();
  }
  if (std::strstr(path, "endless") != nullptr) {
    std::ofstream(std::string(path) + "." + std::to_string(getpid())).close();
    while (true) {
      pause();
    }
  }
  using Function = int (*)(const char*, double*, int*, int, int, int, int*, int*);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "findQORFacesDUNInTread01"));
  return real(path, results, count, kind, slot, maxSide, width, height);
}
