#include "new_file.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace qorfaces {

namespace fs = std::filesystem;

NewFile::NewFile(fs::path goal) : goal_(std::move(goal)), path_(goal_) {
  path_ += ".new";
  file_.open(path_, std::ios::binary | std::ios::trunc);
}

NewFile::~NewFile() {
  if (!isInPlace_) {
    file_.close();
    std::error_code ignored;
    fs::remove(path_, ignored);
  }
}

void NewFile::write(const std::string& text) {
  file_.write(text.data(), static_cast<std::streamsize>(text.size()));
}

void NewFile::putInPlace() {
  errno = 0;
  file_.close();
  if (!file_) {
    throw CannotWrite(goal_.u8string() +
                      " cannot be written: " + std::generic_category().message(errno));
  }
  std::error_code error;
  fs::rename(path_, goal_, error);
  if (error) {
    throw CannotWrite(goal_.u8string() + " cannot be replaced: " + error.message());
  }
  isInPlace_ = true;
}

void makeDirectory(const fs::path& directory) {
  std::error_code error;
  fs::create_directories(directory, error);
  if (error) {
    throw CannotWrite(directory.u8string() + " cannot be made: " + error.message());
  }
}

} // namespace qorfaces
