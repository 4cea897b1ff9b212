// The annotated copy on its way to its place.
#pragma once

#include <string>

namespace qorfaces {

/// The library ignores a copy that cannot be written; a user who asked for one wants to know, and
/// to keep the one from before. So it is written beside its place first.
class NewCopy {
public:
  /// `goal` is UTF-8; empty for no copy.
  explicit NewCopy(std::string goal);
  /// Removes what has not been put in place.
  ~NewCopy();
  NewCopy(const NewCopy&) = delete;
  NewCopy& operator=(const NewCopy&) = delete;

  /// Where to write it, in UTF-8: in the directory and the format of its place. Empty for no copy.
  const std::string& path() const { return path_; }

  /// Puts it in place of whatever is there. Throws std::runtime_error where it was not written.
  void putInPlace() const;

private:
  std::string goal_;
  std::string path_;
};

} // namespace qorfaces
