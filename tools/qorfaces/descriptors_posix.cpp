#include "descriptors.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace qorfaces {

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

int openTemporary() {
  std::FILE* const file = std::tmpfile();
  if (file == nullptr) {
    return kNoDescriptor;
  }
  const int descriptor = duplicate(fileno(file));
  std::fclose(file);
  return descriptor;
}

void rewindDescriptor(int descriptor) {
  lseek(descriptor, 0, SEEK_SET);
}

int readSome(int descriptor, char* bytes, std::size_t size) {
  return static_cast<int>(read(descriptor, bytes, size));
}

bool writeAll(int descriptor, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = write(descriptor, bytes, size);
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written <= 0) {
      return false;
    }
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

void emptyDescriptor(int descriptor) {
  // A failure leaves old lines in a file that nobody keeps.
  if (ftruncate(descriptor, 0) == 0) {
    rewindDescriptor(descriptor);
  }
}

} // namespace qorfaces
