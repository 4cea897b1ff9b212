// What qorfaces tells the program that started it.
#pragma once

namespace qorfaces {

enum ExitCode { allRead = 0, someFailed = 1, badArguments = 2, modelsMissing = 3 };

} // namespace qorfaces
