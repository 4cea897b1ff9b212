#include "photo_json.h"

#include "face_json.h"

#include <utility>

namespace qorfaces {

nlohmann::ordered_json toJson(const qorocv::client::Photo& photo, bool damaged,
                              const Pictures& pictures) {
  nlohmann::ordered_json faces = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < photo.faces.size(); ++i) {
    const Face& face = photo.faces[i];
    nlohmann::ordered_json object = toJson(face);
    if (face.headCentre) {
      object["headTopMeasured"] = face.headTopMeasured;
    }
    if (i < pictures.portraits.size()) {
      addPortrait(object, pictures.portraits[i]);
    }
    faces.push_back(std::move(object));
  }
  nlohmann::ordered_json members{{"status", "ok"},         {"width", photo.width},
                                 {"height", photo.height}, {"damaged", damaged},
                                 {"found", photo.found},   {"faces", std::move(faces)}};
  if (!pictures.thumbnail.empty()) {
    members["thumbnail"] = pictures.thumbnail;
  }
  return members;
}

} // namespace qorfaces
