#include "merge_runs.h"

#include "journal.h"
#include "new_file.h"
#include "photograph_file.h"
#include "pictures.h"
#include "run_folder.h"

#include <algorithm>
#include <fstream>
#include <list>
#include <map>
#include <set>
#include <string>
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

std::string inWords(const Shard& shard) {
  return "shard " + std::to_string(shard.index) + "/" + std::to_string(shard.count);
}

// Runs that are no shards stand for themselves.
void checkThatNoShardIsMissing(const std::list<RunFolder>& runs) {
  std::map<int, std::set<int>> indexes; // by the number of shards
  for (const RunFolder& run : runs) {
    if (const auto& shard = run.description().shard) {
      indexes[shard->count].insert(shard->index);
    }
  }
  for (const auto& [count, there] : indexes) {
    int index = 1;
    while (there.count(index) > 0) {
      ++index;
    }
    if (index <= count) {
      const auto missing = static_cast<std::size_t>(count) - there.size();
      throw WrongFolder(inWords({index, count}) + " is missing" +
                        (missing > 1 ? ", and " + std::to_string(missing - 1) + " more" : ""));
    }
  }
}

} // namespace

MergedRun mergeRuns(const std::vector<std::filesystem::path>& runs,
                    const std::filesystem::path& out) {
  std::list<RunFolder> folders; // locked until all is read
  std::vector<std::filesystem::path> journals;
  for (const std::filesystem::path& run : runs) {
    for (const RunFolder& folder : folders) { // which is locked: another process would be blamed
      if (std::filesystem::exists(run) && std::filesystem::equivalent(run, folder.path())) {
        throw WrongFolder(textOf(run) + " is named twice");
      }
    }
    folders.push_back(RunFolder::existing(run));
    journals.push_back(folders.back().journal());
    if (makerOf(folders.back().description()) != makerOf(folders.front().description())) {
      throw WrongFolder(textOf(run) + " was made by " + makerOf(folders.back().description()) +
                        ", and " + textOf(runs.front()) + " by " +
                        makerOf(folders.front().description()));
    }
    if (toJson(folders.back().description().settings) !=
        toJson(folders.front().description().settings)) {
      throw WrongFolder(textOf(run) + " was made with other settings than " + textOf(runs.front()));
    }
    if (folders.back().description().finished.empty()) {
      throw WrongFolder(textOf(run) + " is not finished: start its scan again until it is");
    }
  }
  checkThatNoShardIsMissing(folders);
  RunDescription merged = folders.front().description();
  merged.shard.reset();
  for (const RunFolder& folder : folders) {
    merged.started = std::min(merged.started, folder.description().started);
    merged.finished = std::max(merged.finished, folder.description().finished);
    merged.unread.insert(folder.description().unread.begin(), folder.description().unread.end());
  }
  RunFolder goal = RunFolder::fresh(out);
  writeInOrder(journals, goal.journal());
  copyPictures(folders, goal);
  goal.describe(merged);
  return {exportRun(goal), merged.unread};
}

} // namespace qorfaces
