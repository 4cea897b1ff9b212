// One photograph through the library, and the pictures that are made of it.
#pragma once

#include "analysis.h"
#include "settings.h"

#include <string>

namespace qorfaces {

/// Throws std::runtime_error where a picture that was asked for cannot be written.
qorocv::client::Result<Analysis> analyse(const std::string& photo, const Settings& settings);

} // namespace qorfaces
