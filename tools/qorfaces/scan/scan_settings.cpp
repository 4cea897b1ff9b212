#include "scan_settings.h"

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

namespace qorfaces {

namespace {

namespace client = qorocv::client;

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

std::string textOf(const ScanSettings& settings) {
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

} // namespace

nlohmann::ordered_json toJson(const ScanSettings& settings) {
  return {{"detector", nameOf(kDetectors, settings.request.detector)},
          {"maxSide", settings.request.maxSide},
          {"landmarks", settings.request.landmarks},
          {"headCentre", nameOf(kHeadCentres, settings.request.headCentres)},
          {"tiles", textOf(settings)}};
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
  return settings;
}

} // namespace qorfaces
