// A photograph that was looked at, as a line of faces.ndjson has it.
#pragma once

#include "pictures.h"

#include <nlohmann/json.hpp>

#include <qorocv460/client.h>

namespace qorfaces {

/// The members of the line from "status" on.
nlohmann::ordered_json toJson(const qorocv::client::Photo& photo, bool damaged,
                              const Pictures& pictures);

} // namespace qorfaces
