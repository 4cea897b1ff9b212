#include "merge_runs.h"

#include "export.h"
#include "journal.h"
#include "new_file.h"
#include "photograph_file.h"
#include "pictures.h"
#include "run_folder.h"

#include <algorithm>
#include <fstream>
#include <list>
#include <system_error>

namespace qorfaces {

namespace {

namespace fs = std::filesystem;

// Beside each other on one disk, the same file twice takes no room.
void linkOrCopy(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::remove(to, error); // of a merge that was ended
  fs::create_hard_link(from, to, error);
  if (error) {
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
  }
  if (error) {
    throw CannotWrite(textOf(to) + " cannot be written: " + error.message());
  }
}

// Runs come from other machines, and perhaps from other people.
bool leadsElsewhere(const fs::path& file) {
  return file.has_root_path() || std::find(file.begin(), file.end(), "..") != file.end();
}

// The pictures of the lines that count.
void copyPictures(const std::list<RunFolder>& runs, const RunFolder& goal) {
  std::ifstream journal(goal.journal(), std::ios::binary);
  std::string line;
  while (std::getline(journal, line)) {
    for (const std::string& name : picturesOf(nlohmann::ordered_json::parse(line))) {
      const fs::path file = fs::u8path(name);
      if (leadsElsewhere(file)) {
        throw WrongFolder("a line names a picture outside of its run: " + name);
      }
      const auto run = std::find_if(runs.rbegin(), runs.rend(), [&](const RunFolder& each) {
        return fs::exists(each.path() / file);
      });
      if (run != runs.rend()) {
        makeDirectory((goal.path() / file).parent_path());
        linkOrCopy(run->path() / file, goal.path() / file);
      }
    }
  }
}

} // namespace

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
  copyPictures(folders, goal);
  goal.describe(merged);
  return exportRun(goal, now());
}

} // namespace qorfaces
