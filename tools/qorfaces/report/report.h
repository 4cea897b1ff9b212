// A page to look through the photographs of a run, opened from disk.
#pragma once

#include <filesystem>

namespace qorfaces {

/// Writes RUN/report/ anew from RUN/faces.ndjson; the page to open is index.html. One that is there
/// stays until the new one is whole. Throws std::runtime_error where the run cannot be read or the
/// report not be written.
void writeReport(const std::filesystem::path& run);

} // namespace qorfaces
