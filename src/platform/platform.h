// What the operating system must give us. The sources for Windows and for POSIX stand behind this
// header.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

namespace qorocv {

/// Length in UTF-16 units, terminator included, of a NUL-terminated UTF-8 text. Every malformed
/// byte sequence counts as one U+FFFD for each maximal part that no character can begin with. 0 for
/// null.
std::size_t utf16Length(const char* utf8Text);

/// How many bytes the local form of a text of `utf16Units` units (terminator included) may take. On
/// Windows that is the unit count itself, so that a path which needs more bytes than units is cut
/// short there; POSIX locales are multibyte and leave room for every unit's longest form.
std::size_t localBufferSize(std::size_t utf16Units);

/// Converts a NUL-terminated UTF-8 text into the multibyte encoding of the current C locale, as if
/// into a buffer of `bufferSize` bytes: at most `bufferSize` - 1 bytes, never a part of a character
/// (on Windows the C run-time cuts, and may leave the first half of a double-byte one). A null
/// text, a buffer without room for the terminator, and a text with a character that the locale
/// cannot represent within the part that fits all give an empty string.
std::string utf8ToLocale(const char* utf8Text, std::size_t bufferSize);

/// The path under which this system's narrow file functions know a UTF-8 path argument:
/// utf8ToLocale with the buffer that localBufferSize allows. The locale is the one that is current;
/// this function does not switch it.
std::string utf8ToLocalePath(const char* utf8Text);

/// Whether a path in the local encoding leads to a named pipe. Opening one waits, perhaps for ever,
/// for somebody at its other end.
bool isNamedPipe(const std::string& localPath);

/// Whether a path in the local encoding leads to a directory that this system opens like a file, to
/// fail where it is read. Others open none, as if there were no such file.
bool opensDirectory(const std::string& localPath);

/// Which file it is and in which state.
struct FileStamp {
  std::uint64_t volume;
  /// Of the file in its volume.
  std::uint64_t number;
  std::uint64_t size;
  /// When the content was last written, in nanoseconds since 1970.
  std::int64_t written;
  /// When anything about the file last changed. Unlike the time of writing, nobody can set it back.
  std::int64_t changed;
};

inline bool operator==(const FileStamp& a, const FileStamp& b) {
  return std::tie(a.volume, a.number, a.size, a.written, a.changed) ==
         std::tie(b.volume, b.number, b.size, b.written, b.changed);
}

/// The stamp of the file at a path in the local encoding; nothing where there is none.
std::optional<FileStamp> fileStamp(const std::string& localPath);

/// While one lives, the calling thread, and no other, is in the "C" locale.
class ClassicLocaleOfThread {
public:
  ClassicLocaleOfThread();
  ~ClassicLocaleOfThread();
  ClassicLocaleOfThread(const ClassicLocaleOfThread&) = delete;
  ClassicLocaleOfThread& operator=(const ClassicLocaleOfThread&) = delete;

private:
  struct Previous;
  std::unique_ptr<Previous> previous_;
};

/// Full path of the file that this code was loaded from (the library, or the program where the code
/// is linked into one), wherever the process has gone since. Empty where the system cannot tell.
std::filesystem::path ownModulePath();

/// UTF-8 path of the file `name`.`extension` in the directory of `modulePath`.
std::string pathBesideModule(const std::filesystem::path& modulePath, const char* name,
                             const char* extension);

/// Lets OpenCV's loops run on threads of the system's, where OpenCV would otherwise keep threads of
/// its own that a library must not leave behind when it is unloaded: on Windows. Does so once in a
/// process; to be called before OpenCV's first loop.
void useSystemThreads();

} // namespace qorocv
