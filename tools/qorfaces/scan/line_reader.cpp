#include "line_reader.h"

#include "descriptors.h"

namespace qorfaces {

std::optional<std::string> LineReader::next() {
  std::size_t end = text_.find('\n');
  while (end == std::string::npos) {
    char part[4096];
    const int size = readSome(descriptor_, part, sizeof part);
    if (size <= 0) {
      return std::nullopt;
    }
    text_.append(part, static_cast<std::size_t>(size));
    end = text_.find('\n');
  }
  std::string line = text_.substr(0, end);
  text_.erase(0, end + 1);
  return line;
}

} // namespace qorfaces
