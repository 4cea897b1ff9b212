// A photograph as a line of faces.ndjson has it.
#pragma once

#include "pictures.h"

#include <nlohmann/json.hpp>

#include <qorocv460/client.h>

namespace qorfaces {

/// The members of the line of one that was looked at, from "status" on.
nlohmann::ordered_json toJson(const qorocv::client::Photo& photo, bool damaged,
                              const Pictures& pictures);

/// Whether a line has all that is read of one, in the form that faces.schema.json describes.
bool isLine(const nlohmann::ordered_json& json);

} // namespace qorfaces
