// A file on its way to its place.
#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace qorfaces {

/// A file that cannot be written, with the reason for the user: the disk is full, perhaps.
class CannotWrite : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Written beside its place first, so that whoever reads it finds the one from before or the whole
/// new one.
class NewFile {
public:
  /// The directory has to be there. The file is written in `onTheWay`, a directory of the same file
  /// system, which is made, under a name that no other process has; where that is empty, beside its
  /// place, for one process at a time.
  explicit NewFile(std::filesystem::path goal, const std::filesystem::path& onTheWay = {});
  /// Removes what has not been put in place.
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(const std::string& text);

  /// Throws CannotWrite where not all of it could be written. The file is on the disk then: a power
  /// cut leaves the one from before or the new one.
  void putInPlace();

  /// The same without waiting for the disk, for files of which there are many: a power cut soon
  /// after may leave an empty one.
  void putInPlaceUnsynced();

private:
  void keepError(bool isGood);
  void close();
  void replaceGoal();

  std::filesystem::path goal_;
  std::filesystem::path path_;
  std::ofstream file_;
  int error_ = 0; // errno of what has failed
  bool isInPlace_ = false;
};

/// Removes what ended processes have left in a directory of files on their way, and the directory.
void removeUnfinished(const std::filesystem::path& onTheWay);

/// Makes a directory and those above it, where they are missing. Throws CannotWrite.
void makeDirectory(const std::filesystem::path& directory);

} // namespace qorfaces
