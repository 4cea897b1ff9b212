#include "platform/platform.h"

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX 1

#include <array>
#include <cerrno>
#include <codecvt>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <vector>
#include <windows.h>

namespace qorocv {
namespace {

/// UTF-16 form of a NUL-terminated UTF-8 text, without its terminator. Empty for null.
std::wstring toWide(const char* utf8Text) {
  const std::size_t units = utf16Length(utf8Text);
  if (units == 0) {
    return {};
  }
  std::wstring wide(units, L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8Text, -1, wide.data(), static_cast<int>(units));
  wide.pop_back();
  return wide;
}

/// UTF-8 form of a UTF-16 text; empty where the text has half a surrogate pair, as file names may.
std::string toUtf8(const wchar_t* wide) {
  std::wstring_convert<std::codecvt_utf8_utf16<wchar_t>> converter{std::string()};
  return converter.to_bytes(wide);
}

HMODULE ownModule() {
  HMODULE module = nullptr;
  const BOOL found = GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                            GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                        reinterpret_cast<LPCWSTR>(&ownModule), &module);
  return found != FALSE ? module : nullptr;
}

} // namespace

std::size_t utf16Length(const char* utf8Text) {
  const int units = MultiByteToWideChar(CP_UTF8, 0, utf8Text, -1, nullptr, 0);
  return units > 0 ? static_cast<std::size_t>(units) : 0;
}

std::size_t localBufferSize(std::size_t utf16Units) {
  return utf16Units;
}

std::string utf8ToLocale(const char* utf8Text, std::size_t bufferSize) {
  if (utf8Text == nullptr || bufferSize == 0) {
    return {};
  }
  std::vector<char> bytes(bufferSize);
  std::size_t converted = 0;
  const errno_t error =
      wcstombs_s(&converted, bytes.data(), bytes.size(), toWide(utf8Text).c_str(), _TRUNCATE);
  if (error != 0 && error != STRUNCATE) {
    return {};
  }
  return std::string(bytes.data(), strnlen(bytes.data(), bytes.size()));
}

bool isNamedPipe(const std::string& localPath) {
  constexpr const char* directory = R"(\\.\pipe\)";
  return _strnicmp(localPath.c_str(), directory, std::strlen(directory)) == 0;
}

bool opensDirectory(const std::string&) {
  return false;
}

std::optional<FileStamp> fileStamp(const std::string& localPath) {
  constexpr DWORD everybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file = CreateFileA(localPath.c_str(), FILE_READ_ATTRIBUTES, everybody, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return std::nullopt;
  }
  BY_HANDLE_FILE_INFORMATION identity{};
  FILE_BASIC_INFO times{};
  const bool areKnown = GetFileInformationByHandle(file, &identity) &&
                        GetFileInformationByHandleEx(file, FileBasicInfo, &times, sizeof times);
  CloseHandle(file);
  if (!areKnown) {
    return std::nullopt;
  }
  const auto together = [](DWORD high, DWORD low) {
    return static_cast<std::uint64_t>(high) << 32U | low;
  };
  // Windows counts tenths of a microsecond since 1601.
  const auto nanoseconds = [](const LARGE_INTEGER& time) {
    return (time.QuadPart - 116'444'736'000'000'000) * 100;
  };
  return FileStamp{identity.dwVolumeSerialNumber,
                   together(identity.nFileIndexHigh, identity.nFileIndexLow),
                   together(identity.nFileSizeHigh, identity.nFileSizeLow),
                   nanoseconds(times.LastWriteTime), nanoseconds(times.ChangeTime)};
}

struct ClassicLocaleOfThread::Previous {
  int perThread;
  std::string name;
};

ClassicLocaleOfThread::ClassicLocaleOfThread() : previous_(std::make_unique<Previous>()) {
  previous_->perThread = _configthreadlocale(_ENABLE_PER_THREAD_LOCALE);
  previous_->name = std::setlocale(LC_ALL, nullptr);
  std::setlocale(LC_ALL, "C");
}

ClassicLocaleOfThread::~ClassicLocaleOfThread() {
  std::setlocale(LC_ALL, previous_->name.c_str());
  _configthreadlocale(previous_->perThread);
}

std::filesystem::path ownModulePath() {
  // Without a handle the system would answer for the program instead of for this module.
  const HMODULE module = ownModule();
  if (module == nullptr) {
    return {};
  }
  std::array<wchar_t, MAX_PATH> path{};
  const DWORD length = GetModuleFileNameW(module, path.data(), MAX_PATH);
  // A full buffer holds a path that was cut short.
  if (length == 0 || length == MAX_PATH) {
    return {};
  }
  return std::wstring(path.data(), length);
}

std::string pathBesideModule(const std::filesystem::path& modulePath, const char* name,
                             const char* extension) {
  std::array<wchar_t, _MAX_DRIVE> drive{};
  std::array<wchar_t, _MAX_DIR> directory{};
  std::array<wchar_t, _MAX_FNAME> moduleName{};
  std::array<wchar_t, _MAX_EXT> moduleExtension{};
  if (_wsplitpath_s(modulePath.c_str(), drive.data(), drive.size(), directory.data(),
                    directory.size(), moduleName.data(), moduleName.size(), moduleExtension.data(),
                    moduleExtension.size()) != 0) {
    return {};
  }
  std::array<wchar_t, _MAX_PATH> path{};
  if (_wmakepath_s(path.data(), path.size(), drive.data(), directory.data(), toWide(name).c_str(),
                   toWide(extension).c_str()) != 0) {
    return {};
  }
  return toUtf8(path.data());
}

} // namespace qorocv
