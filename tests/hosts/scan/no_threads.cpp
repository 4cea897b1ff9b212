// Loaded before all other libraries: the system has no thread left.
#include <cerrno>
#include <pthread.h>

extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* /*thread*/, const pthread_attr_t* /*attributes*/,
               void* (* /*start*/)(void*), void* /*argument*/) noexcept {
  return EAGAIN;
}
