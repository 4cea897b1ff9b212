#include "photo_json.h"

#include "face_json.h"

namespace qorfaces {

nlohmann::ordered_json toJson(const qorocv::client::Photo& photo, bool damaged) {
  nlohmann::ordered_json faces = nlohmann::ordered_json::array();
  for (const Face& face : photo.faces) {
    faces.push_back(toJson(face));
    if (face.headCentre) {
      faces.back()["headTopMeasured"] = face.headTopMeasured;
    }
  }
  return {{"status", "ok"},     {"width", photo.width}, {"height", photo.height},
          {"damaged", damaged}, {"found", photo.found}, {"faces", std::move(faces)}};
}

} // namespace qorfaces
