#include "photograph_file.h"

#include "hexadecimal.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <sys/stat.h>
#include <system_error>

namespace qorfaces {

namespace {

bool isUtf8(const std::string& text) {
  try {
    // The length does not matter: dump throws at the first wrong byte.
    (void)nlohmann::json(text).dump();
    return true;
  } catch (const nlohmann::json::type_error&) {
    return false;
  }
}

} // namespace

std::string textOf(const std::filesystem::path& path) {
  return textOfBytes(path.generic_u8string());
}

std::string textOfBytes(const std::string& bytes) {
  if (isUtf8(bytes)) {
    return bytes;
  }
  const std::string quoted =
      nlohmann::json(bytes).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return nlohmann::json::parse(quoted).get<std::string>();
}

std::optional<std::string> bytesOf(const std::filesystem::path& path) {
  const std::string bytes = path.generic_u8string();
  return isUtf8(bytes) ? std::nullopt : std::optional(inHexadecimal(bytes));
}

bool readState(PhotographFile& file) {
#ifdef _WIN32
  struct _stat64 state {};
  if (_wstat64(file.path.c_str(), &state) != 0) {
    return false;
  }
  constexpr std::int64_t microseconds = 0; // of this function, which knows whole seconds
#else
  struct stat state {};
  if (stat(file.path.c_str(), &state) != 0) {
    return false;
  }
  const std::int64_t microseconds = state.st_mtim.tv_nsec / 1000;
#endif
  file.size = static_cast<std::uintmax_t>(state.st_size);
  file.changed = static_cast<std::int64_t>(state.st_mtime) * 1000000 + microseconds;
  return true;
}

} // namespace qorfaces
