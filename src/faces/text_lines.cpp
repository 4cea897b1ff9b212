#include "faces/text_lines.h"

#include <cstring>

namespace qorocv {

TextLines::TextLines(const std::string& path)
    : file_(path, std::ios::binary), buffer_(std::size_t{1} << 18) {}

// Moves what has not been given to the front and reads on behind it.
bool TextLines::refill() {
  const std::size_t kept = end_ - start_;
  std::memmove(buffer_.data(), buffer_.data() + start_, kept);
  file_.read(buffer_.data() + kept, static_cast<std::streamsize>(buffer_.size() - kept));
  start_ = 0;
  end_ = kept + static_cast<std::size_t>(file_.gcount());
  return end_ > kept;
}

std::optional<std::string_view> TextLines::next() {
  std::size_t searched = 0;
  const char* lineFeed = nullptr;
  do {
    const char* const from = buffer_.data() + start_ + searched;
    searched = end_ - start_;
    lineFeed = static_cast<const char*>(
        std::memchr(from, '\n', static_cast<std::size_t>(buffer_.data() + end_ - from)));
  } while (lineFeed == nullptr && refill());

  const char* const line = buffer_.data() + start_;
  std::size_t length = end_ - start_;
  if (lineFeed != nullptr) {
    length = static_cast<std::size_t>(lineFeed - line);
    start_ += length + 1;
  } else if (length > 0) {
    start_ = end_;
  } else {
    return std::nullopt;
  }
  ++number_;
  isWhole_ = lineFeed != nullptr;
  if (length > 0 && line[length - 1] == '\r') {
    --length;
  }
  return std::string_view(line, length);
}

} // namespace qorocv
