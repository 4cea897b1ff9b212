// What a scan is to look at: folders, files and lists of files, one photograph after the other.
#pragma once

#include "photograph_file.h"

#include <fstream>
#include <istream>
#include <memory>
#include <optional>
#include <set>
#include <streambuf>
#include <string>
#include <vector>

namespace qorfaces {

struct Inputs {
  std::vector<std::string> paths; // folders and files, UTF-8; "-" is the list on standard input
  std::string list;               // a file with a path on each line; empty: none
  bool nulls = false;             // lists have a NUL behind each path in place of a line's end
  std::filesystem::path leftOut;  // a folder that is not entered; empty: none
  std::set<std::string> extensions{"jpg", "jpeg", "png", "tif", "tiff", "webp", "bmp"};
};

/// The photographs of the inputs, found while they are asked for: nothing waits until a folder has
/// been walked to its end. Links are followed, but never into a folder that is being walked. Names
/// that begin with a dot are left out below folders, as are run folders and files without a wanted
/// extension; what is named itself is taken whatever its name.
class Walk {
public:
  explicit Walk(const Inputs& inputs);
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;

  /// The next photograph, without its size and time; nothing behind the last one.
  std::optional<PhotographFile> next();

  /// Folders, lists and lines of lists that could not be read, with the reason, since this was last
  /// asked.
  std::vector<std::string> takeComplaints();

private:
  struct OpenFolder;

  std::optional<PhotographFile> nextInFolders();
  std::optional<PhotographFile> nextInList();
  std::optional<std::string> nextListed();
  void beginList(std::istream& list, const std::string& name);
  void enter(const std::filesystem::path& folder);
  void begin(const std::filesystem::path& path);
  bool isWanted(const std::filesystem::path& file) const;

  const Inputs& inputs_;
  const std::filesystem::path leftOut_; // without links
  std::size_t nextPath_ = 0;
  bool listIsDone_ = false;
  std::ifstream listFile_;
  std::unique_ptr<std::streambuf> standardBuffer_;
  std::istream standardInput_;
  std::istream* list_ = nullptr; // the one that is being read
  std::string listName_;
  bool isListNew_ = false;     // nothing has been read of it
  std::filesystem::path root_; // the folder that is being walked
  std::vector<std::shared_ptr<OpenFolder>> folders_;
  std::optional<PhotographFile> named_; // a file that was named itself
  std::vector<std::string> complaints_;
};

} // namespace qorfaces
