#include "new_file.h"

#include "descriptors.h"

#include <cerrno>
#include <random>
#include <string>
#include <system_error>
#include <utility>

namespace qorfaces {

namespace fs = std::filesystem;

namespace {

constexpr const char* kUnfinished = ".new";

fs::path placeIn(const fs::path& onTheWay) {
  makeDirectory(onTheWay);
  return onTheWay / std::to_string(std::random_device()());
}

} // namespace

NewFile::NewFile(fs::path goal, const fs::path& onTheWay)
    : goal_(std::move(goal)), path_(onTheWay.empty() ? goal_ : placeIn(onTheWay)) {
  path_ += kUnfinished;
  errno = 0;
  file_.open(path_, std::ios::binary | std::ios::trunc);
  keepError(file_.good());
}

NewFile::~NewFile() {
  if (!isInPlace_) {
    file_.close();
    std::error_code ignored;
    fs::remove(path_, ignored);
  }
}

// Of the first step that fails: those behind it know no reason of their own.
void NewFile::keepError(bool isGood) {
  if (!isGood && error_ == 0) {
    error_ = errno != 0 ? errno : EIO;
  }
}

void NewFile::write(const std::string& text) {
  errno = 0;
  file_.write(text.data(), static_cast<std::streamsize>(text.size()));
  keepError(file_.good());
}

void NewFile::close() {
  errno = 0;
  file_.close();
  keepError(file_.good());
}

void NewFile::putInPlace() {
  close();
  errno = 0;
  keepError(syncToDisk(path_));
  replaceGoal();
  syncToDisk(goal_.has_parent_path() ? goal_.parent_path() : ".");
}

void NewFile::putInPlaceUnsynced() {
  close();
  replaceGoal();
}

void NewFile::replaceGoal() {
  if (error_ != 0) {
    throw CannotWrite(goal_.u8string() +
                      " cannot be written: " + std::generic_category().message(error_));
  }
  std::error_code error;
  fs::rename(path_, goal_, error);
  if (error) {
    throw CannotWrite(goal_.u8string() + " cannot be replaced: " + error.message());
  }
  isInPlace_ = true;
}

void removeUnfinished(const fs::path& onTheWay) {
  std::error_code ignored;
  for (fs::directory_iterator file(onTheWay, ignored); file != fs::directory_iterator();
       file.increment(ignored)) {
    if (file->path().extension() == kUnfinished) {
      std::error_code failed; // another time
      fs::remove(file->path(), failed);
    }
  }
  fs::remove(onTheWay, ignored);
}

void makeDirectory(const fs::path& directory) {
  std::error_code error;
  fs::create_directories(directory, error);
  if (error) {
    throw CannotWrite(directory.u8string() + " cannot be made: " + error.message());
  }
}

} // namespace qorfaces
