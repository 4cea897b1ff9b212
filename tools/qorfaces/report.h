// What qorfaces prints, as text for people and as JSON for programs.
#pragma once

#include "analysis.h"

#include <nlohmann/json.hpp>

#include <string>

namespace qorfaces {

/// One line about the photograph, then a heading and a row per face where there is one.
std::string table(const std::string& photo, const Analysis& analysis);

/// The same as one JSON object.
nlohmann::ordered_json json(const std::string& photo, const Analysis& analysis);

/// The JSON object of a photograph that could not be analysed.
nlohmann::ordered_json jsonError(const std::string& photo, const std::string& error);

} // namespace qorfaces
