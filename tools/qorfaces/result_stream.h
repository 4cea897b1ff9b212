// Standard output for results alone.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace qorfaces {

/// The library and OpenCV print lines of their own to standard output. Results alone belong there,
/// so that a program can read them: from here on everything else is sent to standard error.
class ResultStream {
public:
  ResultStream();

  /// False where the text could not be written, to a full disk for example.
  bool print(const std::string& text);

private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

} // namespace qorfaces
