// The command line, read and checked.
#pragma once

#include "exit_code.h"
#include "settings.h"

#include <string>
#include <variant>
#include <vector>

namespace qorfaces {

struct Options {
  Settings settings;
  std::string models; // a directory, chosen where none is named
  bool json = false;
  bool verbose = false;
  std::vector<std::string> photos;
};

/// The options of the words behind the program's name. Where there is nothing to do, because help
/// was asked for or a word is wrong, that is printed, and the exit code comes back instead.
std::variant<Options, ExitCode> readOptions(std::vector<std::string> words);

} // namespace qorfaces
