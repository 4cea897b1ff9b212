#include "copy_watch.h"

#include <stdexcept>
#include <system_error>

namespace qorfaces {

CopyWatch::CopyWatch(const std::string& path)
    : path_(std::filesystem::u8path(path)), before_(lastWrite()) {}

void CopyWatch::expectWritten() const {
  if (!path_.empty() && lastWrite() == before_) {
    throw std::runtime_error("cannot write the annotated copy " + path_.u8string());
  }
}

std::optional<std::filesystem::file_time_type> CopyWatch::lastWrite() const {
  std::error_code error;
  const auto time = std::filesystem::last_write_time(path_, error);
  if (error) {
    return std::nullopt;
  }
  return time;
}

} // namespace qorfaces
