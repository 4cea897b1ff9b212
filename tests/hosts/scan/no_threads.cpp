// Loaded before all other libraries: the system has no thread left for the workers of a scan.
#include <cerrno>
#include <dlfcn.h>
#include <fstream>
#include <iterator>
#include <pthread.h>
#include <string>

extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
               void* argument) noexcept {
  std::ifstream file("/proc/self/cmdline");
  const std::string words(std::istreambuf_iterator<char>(file), {});
  if (words.find(std::string("\0worker", 7)) != std::string::npos) {
    return EAGAIN;
  }
  using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
  return real(thread, attributes, start, argument);
}
