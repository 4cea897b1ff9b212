#include "report/report_command.h"

#include "report/report.h"

#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace qorfaces {

namespace {

constexpr const char* kUsage =
    "Usage: qorfaces report RUN\n\n"
    "Writes RUN/report/ anew from RUN/faces.ndjson; open its index.html.\n";

} // namespace

ExitCode reportCommand(const std::vector<std::string>& words) {
  if (words.size() == 1 && (words.front() == "--help" || words.front() == "-h")) {
    std::fputs(kUsage, stdout);
    return allRead;
  }
  if (words.size() != 1 || words.front().empty() || words.front().front() == '-') {
    std::fputs(kUsage, stderr);
    return badArguments;
  }
  try {
    writeReport(std::filesystem::u8path(words.front()));
  } catch (const std::runtime_error& error) {
    std::fputs(("qorfaces: " + std::string(error.what()) + "\n").c_str(), stderr);
    return someFailed;
  }
  return allRead;
}

} // namespace qorfaces
