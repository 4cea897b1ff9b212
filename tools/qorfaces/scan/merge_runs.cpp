#include "merge_runs.h"

#include "export.h"
#include "journal.h"
#include "run_folder.h"

#include <algorithm>
#include <list>

namespace qorfaces {

Counts mergeRuns(const std::vector<std::filesystem::path>& runs, const std::filesystem::path& out) {
  std::list<RunFolder> folders; // locked until all is read
  std::vector<std::filesystem::path> journals;
  for (const std::filesystem::path& run : runs) {
    folders.push_back(RunFolder::existing(run));
    journals.push_back(folders.back().journal());
    if (toJson(folders.back().description().settings) !=
        toJson(folders.front().description().settings)) {
      throw WrongFolder(textOf(run) + " was made with other settings than " + textOf(runs.front()));
    }
  }
  RunDescription merged = folders.front().description();
  merged.shard.reset();
  for (const RunFolder& folder : folders) {
    merged.started = std::min(merged.started, folder.description().started);
  }
  RunFolder goal = RunFolder::fresh(out);
  writeInOrder(journals, goal.journal());
  goal.describe(merged);
  return exportRun(goal, now());
}

} // namespace qorfaces
