// Any bytes for faces.ndjson: what a scan that starts again, an export, a merge and a report make of it.
//
// An input says which of them reads, and what: bytes of the input's own, or lines as a scan writes them,
// some with their bytes changed, and the input's own bytes behind them.
#include "analysis.h"
#include "export.h"
#include "fuzz_input.h"
#include "hexadecimal.h"
#include "journal.h"
#include "merge_runs.h"
#include "photo_json.h"
#include "report/report.h"
#include "support/temporary_directory.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <vector>

using namespace qorfaces;
using namespace qorocv::fuzzing;

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

const std::string kFailed = R"("status":"failed","error":"none")";

// --- Journals -------------------------------------------------------------------------------------

double takeNumber(FuzzInput& input) {
  const auto any = input.take<double>();
  return std::isfinite(any) ? any : 0.5;
}

Point takePoint(FuzzInput& input) {
  const double x = takeNumber(input);
  return {x, takeNumber(input)};
}

PhotographFile takePhotograph(FuzzInput& input) {
  constexpr const char* paths[] = {"/a.jpg", "/b,\"b\".jpg", "/\xFC.jpg", "/\xE9\xFC.jpg"};
  PhotographFile file{paths[input.takeFrom(0, 3)], "", 0, 0};
  file.name = textOf(file.path.filename());
  file.size = input.take<std::uint8_t>();
  file.changed = input.take<std::uint8_t>();
  return file;
}

Face takeFace(FuzzInput& input) {
  Face face;
  face.box = {takePoint(input), takePoint(input)};
  face.noseBridge = takePoint(input);
  face.chin = takePoint(input);
  if (input.takeFrom(0, 1) == 1) {
    face.headCentre = takePoint(input);
  }
  face.landmarks.resize(input.takeFrom(0, 1) == 1 ? QOROCV460_LANDMARKS : 0);
  return face;
}

/// The members behind a line's head.
std::string takeMembers(FuzzInput& input) {
  qorocv::client::Photo photo;
  photo.width = input.take<std::uint16_t>();
  photo.height = input.take<std::uint16_t>();
  photo.faces.resize(static_cast<std::size_t>(input.takeFrom(0, 2)));
  std::generate(photo.faces.begin(), photo.faces.end(), [&input] { return takeFace(input); });
  photo.found = static_cast<int>(photo.faces.size());
  Pictures pictures;
  if (input.takeFrom(0, 1) == 1) {
    pictures.thumbnail = "thumbnails/00/1.jpg";
    pictures.portraits.assign(photo.faces.size(), {"portraits/1.jpg", {LookAt::topAssumed}});
  }
  const std::string text = toJson(photo, input.takeFrom(0, 1) == 1, pictures).dump();
  return text.substr(1, text.size() - 2);
}

std::string takeLine(FuzzInput& input) {
  const PhotographFile file = takePhotograph(input);
  const std::string line = lineOf(file, input.takeFrom(0, 1) == 1 ? takeMembers(input) : kFailed);
  require(headOf(line.substr(0, line.size() - 1)).has_value(), "what is written is read");
  return input.takeFrom(0, 3) == 0 ? edited(line, input) : line;
}

std::string takeJournal(FuzzInput& input) {
  std::string journal;
  for (int lines = input.takeFrom(0, 8); lines > 0; --lines) {
    journal += takeLine(input);
  }
  return journal + input.rest();
}

// --- What is in them, line by line ----------------------------------------------------------------

struct Reading {
  std::map<std::string, std::string> lines; // by path: the last of each, with its end
  int strangeLines = 0;
  std::size_t end = 0; // behind the last line's end
};

// The key is that of the path, and the numbers are those that the JSON has.
void requireTheLinesOwn(const LineHead& head, const std::string& line) {
  const Json json = Json::parse(line);
  const auto path = json.contains("pathBytes") ? fromHexadecimal(json["pathBytes"])
                                               : json["path"].get<std::string>();
  if (path.find("//") ==
      std::string::npos) { // as on a server of Windows; elsewhere that is one slash
    const std::string same = lineOf({fs::u8path(path), "", head.size, head.changed}, kFailed);
    require(head.key == headOf(std::string_view(same).substr(0, same.size() - 1))->key,
            "the same key for the same path");
  }
  require(json["version"] == 1 && json["size"] == head.size && json["mtime"] == head.changed,
          "the line's own state");
}

Reading readingOf(const std::string& bytes) {
  Reading reading;
  std::size_t end = 0;
  while ((end = bytes.find('\n', reading.end)) != std::string::npos) {
    const std::string line = bytes.substr(reading.end, end - reading.end);
    reading.end = end + 1;
    if (const auto head = headOf(line)) {
      requireTheLinesOwn(*head, line);
      reading.lines[std::string(head->key)] = line + '\n';
    } else {
      ++reading.strangeLines;
    }
  }
  return reading;
}

std::string inOrder(const Reading& reading) {
  std::string text;
  for (const auto& [path, line] : reading.lines) {
    text += line;
  }
  return text;
}

bool isDamaged(const Reading& reading, const std::string& bytes) {
  return reading.strangeLines > 0 || reading.end != bytes.size();
}

// --- Who reads them -------------------------------------------------------------------------------

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  require(file.good(), "a file that is there");
  return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& path, const std::string& content) {
  require(bool(std::ofstream(path, std::ios::binary) << content), "a file");
}

/// The run folder of a scan that has come to its end.
fs::path runFolder(const fs::path& path, const std::string& journal, bool withLandmarks) {
  ScanSettings settings;
  settings.request.landmarks = withLandmarks;
  RunFolder::fresh(path).describe({settings, {}, "begun", "finished", {}, "1", "1"});
  write(path / "faces.ndjson", journal);
  return path;
}

/// Requires every record to have as many cells as the first one; gives how many there are behind it.
long rowsOf(const fs::path& table) {
  long rows = -1;
  long columns = 0;
  long cells = 1;
  bool isQuoted = false;
  for (const char letter : contentOf(table)) {
    isQuoted ^= letter == '"';
    cells += !isQuoted && letter == ',' ? 1 : 0;
    if (!isQuoted && letter == '\n') {
      columns = rows < 0 ? cells : columns;
      require(cells == columns, "a cell a column");
      cells = 1;
      ++rows;
    }
  }
  require(!isQuoted && cells == 1, "a table of whole records");
  return rows;
}

void startAgain(const fs::path& place, const std::string& bytes, const PhotographFile& file) {
  const Reading before = readingOf(bytes);
  const std::string kept = bytes.substr(0, before.end);
  const fs::path path = place / "faces.ndjson";
  const std::string line = lineOf(file, kFailed);
  const std::string key(headOf(std::string_view(line).substr(0, line.size() - 1))->key);
  write(path, bytes);

  KnownPhotographs known;
  Journal journal(path, known);
  require(contentOf(path) == kept, "a torn last line is dropped, and nothing else");
  require(journal.strangeLines() == before.strangeLines, "damaged lines are counted");
  require(known.count() == before.lines.size(), "every photograph is known once");
  const auto there = before.lines.find(key);
  const bool isDone = there != before.lines.end() &&
                      Json::parse(there->second)["size"] == file.size &&
                      Json::parse(there->second)["mtime"] == file.changed;
  require(known.isNew(file) == !isDone, "what is done is not done again, and all else is");
  journal.append(line);
  require(contentOf(path) == kept + line, "a line behind what was kept");

  KnownPhotographs again;
  const Journal second(path, again);
  require(contentOf(path) == kept + line, "reading changes no whole lines");
  require(second.strangeLines() == before.strangeLines, "the same lines are damaged");
  require(again.count() == before.lines.size() + (there == before.lines.end() ? 1 : 0),
          "one photograph more");
  require(!again.isNew(file), "what was added is done");
}

void exportAll(const fs::path& place, const std::string& bytes, bool withLandmarks) {
  const Reading reading = readingOf(bytes);
  const fs::path run = runFolder(place / "run", bytes, withLandmarks);
  const RunFolder folder = RunFolder::existing(run);
  for (const bool again : {false, true}) {
    putInOrder(folder.journal());
    require(contentOf(folder.journal()) == inOrder(reading),
            again ? "what is in order stays so" : "the last whole line of each path, by path");
  }
  const Counts counts = exportRun(folder);
  require(counts.photographs == static_cast<long>(reading.lines.size()) &&
              counts.ok + counts.failed == counts.photographs,
          "every photograph is counted");
  require(rowsOf(run / "photos.csv") == counts.ok && rowsOf(run / "faces.csv") == counts.faces &&
              rowsOf(run / "failed.csv") == counts.failed &&
              rowsOf(run / "look_at_these.csv") <= counts.faces,
          "a row for each");
}

void retry(const fs::path& place, const std::string& bytes) {
  Reading reading = readingOf(bytes);
  for (auto line = reading.lines.begin(); line != reading.lines.end();) {
    const bool isFailed = Json::parse(line->second)["status"] == "failed";
    line = isFailed ? reading.lines.erase(line) : std::next(line);
  }
  write(place / "faces.ndjson", bytes);
  dropFailed(place / "faces.ndjson");
  require(contentOf(place / "faces.ndjson") == inOrder(reading), "all but what has failed");
}

void merge(const fs::path& place, const std::string& bytes, std::size_t cut) {
  const std::string first = bytes.substr(0, cut);
  const std::string second = bytes.substr(first.size());
  Reading reading = readingOf(first);
  bool isGood = !isDamaged(reading, first);
  const Reading other = readingOf(second);
  isGood = isGood && !isDamaged(other, second);
  for (const auto& [path, line] : other.lines) {
    reading.lines[path] = line;
  }
  try {
    mergeRuns({runFolder(place / "1", first, false), runFolder(place / "2", second, false)},
              place / "whole");
    require(isGood, "no run that is damaged");
  } catch (const std::runtime_error&) {
    const std::string whole = inOrder(reading);
    const bool namesPictures =
        whole.find("thumbnail") != std::string::npos || whole.find("portrait") != std::string::npos;
    require(!isGood || namesPictures, "no exception for whole runs");
    return;
  }
  require(contentOf(place / "whole" / "faces.ndjson") == inOrder(reading),
          "the last line of each path of both");
  require(contentOf(place / "1" / "faces.ndjson") == first &&
              contentOf(place / "2" / "faces.ndjson") == second,
          "what is merged stays as it is");
}

void report(const fs::path& place, const std::string& bytes) {
  const Reading reading = readingOf(bytes);
  write(place / "faces.ndjson", bytes);
  writeReport(place); // of a scan that is at work, perhaps
  write(place / "faces.ndjson", inOrder(reading));
  writeReport(place);
  std::size_t shown = 0;
  if (!reading.lines.empty()) {
    const std::string index = contentOf(place / "report" / "data" / "index-0.js");
    const std::size_t begin = index.find('{');
    shown = Json::parse(index.substr(begin, index.rfind('}') + 1 - begin)).at("names").size();
  }
  require(shown == reading.lines.size(), "every photograph is shown");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const qorocv::testing::TemporaryDirectory directory;
  const fs::path place = directory / "place";
  fs::remove_all(place);
  fs::create_directory(place);
  FuzzInput input(data, size);
  const int reader = input.takeFrom(0, 4);
  const auto choice = input.take<std::uint16_t>();
  const PhotographFile file = takePhotograph(input);
  const std::string bytes = takeJournal(input);
  switch (reader) {
  case 0:
    startAgain(place, bytes, file);
    break;
  case 1:
    exportAll(place, bytes, choice % 2 == 1);
    break;
  case 2:
    retry(place, bytes);
    break;
  case 3:
    merge(place, bytes, choice);
    break;
  default:
    report(place, bytes);
  }
  return 0;
}
