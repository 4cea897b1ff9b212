// qorfaces models: what lies in a directory of models.
#pragma once

#include "exit_code.h"

#include <string>
#include <vector>

namespace qorfaces {

/// Does what the words behind "models" say. Says what is wrong on standard error.
ExitCode modelsCommand(std::vector<std::string> words);

} // namespace qorfaces
