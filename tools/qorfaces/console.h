// Who may write where on the user's terminal.
#pragma once

#include <string>

namespace qorfaces {

/// Results alone belong to standard output, and our own messages to standard error. The library and
/// the libraries under it print lines of their own to both: from here on these go to a temporary
/// file, until the console is gone. Where the process ends before that, by a crash for example, its
/// last words are not lost: what was not taken appears on standard error.
///
/// Where no temporary file can be made, other lines go to standard error at once. One console at a
/// time.
class Console {
public:
  Console();
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// False where the text could not be written, to a full disk for example.
  bool print(const std::string& results);

  /// A line of our own on standard error.
  void complain(const std::string& message);

  /// Text of the libraries on standard error.
  void show(const std::string& libraryText);

  /// Whether they have printed anything since it was last taken. Of those who have ended what they
  /// were at, that is: what is still in a stream does not count.
  bool hasLibraryText() const;

  /// What the libraries have printed since this was last asked. None of them may be at work.
  std::string takeLibraryText();
};

} // namespace qorfaces
