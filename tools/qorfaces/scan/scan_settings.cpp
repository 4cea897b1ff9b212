#include "scan_settings.h"

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

namespace qorfaces {

namespace {

namespace client = qorocv::client;
using Json = nlohmann::ordered_json;

constexpr std::array<std::pair<const char*, client::Detector>, 3> kDetectors{
    {{"ssd", client::Detector::ssd},
     {"ssd-tf", client::Detector::ssdTf},
     {"haar", client::Detector::haar}}};

constexpr std::array<std::pair<const char*, client::HeadCentres>, 3> kHeadCentres{
    {{"none", client::HeadCentres::none},
     {"colour", client::HeadCentres::byColour},
     {"mask", client::HeadCentres::byMask}}};

template <class Table, class Value> const char* nameOf(const Table& table, Value value) {
  for (const auto& [name, known] : table) {
    if (known == value) {
      return name;
    }
  }
  throw std::logic_error("a setting has no name");
}

template <class Table> auto valueOf(const Table& table, const std::string& name) {
  for (const auto& [known, value] : table) {
    if (name == known) {
      return value;
    }
  }
  throw std::runtime_error("unknown setting " + name);
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
  return {{"detector", nameOf(kDetectors, settings.request.detector)},
          {"maxSide", settings.request.maxSide},
          {"landmarks", settings.request.landmarks},
          {"headCentre", nameOf(kHeadCentres, settings.request.headCentres)},
          {"tiles", tilesOf(settings)},
          {"thumbnails", settings.thumbnails},
          {"crop", settings.crop ? toJson(*settings.crop) : Json()}};
}

ScanSettings scanSettingsOf(const nlohmann::ordered_json& json) {
  ScanSettings settings;
  settings.request.detector = valueOf(kDetectors, json.at("detector").get<std::string>());
  settings.request.maxSide = json.at("maxSide").get<int>();
  settings.request.landmarks = json.at("landmarks").get<bool>();
  settings.request.headCentres = valueOf(kHeadCentres, json.at("headCentre").get<std::string>());
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
