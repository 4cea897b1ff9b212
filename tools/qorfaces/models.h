// Where the library finds its models, and whether they can be loaded.
#pragma once

#include "settings.h"

#include <optional>
#include <string>

namespace qorfaces {

/// Places the models at a directory, with or without a separator at its end. Returns the complaint
/// about those missing among the ones that the settings need; empty when all are there.
std::string placeModels(const std::string& directory, const Settings& settings);

/// Loads what the settings need, so that a bad model shows before any photograph. Nothing where that
/// went well.
std::optional<qorocv::client::Error> loadModels(const Settings& settings);

} // namespace qorfaces
