// A photograph on the disk, as a scan knows it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace qorfaces {

struct PhotographFile {
  std::filesystem::path path; // absolute
  std::string name;           // the path below the folder that was scanned, UTF-8
  std::uintmax_t size = 0;    // bytes
  std::int64_t changed = 0;   // microseconds since 1970
};

/// The path in UTF-8 with / between folders. Each byte of a name that is not UTF-8 becomes U+FFFD.
std::string textOf(const std::filesystem::path& path);

/// The same of a path's bytes, with / between folders.
std::string textOfBytes(const std::string& bytes);

/// The bytes of a path that is not UTF-8, in hexadecimal; nothing of one that is.
std::optional<std::string> bytesOf(const std::filesystem::path& path);

/// Reads size and time of change. False where the file is gone or may not be looked at.
bool readState(PhotographFile& file);

} // namespace qorfaces
