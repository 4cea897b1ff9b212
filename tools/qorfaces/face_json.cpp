#include "face_json.h"

namespace qorfaces {

using Json = nlohmann::ordered_json;

namespace {

Json toJson(const Point& point) {
  return {{"x", point.x}, {"y", point.y}};
}

} // namespace

Json toJson(const Face& face) {
  Json object;
  object["box"] = {{"left", face.box.leftTop.x},
                   {"top", face.box.leftTop.y},
                   {"right", face.box.rightBottom.x},
                   {"bottom", face.box.rightBottom.y}};
  object["noseBridge"] = toJson(face.noseBridge);
  object["chin"] = toJson(face.chin);
  if (face.headCentre) {
    object["headCentre"] = toJson(*face.headCentre);
  }
  if (!face.landmarks.empty()) {
    Json points = Json::array();
    for (const Point& point : face.landmarks) {
      points.push_back(toJson(point));
    }
    object["landmarks"] = points;
  }
  return object;
}

void addPortrait(Json& face, const Portrait& portrait) {
  if (!portrait.file.empty()) {
    face["portrait"] = portrait.file;
  }
  face["lookAt"] = Json::array();
  for (const LookAt reason : portrait.lookAt) {
    face["lookAt"].push_back(nameOf(reason));
  }
}

} // namespace qorfaces
