#include "name_for_library.h"

#include "hexadecimal.h"
#include "scan/photograph_file.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <utility>
#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#endif

namespace qorfaces {

namespace fs = std::filesystem;

namespace {

#ifdef _WIN32
bool isAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
}

std::string shortName(const fs::path& name) {
  std::wstring text(32768, L'\0'); // longer ones there are not
  text.resize(GetShortPathNameW(name.c_str(), text.data(), static_cast<DWORD>(text.size())));
  return fs::path(text).u8string();
}

/// Empty where there can be none.
fs::path copyOf(const fs::path& photograph) {
  static std::atomic<unsigned> count{0};
  std::error_code error;
  fs::path copy = fs::u8path(shortName(fs::temp_directory_path(error)));
  copy /= "qorfaces-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
  fs::copy_file(photograph, copy, fs::copy_options::overwrite_existing, error);
  return error ? fs::path() : copy;
}
#endif

} // namespace

NameForLibrary NameForLibrary::ofText(const std::string& name) {
  NameForLibrary result;
  result.name_ = name;
#ifdef _WIN32
  if (!isAscii(name)) {
    const fs::path path = fs::u8path(name);
    const std::string other = shortName(path);
    if (!other.empty() && isAscii(other)) {
      result.name_ = other;
    } else {
      result.copy_ = copyOf(path);
      result.name_ = result.copy_.empty() ? name : result.copy_.u8string();
    }
  }
#endif
  return result;
}

NameForLibrary NameForLibrary::ofBytes([[maybe_unused]] const std::string& hexadecimal) {
  NameForLibrary result;
#ifdef __linux__
  const std::string bytes = fromHexadecimal(hexadecimal);
  // A pipe, of which the library makes no photograph, is not waited for.
  result.descriptor_ = open(bytes.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  result.name_ = "/proc/self/fd/" + std::to_string(result.descriptor_);
#endif
  return result;
}

NameForLibrary NameForLibrary::ofPath(const fs::path& path) {
  const auto bytes = bytesOf(path);
  return bytes ? ofBytes(*bytes) : ofText(path.u8string());
}

NameForLibrary::NameForLibrary(NameForLibrary&& other) noexcept
    : name_(std::move(other.name_)), copy_(std::exchange(other.copy_, {})),
      descriptor_(std::exchange(other.descriptor_, kNoDescriptor)) {}

NameForLibrary::~NameForLibrary() {
  if (descriptor_ != kNoDescriptor) {
    closeDescriptor(descriptor_);
  }
  if (!copy_.empty()) {
    std::error_code ignored;
    fs::remove(copy_, ignored);
  }
}

} // namespace qorfaces
