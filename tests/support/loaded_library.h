// A library loaded by its file's name, as hosts in other languages do.
#pragma once

#include <filesystem>
#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace qorocv::testing {

class LoadedLibrary {
public:
#ifdef _WIN32
  explicit LoadedLibrary(const std::filesystem::path& path)
      : handle_(reinterpret_cast<void*>(LoadLibraryW(path.c_str()))) {}
  ~LoadedLibrary() {
    if (handle_ != nullptr) {
      FreeLibrary(reinterpret_cast<HMODULE>(handle_));
    }
  }
#else
  explicit LoadedLibrary(const std::filesystem::path& path)
      : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {}
  ~LoadedLibrary() {
    if (handle_ != nullptr) {
      dlclose(handle_);
    }
  }
#endif
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  bool isLoaded() const {
    return handle_ != nullptr;
  }

  template <typename Function> Function* find(const char* name) const {
#ifdef _WIN32
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(handle_), name)));
#else
    return reinterpret_cast<Function*>(dlsym(handle_, name));
#endif
  }

private:
  void* handle_;
};

} // namespace qorocv::testing
