// Tables and a summary of a run, for programs and people.
#pragma once

#include "run_folder.h"

#include <string>

namespace qorfaces {

struct Counts {
  long photographs = 0;
  long ok = 0;
  long failed = 0;
  long damaged = 0; // of those that are ok
  long withFaces = 0;
  long faces = 0;
};

/// "2000 photographs, 3 failed, 4000 faces"
std::string inWords(const Counts& counts);

/// Writes photos.csv, faces.csv, failed.csv, look_at_these.csv and summary.json from a journal that is in order. Each
/// file is replaced once the new one is whole. Throws std::runtime_error where that fails.
Counts exportRun(const RunFolder& folder);

} // namespace qorfaces
