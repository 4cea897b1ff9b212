#include "platform/platform.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <dlfcn.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace qorocv {
namespace {

constexpr char32_t kReplacementCharacter = 0xFFFD;
constexpr char32_t kFirstSupplementary = 0x10000;
constexpr std::size_t kConversionFailed = static_cast<std::size_t>(-1);

struct DecodedCharacter {
  char32_t codePoint;
  std::size_t byteCount;
};

/// First character of a text that is not empty. Where the bytes are malformed, a replacement
/// character for as many of them as some character does begin with, at least one.
DecodedCharacter decodeFirst(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) {
    return {lead, 1};
  }
  if (lead < 0xC2 || lead > 0xF4) {
    return {kReplacementCharacter, 1};
  }
  const std::size_t byteCount = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  char32_t codePoint = lead & (0x7FU >> byteCount);
  // Four leads narrow the byte after them: no overlong forms, surrogates or values above U+10FFFF.
  unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  for (std::size_t index = 1; index < byteCount; ++index) {
    if (index == text.size()) {
      return {kReplacementCharacter, index};
    }
    const auto next = static_cast<unsigned char>(text[index]);
    if (next < lowest || next > highest) {
      return {kReplacementCharacter, index};
    }
    codePoint = (codePoint << 6U) | (next & 0x3FU);
    lowest = 0x80;
    highest = 0xBF;
  }
  return {codePoint, byteCount};
}

/// The characters of a text, its terminator as the last one.
std::u32string decodeWithTerminator(const char* utf8Text) {
  std::u32string characters;
  characters.reserve(std::strlen(utf8Text) + 1);
  for (std::string_view rest = utf8Text; !rest.empty();) {
    const DecodedCharacter decoded = decodeFirst(rest);
    characters.push_back(decoded.codePoint);
    rest.remove_prefix(decoded.byteCount);
  }
  characters.push_back(U'\0');
  return characters;
}

std::filesystem::path findOwnModule() {
  // A function of internal linkage: the address of an exported one may belong to the program's own
  // jump table or to another library that defines the same symbol.
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&findOwnModule), &info) == 0 ||
      info.dli_fname == nullptr) {
    return {};
  }
  std::error_code error;
  std::filesystem::path absolutePath = std::filesystem::absolute(info.dli_fname, error);
  return error ? std::filesystem::path() : absolutePath;
}

// Found while the library is being loaded: the loader knows it by the name that it was asked for,
// often a relative one, which leads elsewhere once the process has changed its directory. Ends with
// the library.
const std::filesystem::path theOwnModule = findOwnModule();

} // namespace

std::size_t utf16Length(const char* utf8Text) {
  if (utf8Text == nullptr) {
    return 0;
  }
  std::size_t units = 0;
  for (const char32_t character : decodeWithTerminator(utf8Text)) {
    units += character < kFirstSupplementary ? 1 : 2;
  }
  return units;
}

std::size_t localBufferSize(std::size_t utf16Units) {
  return utf16Units * MB_CUR_MAX;
}

std::string utf8ToLocale(const char* utf8Text, std::size_t bufferSize) {
  if (utf8Text == nullptr || bufferSize == 0) {
    return {};
  }
  const std::size_t capacity = bufferSize - 1;
  std::string converted;
  std::mbstate_t state{};
  for (const char32_t character : decodeWithTerminator(utf8Text)) {
    if (converted.size() == capacity) {
      break;
    }
    std::array<char, MB_LEN_MAX> bytes{};
    std::size_t byteCount = std::wcrtomb(bytes.data(), static_cast<wchar_t>(character), &state);
    if (byteCount == kConversionFailed) {
      return {};
    }
    // Some encodings hold a character back until they know what follows it; converting the
    // terminator brings it out. The terminator's own byte is not part of the text.
    if (character == U'\0') {
      --byteCount;
    }
    if (byteCount > capacity - converted.size()) {
      break;
    }
    converted.append(bytes.data(), byteCount);
  }
  return converted;
}

bool isNamedPipe(const std::string& localPath) {
  struct stat status {};
  return stat(localPath.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

bool opensDirectory(const std::string& localPath) {
  struct stat status {};
  return stat(localPath.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<FileStamp> fileStamp(const std::string& localPath) {
  struct stat status {};
  if (stat(localPath.c_str(), &status) != 0) {
    return std::nullopt;
  }
  const auto nanoseconds = [](const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
  };
  return FileStamp{status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
                   nanoseconds(status.st_mtim), nanoseconds(status.st_ctim)};
}

struct ClassicLocaleOfThread::Previous {
  locale_t classic;
  locale_t previous;
};

// Where the system cannot make the locale, the null object leaves the thread where it is.
ClassicLocaleOfThread::ClassicLocaleOfThread() : previous_(std::make_unique<Previous>()) {
  previous_->classic = newlocale(LC_ALL_MASK, "C", nullptr);
  previous_->previous = uselocale(previous_->classic);
}

ClassicLocaleOfThread::~ClassicLocaleOfThread() {
  uselocale(previous_->previous);
  if (previous_->classic != nullptr) {
    freelocale(previous_->classic);
  }
}

std::filesystem::path ownModulePath() {
  return theOwnModule;
}

std::string pathBesideModule(const std::filesystem::path& modulePath, const char* name,
                             const char* extension) {
  const std::string fileName = std::string(name) + "." + extension;
  return (modulePath.parent_path() / fileName).string();
}

// OpenCV's threads here are those of a library that stays loaded.
void useSystemThreads() {}

} // namespace qorocv
