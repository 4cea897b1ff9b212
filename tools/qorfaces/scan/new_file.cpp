#include "new_file.h"

#include "photograph_file.h"

#include <cerrno>
#include <stdexcept>
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
    throw std::runtime_error(textOf(goal_) +
                             " cannot be written: " + std::generic_category().message(errno));
  }
  std::error_code error;
  fs::rename(path_, goal_, error);
  if (error) {
    throw std::runtime_error(textOf(goal_) + " cannot be replaced: " + error.message());
  }
  isInPlace_ = true;
}

} // namespace qorfaces
