#include "run_folder.h"

#include "new_file.h"
#include "photograph_file.h"

#include <opencv2/core/utility.hpp>

#include <ctime>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace qorfaces {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

fs::path descriptionIn(const fs::path& folder) {
  return folder / "run.json";
}

void makeFolder(const fs::path& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) {
    throw WrongFolder(textOf(path) + " cannot be made: " + error.message());
  }
}

bool isEmpty(std::ifstream& file) {
  return file.peek() == std::ifstream::traits_type::eof();
}

bool hasNoLines(const fs::path& folder) {
  std::ifstream journal(folder / "faces.ndjson", std::ios::binary);
  return !journal || isEmpty(journal);
}

std::optional<RunDescription> readDescription(const fs::path& folder) {
  std::ifstream file(descriptionIn(folder), std::ios::binary);
  // An empty one is what a power cut has left of a run that was just begun.
  if (!file || (isEmpty(file) && hasNoLines(folder))) {
    return std::nullopt;
  }
  try {
    const Json json = Json::parse(file);
    if (json.at("version") != 1) {
      throw std::runtime_error("of another version");
    }
    RunDescription run{scanSettingsOf(json.at("settings")),
                       {},
                       json.at("started"),
                       json.value("finished", ""),
                       json.value("unread", std::set<std::string>()),
                       json.at("library"),
                       json.at("opencv")};
    if (json.contains("shard")) {
      run.shard = Shard{json["shard"].at("index"), json["shard"].at("count")};
      if (run.shard->index < 1 || run.shard->index > run.shard->count) {
        throw std::runtime_error("no such shard");
      }
    }
    return run;
  } catch (const std::exception& error) {
    throw WrongFolder(textOf(descriptionIn(folder)) +
                      " is none that this program has written: " + error.what());
  }
}

// What has to be the same where a scan goes on.
Json identityOf(const RunDescription& run) {
  Json json = toJson(run);
  json.erase("started");
  json.erase("finished");
  json.erase("unread");
  return json;
}

} // namespace

Json toJson(const RunDescription& run) {
  Json json{{"version", 1},
            {"library", run.library},
            {"opencv", run.opencv},
            {"settings", toJson(run.settings)}};
  if (run.shard) {
    json["shard"] = {{"index", run.shard->index}, {"count", run.shard->count}};
  }
  json["started"] = run.started;
  if (!run.finished.empty()) {
    json["finished"] = run.finished;
  }
  if (!run.unread.empty()) {
    json["unread"] = run.unread;
  }
  return json;
}

std::string makerOf(const RunDescription& run) {
  return "qorfaces " + run.library + " with OpenCV " + run.opencv;
}

RunFolder::RunFolder(fs::path path) : path_(std::move(path)) {}

void RunFolder::lock() {
  const fs::path file = path_ / "lock";
  if (!std::ofstream(file, std::ios::app)) {
    throw WrongFolder(textOf(path_) + " cannot be written to");
  }
  try {
    lock_ = boost::interprocess::file_lock(file.c_str());
    if (lock_.try_lock()) {
      return;
    }
  } catch (const boost::interprocess::interprocess_exception& error) {
    throw WrongFolder(textOf(file) + " cannot be locked: " + error.what());
  }
  throw WrongFolder("another qorfaces is at work in " + textOf(path_));
}

void RunFolder::describe(const RunDescription& run) {
  NewFile file(descriptionIn(path_));
  // The system's reasons need not be UTF-8.
  file.write(toJson(run).dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
  file.putInPlace();
  description_ = run;
}

void RunFolder::describeAsBegun() {
  if (!description_->finished.empty()) {
    RunDescription run = *description_;
    run.finished.clear();
    run.unread.clear();
    describe(run);
  }
}

void RunFolder::describeAsFinished(const std::set<std::string>& unread) {
  RunDescription run = *description_;
  run.finished = now();
  run.unread = unread;
  describe(run);
}

RunFolder RunFolder::forScan(const fs::path& path, const ScanSettings& settings,
                             const std::optional<Shard>& shard) {
  makeFolder(path);
  RunFolder folder(path);
  folder.lock();
  const RunDescription wanted{
      settings, shard, now(), {}, {}, QOROCV460_VERSION, cv::getVersionString()};
  folder.description_ = readDescription(path);
  if (!folder.description_) {
    folder.describe(wanted);
    return folder;
  }
  if (makerOf(*folder.description_) != makerOf(wanted)) {
    throw WrongFolder(textOf(path) + " holds a scan by " + makerOf(*folder.description_) +
                      ", and this is " + makerOf(wanted) + "; use that, or another folder");
  }
  if (const Json there = identityOf(*folder.description_); there != identityOf(wanted)) {
    throw WrongFolder(textOf(path) + " holds a scan with other settings, " +
                      there["settings"].dump() +
                      (there.contains("shard") ? ", shard " + there["shard"].dump() : "") +
                      "; use those, or another folder");
  }
  return folder;
}

RunFolder RunFolder::existing(const fs::path& path) {
  RunFolder folder(path);
  folder.description_ = readDescription(path);
  if (!folder.description_) {
    throw WrongFolder(textOf(path) + " holds no scan");
  }
  folder.lock();
  return folder;
}

RunFolder RunFolder::fresh(const fs::path& path) {
  makeFolder(path);
  RunFolder folder(path);
  folder.lock();
  if (readDescription(path)) {
    throw WrongFolder(textOf(path) + " holds a scan already");
  }
  return folder;
}

std::string now() {
  const std::time_t seconds = std::time(nullptr);
  std::string text(20, '\0');
  // The only thread that asks for the date.
  std::strftime(text.data(), text.size() + 1, "%Y-%m-%dT%H:%M:%SZ",
                std::gmtime(&seconds)); // NOLINT(concurrency-mt-unsafe)
  return text;
}

} // namespace qorfaces
