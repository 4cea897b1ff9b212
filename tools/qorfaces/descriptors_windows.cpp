#include "descriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <io.h>
#include <random>
#include <share.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <windows.h>

namespace qorfaces {

// The C library keeps these numbers.
void keepStandardDescriptors() {}

int duplicate(int descriptor) {
  return _dup(descriptor);
}

void redirect(int source, int target) {
  _dup2(source, target);
}

void closeDescriptor(int descriptor) {
  _close(descriptor);
}

int openTemporary() {
  std::error_code error;
  const std::filesystem::path directory = std::filesystem::temp_directory_path(error);
  if (error) {
    return kNoDescriptor;
  }
  // The C library's own temporary files lie where only administrators may write.
  const auto path = directory / ("qorfaces-" + std::to_string(std::random_device()()) + ".txt");
  int descriptor = kNoDescriptor;
  _wsopen_s(&descriptor, path.c_str(), _O_CREAT | _O_EXCL | _O_TEMPORARY | _O_RDWR | _O_BINARY,
            _SH_DENYNO, _S_IREAD | _S_IWRITE);
  return descriptor;
}

void rewindDescriptor(int descriptor) {
  _lseek(descriptor, 0, SEEK_SET);
}

int readSome(int descriptor, char* bytes, std::size_t size) {
  return _read(descriptor, bytes, static_cast<unsigned>(size));
}

int writeSome(int descriptor, const char* bytes, std::size_t size) {
  return _write(descriptor, bytes, static_cast<unsigned>(size));
}

bool isTerminal(int descriptor) {
  return _isatty(descriptor) != 0;
}

std::optional<int> columnsOf(int terminal) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  const auto console = reinterpret_cast<HANDLE>(_get_osfhandle(terminal));
  return GetConsoleScreenBufferInfo(console, &info) != 0 ? std::optional<int>(info.dwSize.X)
                                                         : std::nullopt;
}

std::size_t sizeOf(int descriptor) {
  const __int64 size = _filelengthi64(descriptor);
  return size > 0 ? static_cast<std::size_t>(size) : 0;
}

bool syncToDisk(const std::filesystem::path& path) {
  const int descriptor = _wopen(path.c_str(), _O_RDWR | _O_BINARY);
  if (descriptor < 0) {
    return false;
  }
  const bool isSynced = _commit(descriptor) == 0;
  const int error = errno;
  _close(descriptor);
  errno = error;
  return isSynced;
}

void emptyDescriptor(int descriptor) {
  // A failure leaves old lines in a file that nobody keeps.
  if (_chsize(descriptor, 0) == 0) {
    rewindDescriptor(descriptor);
  }
}

} // namespace qorfaces
