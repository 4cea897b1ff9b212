// A file on its way to its place.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace qorfaces {

/// Written beside its place first, so that whoever reads it finds the one from before or the whole
/// new one.
class NewFile {
public:
  explicit NewFile(std::filesystem::path goal);
  /// Removes what has not been put in place.
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(const std::string& text);

  /// Throws std::runtime_error where not all of it could be written.
  void putInPlace();

private:
  std::filesystem::path goal_;
  std::filesystem::path path_;
  std::ofstream file_;
  bool isInPlace_ = false;
};

} // namespace qorfaces
