// A photograph's name as the library takes it.
#pragma once

#include "descriptors.h"

#include <filesystem>
#include <string>

namespace qorfaces {

/// The library takes names in UTF-8, and on Windows opens files by the user's code page, which lacks
/// most of the world's letters. Other names have another one for as long as this lives.
class NameForLibrary {
public:
  /// `name` is UTF-8. On Windows a name beyond ASCII gets its short one (8.3), or, on a volume that
  /// has none, that of a copy in the folder for temporary files.
  static NameForLibrary ofText(const std::string& name);

  /// `hexadecimal` holds the bytes of a name that is not UTF-8, which Linux alone has; reached
  /// through a descriptor.
  static NameForLibrary ofBytes(const std::string& hexadecimal);

  /// Of either kind.
  static NameForLibrary ofPath(const std::filesystem::path& path);

  ~NameForLibrary();
  NameForLibrary(NameForLibrary&& other) noexcept;
  NameForLibrary(const NameForLibrary&) = delete;
  NameForLibrary& operator=(const NameForLibrary&) = delete;

  const std::string& text() const { return name_; }

private:
  NameForLibrary() = default;

  std::string name_;
  std::filesystem::path copy_; // empty: none
  int descriptor_ = kNoDescriptor;
};

} // namespace qorfaces
