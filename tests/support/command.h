// Runs a program as a person would and keeps what it said.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace qorocv::testing {

/// The exit code of a shell command in UTF-8; -1 where it had none.
#ifdef _WIN32
inline int runInShell(const std::string& command) {
  return _wsystem(std::filesystem::u8path(command).c_str());
}
#else
inline int runInShell(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
#endif

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
  const int code = runInShell(command + " >" + out.string() + " 2>" + err.string());
  return {code, contents(out), contents(err)};
}

} // namespace qorocv::testing
