// The command lines of scan, export, report and merge, read and checked.
#pragma once

#include "exit_code.h"

#include <optional>
#include <string>
#include <vector>

namespace qorfaces {

/// Whether a word is one that runCommand knows.
bool isCommand(const std::string& word);

/// Does what the words behind the program's name say; the first is a command. Throws std::exception
/// where that fails.
ExitCode runCommand(std::vector<std::string> words);

} // namespace qorfaces
