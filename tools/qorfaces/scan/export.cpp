#include "export.h"

#include "csv.h"
#include "new_file.h"

#include <fstream>
#include <stdexcept>
#include <vector>

namespace qorfaces {

using Json = nlohmann::ordered_json;

namespace {

struct FacePoint {
  const char* column;
  const char* object; // of the face
  const char* member;
};

// The columns of faces.csv: each with its fraction first, and all again in pixels.
constexpr FacePoint kPoints[] = {
    {"left", "box", "left"},
    {"top", "box", "top"},
    {"right", "box", "right"},
    {"bottom", "box", "bottom"},
    {"nose_bridge_x", "noseBridge", "x"},
    {"nose_bridge_y", "noseBridge", "y"},
    {"chin_x", "chin", "x"},
    {"chin_y", "chin", "y"},
    {"head_centre_x", "headCentre", "x"},
    {"head_centre_y", "headCentre", "y"},
};

std::string number(double value) {
  return nlohmann::json(value).dump(); // the shortest text that gives the same number
}

std::string truth(bool value) {
  return value ? "true" : "false";
}

bool isAcross(const FacePoint& point) {
  const std::string member = point.member;
  return member == "x" || member == "left" || member == "right";
}

std::vector<std::string> faceColumns(bool withLandmarks) {
  std::vector<std::string> columns{"path", "name", "face"};
  for (const FacePoint& point : kPoints) {
    columns.emplace_back(point.column);
  }
  for (const FacePoint& point : kPoints) {
    columns.push_back(std::string(point.column) + "_px");
  }
  columns.insert(columns.end(), {"head_top_measured", "portrait", "look_at"});
  if (withLandmarks) {
    for (int i = 0; i < QOROCV460_LANDMARKS; ++i) {
      const std::string landmark = "landmark_" + std::to_string(i);
      columns.push_back(landmark + "_x");
      columns.push_back(landmark + "_y");
    }
  }
  return columns;
}

// Why a person should look at the portrait.
std::string reasonsInWords(const Json& face) {
  std::string reasons;
  for (const Json& reason : face.value("lookAt", Json::array())) {
    reasons += (reasons.empty() ? "" : " ") + reason.get<std::string>();
  }
  return reasons;
}

std::vector<std::string> faceCells(const Json& photo, const Json& face, std::size_t index,
                                   bool withLandmarks) {
  std::vector<std::string> cells{photo["path"], harmlessName(photo["name"]), std::to_string(index)};
  for (const bool inPixels : {false, true}) {
    for (const FacePoint& point : kPoints) {
      if (!face.contains(point.object)) {
        cells.emplace_back();
        continue;
      }
      const double side = photo[isAcross(point) ? "width" : "height"];
      cells.push_back(
          number(face[point.object][point.member].get<double>() * (inPixels ? side : 1.0)));
    }
  }
  cells.push_back(face.contains("headTopMeasured") ? truth(face["headTopMeasured"])
                                                   : std::string());
  cells.push_back(face.value("portrait", ""));
  cells.push_back(reasonsInWords(face));
  if (withLandmarks) {
    const Json landmarks = face.value("landmarks", Json::array());
    for (std::size_t i = 0; i < QOROCV460_LANDMARKS; ++i) {
      for (const char* const member : {"x", "y"}) {
        cells.push_back(landmarks.empty() ? std::string() : number(landmarks[i][member]));
      }
    }
  }
  return cells;
}

/// The tables on their way to their places.
class Tables {
public:
  Tables(const RunFolder& folder, bool withLandmarks)
      : withLandmarks_(withLandmarks), photos_(folder.path() / "photos.csv"),
        faces_(folder.path() / "faces.csv"), failed_(folder.path() / "failed.csv"),
        lookAt_(folder.path() / "look_at_these.csv") {
    photos_.write(csvRecord(
        {"path", "name", "size", "mtime", "width", "height", "found", "faces", "damaged"}));
    faces_.write(csvRecord(faceColumns(withLandmarks)));
    failed_.write(csvRecord({"path", "name", "reason"}));
    lookAt_.write(csvRecord({"path", "name", "face", "portrait", "reasons"}));
  }

  void add(const Json& photo, Counts& counts) {
    ++counts.photographs;
    if (photo["status"] != "ok") {
      ++counts.failed;
      failed_.write(
          csvRecord({photo["path"], harmlessName(photo["name"]), harmlessText(photo["error"])}));
      return;
    }
    const Json& faces = photo["faces"];
    ++counts.ok;
    counts.damaged += photo["damaged"] ? 1 : 0;
    counts.withFaces += faces.empty() ? 0 : 1;
    counts.faces += static_cast<long>(faces.size());
    photos_.write(
        csvRecord({photo["path"], harmlessName(photo["name"]), photo["size"].dump(),
                   photo["mtime"].dump(), photo["width"].dump(), photo["height"].dump(),
                   photo["found"].dump(), std::to_string(faces.size()), truth(photo["damaged"])}));
    for (std::size_t i = 0; i < faces.size(); ++i) {
      const Json& face = faces[i];
      faces_.write(csvRecord(faceCells(photo, face, i + 1, withLandmarks_)));
      if (const std::string reasons = reasonsInWords(face); !reasons.empty()) {
        lookAt_.write(csvRecord({photo["path"], harmlessName(photo["name"]), std::to_string(i + 1),
                                 face.value("portrait", ""), reasons}));
      }
    }
  }

  void putInPlace() {
    photos_.putInPlace();
    faces_.putInPlace();
    failed_.putInPlace();
    lookAt_.putInPlace();
  }

private:
  const bool withLandmarks_;
  NewFile photos_;
  NewFile faces_;
  NewFile failed_;
  NewFile lookAt_; // faces whose portraits a person should look at
};

std::string counted(long number, const std::string& thing) {
  return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

} // namespace

std::string inWords(const Counts& counts) {
  return counted(counts.photographs, "photograph") + ", " + std::to_string(counts.failed) +
         " failed, " + counted(counts.faces, "face");
}

Counts exportRun(const RunFolder& folder) {
  const RunDescription& run = folder.description();
  Counts counts;
  Tables tables(folder, run.settings.request.landmarks);
  std::ifstream journal(folder.journal(), std::ios::binary);
  std::string line;
  while (std::getline(journal, line)) {
    tables.add(Json::parse(line), counts);
  }
  tables.putInPlace();

  Json summary = toJson(run);
  summary.erase("started");
  summary.erase("finished");
  summary.erase("unread");
  summary["photographs"] = counts.photographs;
  summary["ok"] = counts.ok;
  summary["failed"] = counts.failed;
  summary["damaged"] = counts.damaged;
  summary["withFaces"] = counts.withFaces;
  summary["faces"] = counts.faces;
  summary["unread"] = run.unread;
  summary["times"] = {{"started", run.started}, {"finished", run.finished}};
  NewFile file(folder.path() / "summary.json");
  file.write(summary.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
  file.putInPlace();
  return counts;
}

} // namespace qorfaces
