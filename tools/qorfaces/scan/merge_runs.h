// Many runs made one.
#pragma once

#include "export.h"

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace qorfaces {

/// A run of many.
struct MergedRun {
  Counts counts;
  std::set<std::string> unread; // folders and lists that a scan could not read, with the reason
};

/// Writes what the runs hold into the folder `out`, as one scan of all would have written it, but for
/// the times in its summary. Throws WrongFolder where a run is none, is not finished or was made with
/// other settings or by another version than the first, and where a shard is missing; std::runtime_error
/// where a journal cannot be read or is damaged.
MergedRun mergeRuns(const std::vector<std::filesystem::path>& runs,
                    const std::filesystem::path& out);

} // namespace qorfaces
