// Lines from a descriptor.
#pragma once

#include <optional>
#include <string>

namespace qorfaces {

/// Without the C library's stream: flushing all streams, which the console does, would wait for a
/// line that is being waited for.
class LineReader {
public:
  explicit LineReader(int descriptor) : descriptor_(descriptor) {}

  /// The next line without its end; nothing behind the last one that has an end.
  std::optional<std::string> next();

private:
  int descriptor_;
  std::string text_;
};

} // namespace qorfaces
