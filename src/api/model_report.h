// The report that initModelNames leaves for its host.
#pragma once

#include "models/model_registry.h"

#include <filesystem>

namespace qorocv {

/// The report's place. The directory is the host's to make.
const char* reportFilePath();

/// Writes where models 01 to 06 lie to the report file. Where it cannot be created, ENDS THE
/// PROCESS with exit code 1, after a message on standard error.
void writeModelReport(const ModelRegistry& models, const std::filesystem::path& library);

} // namespace qorocv
