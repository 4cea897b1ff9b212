#include "inputs.h"

#include "descriptors.h"

#include <algorithm>
#include <cctype>
#include <system_error>
#include <utility>
#ifdef _WIN32
#include <windows.h>
#endif

namespace qorfaces {

namespace fs = std::filesystem;

namespace {

// Not fs::absolute: a name below the current folder must not become one with dots in it.
fs::path absolutePath(const std::string& text) {
  std::error_code error;
  const fs::path path = fs::absolute(fs::u8path(text), error).lexically_normal();
  return path.has_filename() || !path.has_parent_path() ? path : path.parent_path();
}

bool isHidden(const fs::path& path) {
  const fs::path name = path.filename();
  return !name.empty() && name.native().front() == '.';
}

// Without links.
fs::path realPath(const fs::path& folder) {
#ifdef _WIN32
  // The standard library follows none here.
  constexpr DWORD everybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE handle = CreateFileW(folder.c_str(), 0, everybody, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  std::wstring text(32768, L'\0');
  text.resize(GetFinalPathNameByHandleW(handle, text.data(), static_cast<DWORD>(text.size()), 0));
  CloseHandle(handle);
  return text;
#else
  std::error_code ignored; // one that is gone is not entered
  return fs::canonical(folder, ignored);
#endif
}

// The pictures below are what scans have made, and none of the photographs.
bool isRunFolder(const fs::path& folder) {
  std::error_code ignored;
  return fs::exists(folder / "run.json", ignored) && fs::exists(folder / "faces.ndjson", ignored);
}

// A link that leads nowhere is a photograph that cannot be read; a pipe is none, and would be waited
// for.
bool isFileOrGone(const fs::directory_entry& entry) {
  std::error_code ignored;
  const fs::file_type type = entry.status(ignored).type();
  return type == fs::file_type::regular || type == fs::file_type::not_found;
}

/// Without the C library's stream: a process that ends while somebody reads from that one may wait for
/// the next line.
class StandardInput : public std::streambuf {
protected:
  int_type underflow() override {
    const int size = readSome(0, part_, sizeof part_);
    if (size <= 0) {
      return traits_type::eof();
    }
    setg(part_, part_, part_ + size);
    return traits_type::to_int_type(*part_);
  }

private:
  char part_[4096];
};

} // namespace

struct Walk::OpenFolder {
  fs::path real; // without links
  fs::directory_iterator entry;
};

Walk::Walk(const Inputs& inputs)
    : inputs_(inputs), leftOut_(inputs.leftOut.empty() ? fs::path() : realPath(inputs.leftOut)),
      listIsDone_(inputs.list.empty()), standardBuffer_(std::make_unique<StandardInput>()),
      standardInput_(standardBuffer_.get()) {}

std::optional<PhotographFile> Walk::next() {
  while (true) {
    if (auto file = std::exchange(named_, std::nullopt)) {
      return file;
    }
    if (auto file = nextInFolders()) {
      return file;
    }
    if (auto file = nextInList()) {
      return file;
    }
    if (nextPath_ < inputs_.paths.size()) {
      const std::string& path = inputs_.paths[nextPath_++];
      if (path == "-") {
        list_ = &standardInput_;
      } else {
        begin(absolutePath(path));
      }
    } else if (!listIsDone_) {
      listIsDone_ = true;
      listFile_.open(fs::u8path(inputs_.list), std::ios::binary);
      list_ = &listFile_;
      if (!listFile_) {
        complaints_.push_back(inputs_.list + " cannot be opened");
        list_ = nullptr;
      }
    } else {
      return std::nullopt;
    }
  }
}

std::vector<std::string> Walk::takeComplaints() {
  return std::exchange(complaints_, {});
}

void Walk::begin(const fs::path& path) {
  std::error_code error;
  if (fs::is_directory(path, error)) {
    root_ = path;
    enter(path);
  } else {
    named_ = PhotographFile{path, textOf(path.filename())};
  }
}

void Walk::enter(const fs::path& folder) {
  std::error_code error;
  fs::path real = realPath(folder);
  const bool isBeingWalked =
      std::any_of(folders_.begin(), folders_.end(),
                  [&](const std::shared_ptr<OpenFolder>& open) { return open->real == real; });
  if (isBeingWalked || (!leftOut_.empty() && real == leftOut_)) {
    return;
  }
  fs::directory_iterator entry(folder, error);
  if (error) {
    complaints_.push_back(textOf(folder) + " cannot be read: " + error.message());
    return;
  }
  folders_.push_back(std::make_shared<OpenFolder>(OpenFolder{std::move(real), std::move(entry)}));
}

std::optional<PhotographFile> Walk::nextInFolders() {
  while (!folders_.empty()) {
    OpenFolder& folder = *folders_.back();
    if (folder.entry == fs::directory_iterator()) {
      folders_.pop_back();
      continue;
    }
    const fs::directory_entry entry = *folder.entry;
    std::error_code error;
    folder.entry.increment(error);
    if (error) {
      complaints_.push_back(textOf(entry.path().parent_path()) +
                            " cannot be read to its end: " + error.message());
      folder.entry = {};
    }
    if (isHidden(entry.path())) {
      continue;
    }
    if (entry.is_directory(error)) {
      if (!isRunFolder(entry.path())) {
        enter(entry.path());
      }
    } else if (isFileOrGone(entry) && isWanted(entry.path())) {
      return PhotographFile{entry.path(), textOf(entry.path().lexically_relative(root_))};
    }
  }
  return std::nullopt;
}

std::optional<PhotographFile> Walk::nextInList() {
  std::string line;
  while (list_ != nullptr && std::getline(*list_, line, inputs_.nulls ? '\0' : '\n')) {
    if (!inputs_.nulls && !line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    if (line.empty()) {
      continue;
    }
    // No path has one, and the system would read but what is before it.
    if (const std::size_t null = line.find('\0'); null != std::string::npos) {
      complaints_.push_back(textOf(fs::u8path(line.substr(0, null))) +
                            " has a NUL behind it in its list, which -0 reads");
      continue;
    }
    begin(absolutePath(line));
    if (named_) {
      named_->name = textOf(fs::u8path(line).lexically_normal());
      return std::exchange(named_, std::nullopt);
    }
    if (auto file = nextInFolders()) {
      return file;
    }
  }
  list_ = nullptr;
  return std::nullopt;
}

bool Walk::isWanted(const fs::path& file) const {
  std::string extension = textOf(file.extension());
  if (extension.empty()) {
    return false;
  }
  extension.erase(0, 1);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return inputs_.extensions.count(extension) > 0;
}

} // namespace qorfaces
