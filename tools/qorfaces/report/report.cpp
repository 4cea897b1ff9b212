#include "report/report.h"

#include "hexadecimal.h"
#include "report/file_url.h"
#include "report/page_files.h"
#include "scan/photo_json.h"
#include "scan/pictures.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <boost/interprocess/sync/file_lock.hpp>
#include <cmath>
#include <exception>
#include <fstream>
#include <qorocv460/qorocv460.h>
#include <stdexcept>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

namespace qorfaces {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr int kPerPiece = 20000; // photographs in a file of what is searched
constexpr int kPerChunk = 50;    // and in one of what is shown

constexpr int kFailed = 1; // as report.js knows them
constexpr int kLookAt = 2;

/// A photograph's line in the journal, and what the page searches, filters and sorts.
struct Entry {
  std::string name;
  std::streamoff line = 0; // where it begins
  int faces = 0;
  int width = 0;
  int height = 0;
  std::uint64_t bytes = 0;
  int flags = 0;
  bool hasLandmarks = false;
};

// --- Reading --------------------------------------------------------------------------------------

bool isFailed(const Json& photo) {
  return photo.at("status") != "ok";
}

// What tells photographs apart. Of a path that is not UTF-8, its text does not.
std::string keyOf(const Json& photo) {
  const char* const key = photo.contains("pathBytes") ? "pathBytes" : "path";
  return photo.at(key).get<std::string>();
}

// Why a person should look at a face: what the scan says, and, where there are no portraits, that the
// top of the head was not measured.
Json reasonsOf(const Json& face) {
  if (face.contains("lookAt")) {
    return face["lookAt"];
  }
  const bool assumed = face.contains("headCentre") && !face.value("headTopMeasured", true);
  return assumed ? Json::array({"topAssumed"}) : Json::array();
}

Entry entryOf(const Json& photo, std::streamoff line) {
  Entry entry;
  entry.name = photo.at("name").get<std::string>();
  entry.line = line;
  entry.bytes = photo.value("size", std::uint64_t{0});
  if (isFailed(photo)) {
    entry.flags = kFailed;
    return entry;
  }
  entry.width = photo.at("width").get<int>();
  entry.height = photo.at("height").get<int>();
  entry.faces = photo.at("found").get<int>();
  bool lookAt = photo.value("damaged", false);
  for (const Json& face : photo.at("faces")) {
    lookAt = lookAt || !reasonsOf(face).empty();
    entry.hasLandmarks = entry.hasLandmarks || face.contains("landmarks");
  }
  entry.flags = lookAt ? kLookAt : 0;
  return entry;
}

/// The lines of a journal but for damaged ones. The last one may not be whole.
class JournalLines {
public:
  explicit JournalLines(const fs::path& path) : file_(path, std::ios::binary) {
    if (!file_) {
      throw std::runtime_error("cannot read " + path.u8string());
    }
  }

  /// The photographs in the order of their names. Of several lines for a photograph the last one
  /// counts.
  std::vector<Entry> entries() {
    std::vector<Entry> entries;
    std::unordered_map<std::string, std::size_t> places; // by path
    std::string text;
    std::streamoff line = 0;
    while (std::getline(file_, text) && !file_.eof()) { // a line without an end is a torn one
      const Json photo = Json::parse(text, nullptr, false);
      if (isLine(photo)) {
        Entry entry = entryOf(photo, line);
        const auto [place, isNew] = places.emplace(keyOf(photo), entries.size());
        if (isNew) {
          entries.push_back(std::move(entry));
        } else {
          entries[place->second] = std::move(entry);
        }
      }
      line += static_cast<std::streamoff>(text.size()) + 1;
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
  }

  Json photoOf(const Entry& entry) {
    file_.clear();
    file_.seekg(entry.line);
    std::string text;
    std::getline(file_, text);
    return Json::parse(text);
  }

private:
  std::ifstream file_;
};

// --- What the page shows --------------------------------------------------------------------------

// Enough for a quarter of a pixel of a photograph of 25,000 pixels.
double rounded(const Json& fraction) {
  constexpr double steps = 100000;
  return std::round(fraction.get<double>() * steps) / steps;
}

Json pointOf(const Json& point) {
  return {rounded(point.at("x")), rounded(point.at("y"))};
}

// A picture below the run folder. Others are not shown: runs come from other machines, and perhaps from
// other people.
void addPicture(Json& shown, const char* kind, const Json& object) {
  if (object.contains(kind)) {
    const auto file = object[kind].get<std::string>();
    if (!leadsElsewhere(fs::u8path(file))) {
      shown[kind] = "../" + urlPath(file);
    }
  }
}

Json faceOf(const Json& face) {
  const Json& box = face.at("box");
  Json shown{{"box",
              {rounded(box.at("left")), rounded(box.at("top")), rounded(box.at("right")),
               rounded(box.at("bottom"))}},
             {"noseBridge", pointOf(face.at("noseBridge"))},
             {"chin", pointOf(face.at("chin"))}};
  if (face.contains("headCentre")) {
    shown["headCentre"] = pointOf(face["headCentre"]);
  }
  addPicture(shown, "portrait", face);
  Json reasons = reasonsOf(face);
  if (!reasons.empty()) {
    shown["lookAt"] = std::move(reasons);
  }
  return shown;
}

Json photographOf(const Json& photo) {
  if (isFailed(photo)) {
    return {{"error", photo.at("error")}};
  }
  Json faces = Json::array();
  for (const Json& face : photo.at("faces")) {
    faces.push_back(faceOf(face));
  }
  Json shown{{"faces", std::move(faces)}};
  addPicture(shown, "thumbnail", photo);
  const auto original =
      fileUrl(photo.contains("pathBytes") ? fromHexadecimal(photo["pathBytes"].get<std::string>())
                                          : photo.at("path").get<std::string>());
  if (original) {
    shown["original"] = *original;
  }
  if (photo.value("damaged", false)) {
    shown["lookAt"] = {"damaged"};
  }
  return shown;
}

// x, y, x, y, ... of each face.
Json landmarksOf(const Json& photo) {
  Json faces = Json::array();
  if (photo.contains("faces")) {
    for (const Json& face : photo["faces"]) {
      Json numbers = Json::array();
      for (const Json& point : face.value("landmarks", Json::array())) {
        numbers.push_back(rounded(point.at("x")));
        numbers.push_back(rounded(point.at("y")));
      }
      faces.push_back(std::move(numbers));
    }
  }
  return faces;
}

// --- Writing --------------------------------------------------------------------------------------

void write(const fs::path& path, const char* bytes, std::size_t size) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes, static_cast<std::streamsize>(size));
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write " + path.u8string());
  }
}

// A call of a function of the page. Names of files need not be text, and need not be good for a
// script: everything but ASCII is escaped.
void writeCall(const fs::path& path, const std::string& begin, const Json& content) {
  const std::string text = "\"use strict\";\nqorfaces." + begin +
                           content.dump(-1, ' ', true, Json::error_handler_t::replace) + ");\n";
  write(path, text.data(), text.size());
}

std::string numbered(const char* name, std::size_t number) {
  return std::string(name) + "(" + std::to_string(number) + ", ";
}

fs::path dataFile(const fs::path& data, const char* name, std::size_t number) {
  return data / (std::string(name) + "-" + std::to_string(number) + ".js");
}

void writePiece(const fs::path& data, std::size_t number, const Entry* begin, const Entry* end) {
  Json columns;
  for (const char* const name : {"names", "faces", "widths", "heights", "bytes", "flags"}) {
    columns[name] = Json::array();
  }
  for (const Entry* entry = begin; entry != end; ++entry) {
    columns["names"].push_back(entry->name);
    columns["faces"].push_back(entry->faces);
    columns["widths"].push_back(entry->width);
    columns["heights"].push_back(entry->height);
    columns["bytes"].push_back(entry->bytes);
    columns["flags"].push_back(entry->flags);
  }
  writeCall(dataFile(data, "index", number), numbered("index", number), columns);
}

void writeChunk(const fs::path& data, std::size_t number, const Entry* begin, const Entry* end,
                JournalLines& journal, bool withLandmarks) {
  Json photographs = Json::array();
  Json landmarks = Json::array();
  for (const Entry* entry = begin; entry != end; ++entry) {
    const Json photo = journal.photoOf(*entry);
    photographs.push_back(photographOf(photo));
    if (withLandmarks) {
      landmarks.push_back(landmarksOf(photo));
    }
  }
  writeCall(dataFile(data, "photographs", number), numbered("photographs", number), photographs);
  if (withLandmarks) {
    writeCall(dataFile(data, "landmarks", number), numbered("landmarks", number), landmarks);
  }
}

/// Calls `work(number, begin, end)` for each `size` of the entries.
template <class Work>
std::size_t inParts(const std::vector<Entry>& entries, std::size_t size, Work work) {
  std::size_t number = 0;
  for (std::size_t start = 0; start < entries.size(); start += size) {
    const std::size_t length = std::min(size, entries.size() - start);
    work(number++, &entries[start], &entries[start] + length);
  }
  return number;
}

/// Waits for whoever else has it. The file stays, empty.
class FileLock {
public:
  explicit FileLock(const fs::path& path) {
    if (!std::ofstream(path, std::ios::app)) {
      throw std::runtime_error("cannot write " + path.u8string());
    }
    try {
      lock_ = boost::interprocess::file_lock(path.c_str());
      lock_.lock(); // until the file is closed
    } catch (const boost::interprocess::interprocess_exception& error) {
      throw std::runtime_error("cannot lock " + path.u8string() + ": " + error.what());
    }
  }

private:
  boost::interprocess::file_lock lock_;
};

std::string reasonOf(const std::exception& error) {
  if (const auto* const ofFile = dynamic_cast<const fs::filesystem_error*>(&error)) {
    return "cannot write the report: " + ofFile->code().message();
  }
  return dynamic_cast<const Json::exception*>(&error) != nullptr
             ? "a line of faces.ndjson is not as qorfaces writes it"
             : error.what();
}

void writeAll(const fs::path& run, const fs::path& report) {
  JournalLines journal(run / "faces.ndjson");
  const std::vector<Entry> entries = journal.entries();
  const bool withLandmarks = std::any_of(entries.begin(), entries.end(),
                                         [](const Entry& entry) { return entry.hasLandmarks; });
  const fs::path data = report / "data";
  fs::create_directories(data);
  const std::size_t pieces =
      inParts(entries, kPerPiece, [&](std::size_t number, const Entry* begin, const Entry* end) {
        writePiece(data, number, begin, end);
      });
  inParts(entries, kPerChunk, [&](std::size_t number, const Entry* begin, const Entry* end) {
    writeChunk(data, number, begin, end, journal, withLandmarks);
  });
  writeCall(data / "run.js", "run(",
            {{"pieces", pieces},
             {"perChunk", kPerChunk},
             {"landmarks", withLandmarks},
             {"about", "Made by qorfaces " QOROCV460_VERSION "."}});
  for (const EmbeddedFile& file : pageFiles()) {
    write(report / file.name, reinterpret_cast<const char*>(file.bytes), file.size);
  }
}

} // namespace

void writeReport(const fs::path& run) {
  const fs::path report = run / "report";
  const fs::path fresh = run / ".report-new";
  const FileLock turn(run / ".report-lock"); // one at a time writes the fresh one
  try {
    fs::remove_all(fresh); // of a run that was ended meanwhile
    writeAll(run, fresh);
    fs::remove_all(report);
    fs::rename(fresh, report);
  } catch (const std::exception& error) {
    std::error_code ignored; // what is left takes room on a disk that may be full
    fs::remove_all(fresh, ignored);
    throw std::runtime_error(reasonOf(error));
  }
}

} // namespace qorfaces
