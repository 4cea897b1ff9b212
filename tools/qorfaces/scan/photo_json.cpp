#include "photo_json.h"

#include "face_json.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <utility>

namespace qorfaces {

namespace {

using Json = nlohmann::ordered_json;

// Null, which is none of what is looked for, where there is none.
const Json& memberOf(const Json& object, const char* name) {
  static const Json none;
  const auto member = object.find(name);
  return member == object.end() ? none : *member;
}

bool haveNumbers(const Json& object, std::initializer_list<const char*> names) {
  return std::all_of(names.begin(), names.end(),
                     [&](const char* name) { return memberOf(object, name).is_number(); });
}

bool haveCounts(const Json& object, std::initializer_list<const char*> names) {
  constexpr int most = std::numeric_limits<int>::max();
  return std::all_of(names.begin(), names.end(), [&](const char* name) {
    const Json& member = memberOf(object, name);
    return member.is_number_unsigned() && member.get<std::uint64_t>() <= most;
  });
}

bool isPoint(const Json& json) {
  return haveNumbers(json, {"x", "y"});
}

bool isText(const Json& json) {
  return json.is_string();
}

bool areBytes(const Json& json) {
  const auto* const digits = json.get_ptr<const std::string*>();
  return digits != nullptr && digits->size() % 2 == 0 &&
         digits->find_first_not_of("0123456789abcdef") == std::string::npos;
}

template <class Is> bool areAll(const Json& array, Is is) {
  return array.is_array() && std::all_of(array.begin(), array.end(), is);
}

bool isFace(const Json& face) {
  const auto lacksOr = [&](const char* name, auto is) {
    return !face.contains(name) || is(face[name]);
  };
  return haveNumbers(memberOf(face, "box"), {"left", "top", "right", "bottom"}) &&
         isPoint(memberOf(face, "noseBridge")) && isPoint(memberOf(face, "chin")) &&
         lacksOr("headCentre", isPoint) &&
         lacksOr("headTopMeasured", [](const Json& json) { return json.is_boolean(); }) &&
         lacksOr("portrait", isText) &&
         lacksOr("lookAt", [](const Json& json) { return areAll(json, isText); }) &&
         lacksOr("landmarks", [](const Json& json) {
           return areAll(json, isPoint) && json.size() == QOROCV460_LANDMARKS;
         });
}

} // namespace

bool isLine(const nlohmann::ordered_json& json) {
  if (memberOf(json, "version") != 1 || !isText(memberOf(json, "path")) ||
      (json.contains("pathBytes") && !areBytes(json["pathBytes"])) ||
      !memberOf(json, "size").is_number_unsigned() ||
      !memberOf(json, "mtime").is_number_integer() || !isText(memberOf(json, "name"))) {
    return false;
  }
  if (memberOf(json, "status") == "failed") {
    return isText(memberOf(json, "error"));
  }
  return memberOf(json, "status") == "ok" && haveCounts(json, {"width", "height", "found"}) &&
         memberOf(json, "damaged").is_boolean() && areAll(memberOf(json, "faces"), isFace) &&
         (!json.contains("thumbnail") || isText(json["thumbnail"]));
}

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
