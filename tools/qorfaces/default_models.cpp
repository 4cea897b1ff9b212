#include "default_models.h"

#include <filesystem>
#include <system_error>
#ifdef _WIN32
#include <vector>
#include <windows.h>
#endif

namespace qorfaces {

namespace {

/// The program's own directory; empty where the system does not tell.
std::filesystem::path ownDirectory() {
#ifdef _WIN32
  std::vector<wchar_t> name(MAX_PATH);
  DWORD length = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
  while (length == name.size()) { // cut short
    name.resize(2 * name.size());
    length = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
  }
  return std::filesystem::path(name.begin(), name.begin() + length).parent_path();
#else
  std::error_code none;
  return std::filesystem::read_symlink("/proc/self/exe", none).parent_path();
#endif
}

} // namespace

std::string defaultModels() {
  const std::filesystem::path here = "models";
  const std::filesystem::path own = ownDirectory();
  for (const auto& models : {here, own / "models", own.parent_path() / "models"}) {
    std::error_code ignored;
    if (std::filesystem::is_directory(models, ignored)) {
      return models.u8string();
    }
  }
  return here.u8string();
}

} // namespace qorfaces
