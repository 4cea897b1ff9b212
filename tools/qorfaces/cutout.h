// The person cut out of a photograph.
#pragma once

#include "settings.h"

#include <qorocv460/client.h>
#include <string>

namespace qorfaces {

/// Writes the cut-outs that the settings ask for: the photograph, or its only face's surroundings,
/// with the person mask for its alpha, transparent where there is no person. Throws
/// std::runtime_error where that cannot be done.
void writeCutOuts(const std::string& photo, const Settings& settings,
                  const qorocv::client::MaskedPhoto& masked);

} // namespace qorfaces
