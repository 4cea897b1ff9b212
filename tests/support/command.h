// Runs a program as a person would and keeps what it said.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>

namespace qorocv::testing {

struct CommandResult {
  int exitCode;
  std::string out;
  std::string err;
};

/// Runs a shell command, its output kept in `directory` meanwhile.
inline CommandResult runCommand(const std::string& command,
                                const std::filesystem::path& directory) {
  const auto contents = [](const std::filesystem::path& file) {
    std::ostringstream all;
    all << std::ifstream(file).rdbuf();
    return all.str();
  };
  const std::filesystem::path out = directory / "command.out";
  const std::filesystem::path err = directory / "command.err";
  const int status = std::system((command + " >" + out.string() + " 2>" + err.string()).c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(out), contents(err)};
}

} // namespace qorocv::testing
