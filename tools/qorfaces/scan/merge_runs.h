// Many runs made one.
#pragma once

#include <filesystem>
#include <vector>

namespace qorfaces {

struct Counts;

/// Writes what the runs hold into the folder `out`, as one scan of all would have written it, but for
/// the times in its summary. Throws WrongFolder where a run is none, is not finished or was made with
/// other settings or by another version than the first, and where a shard is missing; std::runtime_error
/// where a journal cannot be read or is damaged.
Counts mergeRuns(const std::vector<std::filesystem::path>& runs, const std::filesystem::path& out);

} // namespace qorfaces
