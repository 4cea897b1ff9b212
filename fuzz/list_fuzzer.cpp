// Any bytes for a list of photographs, and for the lines that processes hand each other.
//
// A list may name any folder of this machine. Those that lie elsewhere than the fuzzer's own are not
// walked.
#include "fuzz_input.h"
#include "inputs.h"
#include "line_reader.h"
#include "support/temporary_directory.h"

#include <algorithm>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

using namespace qorfaces;
using namespace qorocv::fuzzing;

namespace {

namespace fs = std::filesystem;

/// A folder with a photograph in one below it.
class Place {
public:
  Place() {
    fs::create_directory(directory_ / "below");
    require(bool(std::ofstream(photograph()) << "none"), "a photograph");
  }

  const fs::path& path() const { return directory_.path(); }

  fs::path photograph() const { return directory_ / "below" / "a.jpg"; }
  bool isOurs(const fs::path& folder) const {
    return fs::equivalent(folder, directory_.path()) ||
           fs::equivalent(folder, directory_ / "below");
  }

private:
  qorocv::testing::TemporaryDirectory directory_;
};

/// The current folder for as long as this lives: afterwards the fuzzer has its own again.
class Visit {
public:
  explicit Visit(const fs::path& folder) { fs::current_path(folder); }
  ~Visit() {
    std::error_code ignored;
    fs::current_path(before_, ignored);
  }
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;

private:
  const fs::path before_ = fs::current_path();
};

class ListFile {
public:
  explicit ListFile(const std::string& content) {
    require(write(file_, content.data(), content.size()) == static_cast<ssize_t>(content.size()) &&
                lseek(file_, 0, SEEK_SET) == 0,
            "a file in memory");
  }
  ~ListFile() { close(file_); }
  ListFile(const ListFile&) = delete;
  ListFile& operator=(const ListFile&) = delete;

  int descriptor() const { return file_; }
  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

private:
  int file_ = memfd_create("list", 0);
};

std::vector<std::string> partsOf(const std::string& text, char end) {
  std::vector<std::string> parts{""};
  for (const char letter : text) {
    if (letter == end) {
      parts.emplace_back();
    } else {
      parts.back() += letter;
    }
  }
  return parts;
}

// Without dots, and without a slash at its end.
std::string absolute(const std::string& name, const std::string& folder) {
  std::vector<std::string> parts;
  for (const std::string& part :
       partsOf(name.front() == '/' ? name : std::string(folder).append("/").append(name), '/')) {
    if (part == "..") {
      parts.resize(std::max<std::size_t>(parts.size(), 1) - 1);
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
  }
  std::string path;
  for (const std::string& part : parts) {
    path += "/" + part;
  }
  return path.empty() ? "/" : path;
}

std::vector<std::string> namesIn(std::string list, bool nulls) {
  if (!nulls && list.substr(0, 3) == "\xEF\xBB\xBF") { // a byte order mark
    list.erase(0, 3);
  }
  std::vector<std::string> names;
  for (std::string name : partsOf(list, nulls ? '\0' : '\n')) {
    if (!nulls && !name.empty() && name.back() == '\r') {
      name.pop_back();
    }
    if (!name.empty()) {
      names.push_back(name);
    }
  }
  return names;
}

void walk(const std::string& list, bool nulls) {
  static const Place place;
  const Visit visit(place.path());
  std::vector<std::string> wanted;
  std::size_t complaints = 0;
  for (const std::string& name : namesIn(list, nulls)) {
    if (name.find('\0') != std::string::npos) {
      complaints = 1;
      break;
    }
    const std::string path = absolute(name, place.path().string());
    std::error_code ignored;
    const bool isFolder = fs::is_directory(path, ignored);
    if (isFolder && !place.isOurs(path)) {
      return;
    }
    wanted.push_back(isFolder ? place.photograph().string() : path);
  }
  const ListFile file(list);
  Inputs inputs;
  inputs.list = file.path();
  inputs.nulls = nulls;
  Walk found(inputs);
  for (const std::string& path : wanted) {
    const auto photograph = found.next();
    require(photograph && photograph->path.native() == path, "every name, in the list's order");
    require(!photograph->name.empty(), "no photograph without a name");
  }
  require(!found.next() && !found.next(), "nothing that is not in the list");
  require(found.takeComplaints().size() == complaints, "a complaint of a list that is none");
}

void readLines(const std::string& text) {
  std::vector<std::string> wanted = partsOf(text, '\n');
  wanted.pop_back(); // without an end
  const ListFile file(text);
  LineReader reader(file.descriptor());
  for (const std::string& line : wanted) {
    require(reader.next() == line, "every line that has an end");
  }
  require(!reader.next(), "no line without an end");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const bool nulls = input.takeFrom(0, 1) == 1;
  const std::string text = input.rest();
  walk(text, nulls);
  readLines(text);
  return 0;
}
