// Folders of photographs, looked at by many processes and written down as they are done.
#pragma once

#include "exit_code.h"
#include "inputs.h"
#include "run_folder.h"
#include "scan_settings.h"

#include <filesystem>
#include <optional>
#include <string>

namespace qorfaces {

struct ScanOptions {
  Inputs inputs;
  std::filesystem::path out;
  std::string models;
  ScanSettings settings;
  std::optional<Shard> shard;
  bool retryFailed = false;
  int jobs = 1;  // photographs at once, of all workers together
  int slots = 1; // and of each, where there are so many jobs
  bool quiet = false;
};

/// Throws std::runtime_error with a text for the user where it cannot go on.
ExitCode scan(ScanOptions options);

} // namespace qorfaces
