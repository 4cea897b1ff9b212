// faces.ndjson: a line a photograph, the journal of a run and its result.
#pragma once

#include "photograph_file.h"

#include <boost/uuid/uuid.hpp>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qorfaces {

/// What tells a line's photograph and its state.
struct LineHead {
  std::string_view key; // the path as it is written there: the same for the same path
  std::uintmax_t size;
  std::int64_t changed;
  bool isFailed; // it could not be looked at
};

/// Nothing of a damaged line, which this program has not written so.
std::optional<LineHead> headOf(std::string_view line);

/// A line: its head and `rest`, the members of the JSON object behind it, without braces.
std::string lineOf(const PhotographFile& file, const std::string& rest);

/// What tells a path from all others, in hexadecimal digits.
std::string hashText(const std::filesystem::path& path);

/// The photographs that a run knows, by the hashes of their paths: a million take little room.
class KnownPhotographs {
public:
  /// Whether the photograph is to be looked at: not twice, and not where a line of its state is
  /// there already.
  bool isNew(const PhotographFile& file);

  /// The photograph of a line that is there already.
  void add(const LineHead& head);

  std::size_t count() const { return known_.size(); }

private:
  struct State {
    std::uintmax_t size;
    std::int64_t changed;
    bool wasMet; // by this scan
  };
  struct Hash {
    std::size_t operator()(const boost::uuids::uuid& hash) const;
  };

  std::unordered_map<boost::uuids::uuid, State, Hash> known_;
};

class Journal {
public:
  /// Reads what is there and drops a last line without an end. Throws std::runtime_error where the
  /// file cannot be read or written.
  Journal(std::filesystem::path path, KnownPhotographs& known);

  /// Lines that could not be understood; they are left out when the run is put in order.
  int strangeLines() const { return strangeLines_; }

  /// Adds a line and hands it to the system. Throws std::runtime_error where that fails, with the
  /// file as it was before.
  void append(const std::string& line);

private:
  std::filesystem::path path_;
  std::uintmax_t size_ = 0; // of the whole lines
  int strangeLines_ = 0;
  std::ofstream file_;
};

/// Sorts the lines by path, the last one of each path alone, unless they are so already. The file is
/// replaced once the new one is whole, and on the disk in any case. Pictures that were replaced, which
/// only lines before the last one name, are removed. Throws std::runtime_error where that fails.
void putInOrder(const std::filesystem::path& journal);

/// Leaves out the photographs that failed, so that they are looked at again, and removes pictures that
/// were replaced. Nothing is done where there is no journal yet. Throws std::runtime_error where that
/// fails.
void dropFailed(const std::filesystem::path& journal);

/// Writes what `journals` hold in order into one. Throws std::runtime_error where that fails, and where
/// a line is damaged.
void writeInOrder(const std::vector<std::filesystem::path>& journals,
                  const std::filesystem::path& goal);

} // namespace qorfaces
