// One photograph through the library, and the pictures that are made of it.
#pragma once

#include "analysis.h"
#include "settings.h"

#include <optional>
#include <string>

namespace qorfaces {

/// Nothing where the photograph cannot be read. Throws std::exception for what the library throws
/// and where a picture that was asked for cannot be written.
std::optional<Analysis> analyse(const std::string& photo, const Settings& settings);

} // namespace qorfaces
