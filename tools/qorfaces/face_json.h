// A face for programs.
#pragma once

#include "analysis.h"

#include <nlohmann/json.hpp>

namespace qorfaces {

/// Box, nose bridge and chin, and what else was asked for, in fractions.
nlohmann::ordered_json toJson(const Face& face);

/// Adds what became of the face's portrait.
void addPortrait(nlohmann::ordered_json& face, const Portrait& portrait);

} // namespace qorfaces
