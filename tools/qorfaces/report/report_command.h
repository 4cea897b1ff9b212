// qorfaces report: the report of a run anew.
#pragma once

#include "exit_code.h"

#include <string>
#include <vector>

namespace qorfaces {

/// Does what the words behind "report" say. Says what is wrong on standard error.
ExitCode reportCommand(const std::vector<std::string>& words);

} // namespace qorfaces
