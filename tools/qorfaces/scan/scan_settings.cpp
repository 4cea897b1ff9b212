#include "scan_settings.h"

#include "detector_option.h"

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace qorfaces {

namespace {

namespace client = qorocv::client;
using Json = nlohmann::ordered_json;

constexpr std::array<std::pair<const char*, client::HeadCentres>, 3> kHeadCentres{
    {{"none", client::HeadCentres::none},
     {"colour", client::HeadCentres::byColour},
     {"mask", client::HeadCentres::byMask}}};

const char* nameOf(client::HeadCentres wanted) {
  for (const auto& [name, known] : kHeadCentres) {
    if (known == wanted) {
      return name;
    }
  }
  throw std::logic_error("a way to head centres has no name");
}

client::HeadCentres headCentresOf(const std::string& name) {
  for (const auto& [known, value] : kHeadCentres) {
    if (name == known) {
      return value;
    }
  }
  throw std::runtime_error("unknown head centres " + name);
}

client::Detector knownDetector(const std::string& name) {
  const std::optional<client::Detector> detector = detectorOf(name);
  if (!detector) {
    throw std::runtime_error("unknown detector " + name);
  }
  return *detector;
}

std::string tilesOf(const ScanSettings& settings) {
  switch (settings.tiles) {
  case Tiles::automatic:
    return "auto";
  case Tiles::grid:
    return std::to_string(settings.grid->columns) + "x" + std::to_string(settings.grid->rows);
  case Tiles::none:
    break;
  }
  return "none";
}

Json toJson(const PortraitShape& shape) {
  return {{"aspect", shape.aspect},
          {"head", shape.head},
          {"height", shape.cropHeight ? Json(*shape.cropHeight) : Json()},
          {"edge", shape.edge == CropEdge::clip ? "clip" : "pad"}};
}

PortraitShape shapeOf(const Json& json) {
  PortraitShape shape;
  shape.aspect = json.at("aspect");
  shape.head = json.at("head");
  if (!json.at("height").is_null()) {
    shape.cropHeight = json["height"].get<int>();
  }
  shape.edge = json.at("edge") == "clip" ? CropEdge::clip : CropEdge::pad;
  return shape;
}

} // namespace

nlohmann::ordered_json toJson(const ScanSettings& settings) {
  return {{"detector", nameOf(settings.request.detector)},
          {"maxSide", settings.request.maxSide},
          {"landmarks", settings.request.landmarks},
          {"headCentre", nameOf(settings.request.headCentres)},
          {"tiles", tilesOf(settings)},
          {"thumbnails", settings.thumbnails},
          {"crop", settings.crop ? toJson(*settings.crop) : Json()}};
}

ScanSettings scanSettingsOf(const nlohmann::ordered_json& json) {
  ScanSettings settings;
  settings.request.detector = knownDetector(json.at("detector").get<std::string>());
  settings.request.maxSide = json.at("maxSide").get<int>();
  settings.request.landmarks = json.at("landmarks").get<bool>();
  settings.request.headCentres = headCentresOf(json.at("headCentre").get<std::string>());
  const auto tiles = json.at("tiles").get<std::string>();
  settings.grid = gridOf(tiles);
  settings.tiles = settings.grid ? Tiles::grid : tiles == "auto" ? Tiles::automatic : Tiles::none;
  settings.thumbnails = json.at("thumbnails");
  if (!json.at("crop").is_null()) {
    settings.crop = shapeOf(json["crop"]);
  }
  return settings;
}

} // namespace qorfaces
