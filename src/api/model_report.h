// The report that initModelNames leaves for its host.
#pragma once

#include "models/model_registry.h"

#include <filesystem>
#include <fstream>

namespace qorocv {

/// The report's place. The directory is the host's to make.
inline const char* reportFilePath() {
#ifdef _WIN32
  return "C:\\Temp\\DeleteIt\\info.txt";
#else
  return "/tmp/DeleteIt/info.txt";
#endif
}

/// Creates the report file, empty. The stream is not good where it cannot be created.
inline std::ofstream createReport() {
  return std::ofstream(reportFilePath());
}

/// Writes where models 01 to 06 lie to the report file. Where it cannot be created, ENDS THE
/// PROCESS with exit code 1, after a message on standard error.
void writeModelReport(const ModelRegistry& models, const std::filesystem::path& library);

} // namespace qorocv
