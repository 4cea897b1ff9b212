// The option that says what finds the faces.
#pragma once

#include "settings.h"

#include <optional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace qorfaces {

/// As --detector and run.json name it.
const char* nameOf(Detector detector);

/// Nothing of another name.
std::optional<Detector> detectorOf(const std::string& name);

/// Adds --detector with its help. `detector` has to live as long as the app.
void describeDetector(CLI::App& app, const std::string& help, std::optional<Detector>& detector);

/// What finds the faces where nobody says: the network, but for all landmarks, which the cascade's
/// functions alone report.
Detector defaultDetector(bool landmarks);

} // namespace qorfaces
