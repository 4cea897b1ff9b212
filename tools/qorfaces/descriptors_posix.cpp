#include "descriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qorfaces {

void keepStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) < 0) {
      // The lowest that is free, which is this one. Whoever uses it meets an error as before.
      open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

int duplicate(int descriptor) {
  // Never a standard one, even where the user closed it.
  return fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

void redirect(int source, int target) {
  dup2(source, target);
}

void closeDescriptor(int descriptor) {
  close(descriptor);
}

// In memory: the place for temporary files may be full, or read-only.
int openTemporary() {
  const int file = memfd_create("qorfaces", MFD_CLOEXEC);
  if (file < 0) {
    return kNoDescriptor;
  }
  const int descriptor = duplicate(file);
  close(file);
  return descriptor;
}

void rewindDescriptor(int descriptor) {
  lseek(descriptor, 0, SEEK_SET);
}

int readSome(int descriptor, char* bytes, std::size_t size) {
  ssize_t got = -1;
  do {
    got = read(descriptor, bytes, size);
  } while (got < 0 && errno == EINTR);
  return static_cast<int>(got);
}

int writeSome(int descriptor, const char* bytes, std::size_t size) {
  ssize_t written = -1;
  do {
    written = write(descriptor, bytes, size);
  } while (written < 0 && errno == EINTR);
  return static_cast<int>(written);
}

bool isTerminal(int descriptor) {
  return isatty(descriptor) != 0;
}

std::optional<int> columnsOf(int terminal) {
  winsize size{};
  return ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0
             ? std::optional<int>(size.ws_col)
             : std::nullopt;
}

std::size_t sizeOf(int descriptor) {
  struct stat state {};
  return fstat(descriptor, &state) == 0 ? static_cast<std::size_t>(state.st_size) : 0;
}

bool syncToDisk(const std::filesystem::path& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    return false;
  }
  const bool isSynced = fsync(descriptor) == 0 || errno == EINVAL; // of what no disk holds
  const int error = errno;
  close(descriptor);
  errno = error;
  return isSynced;
}

void emptyDescriptor(int descriptor) {
  // A failure leaves old lines in a file that nobody keeps.
  if (ftruncate(descriptor, 0) == 0) {
    rewindDescriptor(descriptor);
  }
}

} // namespace qorfaces
