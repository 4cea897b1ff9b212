#include "journal.h"

#include "descriptors.h"
#include "hexadecimal.h"
#include "new_file.h"
#include "photo_json.h"
#include "pictures.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <boost/uuid/name_generator_sha1.hpp>
#include <boost/uuid/uuid_hash.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <cerrno>
#include <charconv>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace qorfaces {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kBeginning = R"({"version":1,"path":)";

// The path as a line has it, and with it the bytes of one that is not UTF-8.
std::string keyOf(const std::string& bytes) {
  const std::string text = textOfBytes(bytes);
  std::string key = nlohmann::json(text).dump();
  if (text != bytes) {
    key += R"(,"pathBytes":")" + inHexadecimal(bytes) + '"';
  }
  return key;
}

std::string keyOf(const fs::path& path) {
  return keyOf(path.generic_u8string());
}

// No path of this system, where another one may have written it.
std::string keyIn(const nlohmann::ordered_json& line) {
  const auto bytes = line.find("pathBytes");
  return keyOf(bytes == line.end() ? line["path"].get<std::string>()
                                   : fromHexadecimal(bytes->get<std::string>()));
}

/// Where the JSON string that begins at `start` ends, one behind its quote; npos where it does not.
std::size_t endOfString(std::string_view line, std::size_t start) {
  for (std::size_t i = start + 1; i < line.size(); ++i) {
    if (line[i] == '\\') {
      ++i;
    } else if (line[i] == '"') {
      return i + 1;
    }
  }
  return std::string_view::npos;
}

/// Takes a text off the beginning; false where it begins otherwise.
bool take(std::string_view& line, std::string_view beginning) {
  if (line.substr(0, beginning.size()) != beginning) {
    return false;
  }
  line.remove_prefix(beginning.size());
  return true;
}

template <class Number> bool takeNumber(std::string_view& line, Number& number) {
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
  line.remove_prefix(static_cast<std::size_t>(end - line.data()));
  return error == std::errc();
}

boost::uuids::uuid hashOf(std::string_view key) {
  static const boost::uuids::name_generator_sha1 generator{boost::uuids::uuid()};
  return generator(key.data(), key.size());
}

std::runtime_error failure(const fs::path& path, const char* what, int error) {
  return std::runtime_error(textOf(path) + " cannot be " + what + ": " +
                            std::generic_category().message(error));
}

/// Calls `use(offset, line)` for every whole line; returns the offset behind the last one.
template <class Use> std::uintmax_t forEachLine(const fs::path& path, Use use) {
  std::ifstream file(path, std::ios::binary);
  if (!file) { // no empty journal, which would be written over
    throw failure(path, "read", errno);
  }
  std::uintmax_t offset = 0;
  std::string line;
  while (std::getline(file, line) && !file.eof()) {
    use(offset, std::string_view(line));
    offset += line.size() + 1;
  }
  if (file.bad()) {
    throw failure(path, "read", errno);
  }
  return offset;
}

/// Where a line lies.
struct Place {
  std::string key;
  std::size_t journal; // its number
  std::uintmax_t offset;
  std::size_t size; // with its end
  bool isFailed;
};

/// Adds a journal's lines; false where there are damaged ones, which are left out.
bool addPlaces(std::vector<Place>& places, const fs::path& journal, std::size_t number) {
  bool isGood = true;
  const std::uintmax_t end = forEachLine(journal, [&](std::uintmax_t offset,
                                                      std::string_view line) {
    if (const auto head = headOf(line)) {
      places.push_back({std::string(head->key), number, offset, line.size() + 1, head->isFailed});
    } else {
      isGood = false;
    }
  });
  return isGood && end == fs::file_size(journal);
}

bool comesBefore(const Place& a, const Place& b) {
  return a.key < b.key;
}

// By path, and lines of the same path as they were written.
void sort(std::vector<Place>& places) {
  std::stable_sort(places.begin(), places.end(), comesBefore);
}

// Of the same path the last one counts.
void keepLast(std::vector<Place>& sorted) {
  const auto isSame = [](const Place& a, const Place& b) { return a.key == b.key; };
  sorted.erase(sorted.begin(), std::unique(sorted.rbegin(), sorted.rend(), isSame).base());
}

std::string readLine(std::ifstream& journal, const fs::path& path, const Place& place) {
  std::string line(place.size, '\0');
  journal.seekg(static_cast<std::streamoff>(place.offset));
  if (!journal.read(line.data(), static_cast<std::streamsize>(line.size()))) {
    throw failure(path, "read again", errno);
  }
  return line;
}

// Of photographs that have changed: those that the line that counts does not name any more. They may
// show somebody who is in none of the photographs.
void removeReplacedPictures(const fs::path& path, const std::vector<Place>& sorted) {
  std::ifstream journal(path, std::ios::binary);
  const auto picturesAt = [&](const Place& place) {
    return picturesOf(nlohmann::ordered_json::parse(readLine(journal, path, place)));
  };
  for (std::size_t first = 0; first < sorted.size();) {
    std::size_t last = first;
    while (last + 1 < sorted.size() && sorted[last + 1].key == sorted[first].key) {
      ++last;
    }
    std::set<std::string> replaced;
    for (std::size_t i = first; i < last; ++i) {
      const std::vector<std::string> pictures = picturesAt(sorted[i]);
      replaced.insert(pictures.begin(), pictures.end());
    }
    if (!replaced.empty()) {
      for (const std::string& picture : picturesAt(sorted[last])) {
        replaced.erase(picture);
      }
    }
    for (const std::string& picture : replaced) {
      const fs::path file = fs::u8path(picture);
      std::error_code ignored; // no table names it
      if (!leadsElsewhere(file)) {
        fs::remove(path.parent_path() / file, ignored);
      }
    }
    first = last + 1;
  }
}

void writePlaces(const std::vector<fs::path>& journals, const std::vector<Place>& places,
                 const fs::path& goal) {
  std::vector<std::ifstream> files;
  files.reserve(journals.size());
  for (const fs::path& journal : journals) {
    files.emplace_back(journal, std::ios::binary);
  }
  NewFile file(goal);
  for (const Place& place : places) {
    file.write(readLine(files[place.journal], journals[place.journal], place));
  }
  files.clear(); // one of them may be replaced now
  file.putInPlace();
}

} // namespace

std::optional<LineHead> headOf(std::string_view line) {
  const std::string_view whole = line;
  LineHead head{};
  if (line.empty() || line.back() != '}' || !take(line, kBeginning) || line.front() != '"') {
    return std::nullopt;
  }
  std::size_t end = endOfString(line, 0);
  constexpr std::string_view bytes = R"(,"pathBytes":)";
  if (end != std::string_view::npos && line.substr(end, bytes.size()) == bytes) {
    end = endOfString(line, end + bytes.size());
  }
  if (end == std::string_view::npos) {
    return std::nullopt;
  }
  head.key = line.substr(0, end);
  line.remove_prefix(end);
  const bool isGood = take(line, R"(,"size":)") && takeNumber(line, head.size) &&
                      take(line, R"(,"mtime":)") && takeNumber(line, head.changed) &&
                      take(line, ",");
  const auto json = nlohmann::ordered_json::parse(whole, nullptr, false);
  if (!isGood || !isLine(json) || keyIn(json) != head.key || json["size"] != head.size ||
      json["mtime"] != head.changed) { // of what stands there twice, JSON has the last
    return std::nullopt;
  }
  head.isFailed = json["status"] == "failed";
  return head;
}

std::string lineOf(const PhotographFile& file, const std::string& rest) {
  std::string line(kBeginning);
  line += keyOf(file.path);
  line += R"(,"size":)" + std::to_string(file.size);
  line += R"(,"mtime":)" + std::to_string(file.changed);
  line += R"(,"name":)" + nlohmann::json(file.name).dump();
  return line + "," + rest + "}\n";
}

std::string hashText(const fs::path& path) {
  std::string text = boost::uuids::to_string(hashOf(keyOf(path)));
  text.erase(std::remove(text.begin(), text.end(), '-'), text.end());
  return text;
}

std::size_t KnownPhotographs::Hash::operator()(const boost::uuids::uuid& hash) const {
  return boost::uuids::hash_value(hash);
}

bool KnownPhotographs::isNew(const PhotographFile& file) {
  const State now{file.size, file.changed, true};
  const auto [place, isUnknown] = known_.try_emplace(hashOf(keyOf(file.path)), now);
  if (isUnknown) {
    return true;
  }
  State& known = place->second;
  const bool isToBeDone = !known.wasMet && (known.size != now.size || known.changed != now.changed);
  known = now;
  return isToBeDone;
}

void KnownPhotographs::add(const LineHead& head) {
  known_.insert_or_assign(hashOf(head.key), State{head.size, head.changed, false});
}

Journal::Journal(fs::path path, KnownPhotographs& known) : path_(std::move(path)) {
  file_.open(path_, std::ios::binary | std::ios::app);
  if (!file_) {
    throw failure(path_, "written", errno);
  }
  size_ = forEachLine(path_, [&](std::uintmax_t, std::string_view line) {
    if (const auto head = headOf(line)) {
      known.add(*head);
    } else {
      ++strangeLines_;
    }
  });
  if (fs::file_size(path_) > size_) {
    fs::resize_file(path_, size_);
  }
}

void Journal::append(const std::string& line) {
  errno = 0;
  file_.write(line.data(), static_cast<std::streamsize>(line.size()));
  file_.flush();
  if (!file_) {
    const int error = errno;
    file_.close();
    std::error_code ignored; // the next start drops what is left
    fs::resize_file(path_, size_, ignored);
    throw failure(path_, "written", error);
  }
  size_ += line.size();
}

void putInOrder(const fs::path& journal) {
  std::vector<Place> places;
  const bool isWithoutDamage = addPlaces(places, journal, 0);
  const bool isInOrder =
      std::adjacent_find(places.begin(), places.end(), [](const Place& a, const Place& b) {
        return !comesBefore(a, b);
      }) == places.end();
  if (!isInOrder || !isWithoutDamage) {
    sort(places);
    removeReplacedPictures(journal, places);
    keepLast(places);
    writePlaces({journal}, places, journal);
  } else if (!syncToDisk(journal)) {
    throw failure(journal, "written", errno);
  }
}

void dropFailed(const fs::path& journal) {
  if (!fs::exists(journal)) {
    return;
  }
  std::vector<Place> places;
  addPlaces(places, journal, 0);
  sort(places);
  removeReplacedPictures(journal, places);
  keepLast(places);
  places.erase(std::remove_if(places.begin(), places.end(),
                              [](const Place& place) { return place.isFailed; }),
               places.end());
  writePlaces({journal}, places, journal);
}

void writeInOrder(const std::vector<fs::path>& journals, const fs::path& goal) {
  std::vector<Place> places;
  for (std::size_t i = 0; i < journals.size(); ++i) {
    if (!addPlaces(places, journals[i], i)) {
      throw std::runtime_error(textOf(journals[i]) +
                               " is damaged: start its scan again, which looks "
                               "again at what is lost");
    }
  }
  sort(places);
  keepLast(places);
  writePlaces(journals, places, goal);
}

} // namespace qorfaces
