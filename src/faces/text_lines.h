// The lines of a text file, fast enough for a million of them.
#pragma once

#include <cstddef>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorocv {

class TextLines {
public:
  /// Opens the file at `path`, which is in the encoding of the system's narrow functions.
  explicit TextLines(const std::string& path);

  bool isOpen() const { return file_.is_open(); }

  /// The next line without its end, a line feed that a carriage return may stand before; nothing
  /// behind the last one. It is gone with the next call. Whatever has no line feed within a quarter
  /// of a million bytes comes in parts of that size.
  std::optional<std::string_view> next();

  /// Whether the line that came last was one with its line feed.
  bool isWhole() const { return isWhole_; }

  /// The number of the line that came last; the first is 1.
  std::size_t number() const { return number_; }

private:
  bool refill();

  std::ifstream file_;
  std::vector<char> buffer_;
  std::size_t start_ = 0; // of what has not been given
  std::size_t end_ = 0;
  std::size_t number_ = 0;
  bool isWhole_ = false;
};

} // namespace qorocv
