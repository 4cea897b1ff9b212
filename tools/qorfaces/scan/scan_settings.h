// How the photographs of a run are looked at: what every line of a run folder has in common.
#pragma once

#include "grid.h"
#include "portrait_crop.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <qorocv460/client.h>

namespace qorfaces {

enum class Tiles {
  none,
  automatic, // where the photograph is large enough
  grid,
};

struct ScanSettings {
  qorocv::client::Request request; // no copies
  Tiles tiles = Tiles::none;
  std::optional<Grid> grid; // of Tiles::grid
  bool thumbnails = false;
  std::optional<PortraitShape> crop; // of the portraits; nothing: none
};

nlohmann::ordered_json toJson(const ScanSettings& settings);

/// Throws std::exception for what toJson has not written.
ScanSettings scanSettingsOf(const nlohmann::ordered_json& json);

} // namespace qorfaces
