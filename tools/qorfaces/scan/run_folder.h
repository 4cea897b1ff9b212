// The folder that a scan writes: which files it has, whose settings they are, and who may write.
#pragma once

#include "scan_settings.h"

#include <boost/interprocess/sync/file_lock.hpp>
#include <filesystem>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

namespace qorfaces {

/// Which part of all photographs a scan takes: those whose name has the CRC-32 that gives `index`
/// modulo `count`.
struct Shard {
  int index; // from 1
  int count;
};

/// What run.json tells.
struct RunDescription {
  ScanSettings settings;
  std::optional<Shard> shard;
  std::string started;  // the first scan; UTC
  std::string finished; // the last one; empty: it has not come to its end
  std::set<std::string>
      unread;          // folders and lists that the last one could not read, with the reason
  std::string library; // the versions that made every line
  std::string opencv;
};

nlohmann::ordered_json toJson(const RunDescription& run);

/// "qorfaces 0.1.0 with OpenCV 4.6.0": others may find other faces.
std::string makerOf(const RunDescription& run);

/// A run folder that is not what the command line takes it for; with a text for the user.
class WrongFolder : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// A run folder that nobody else writes to for as long as this lives. Its member functions throw
/// WrongFolder where the folder cannot be used.
class RunFolder {
public:
  /// A folder of a scan, which is made where it is missing, and which has no other settings.
  static RunFolder forScan(const std::filesystem::path& path, const ScanSettings& settings,
                           const std::optional<Shard>& shard);

  /// A folder in which a scan has been.
  static RunFolder existing(const std::filesystem::path& path);

  /// A folder in which no scan has been, and which says so until it is described.
  static RunFolder fresh(const std::filesystem::path& path);

  void describe(const RunDescription& run);

  /// Says that a scan has begun, or come to its end now. Whoever merges runs wants to know.
  void describeAsBegun();
  void describeAsFinished(const std::set<std::string>& unread);

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path journal() const { return path_ / "faces.ndjson"; }
  /// Not of a fresh one.
  const RunDescription& description() const { return *description_; }

private:
  explicit RunFolder(std::filesystem::path path);
  void lock();

  std::filesystem::path path_;
  std::optional<RunDescription> description_; // as it is written there
  boost::interprocess::file_lock lock_;
};

/// The time of day and date in UTC, as ISO 8601 writes it.
std::string now();

} // namespace qorfaces
