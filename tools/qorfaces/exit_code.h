// What qorfaces tells the program that started it.
#pragma once

namespace qorfaces {

enum ExitCode {
  allRead = 0,
  someFailed = 1,
  badArguments = 2,
  modelsMissing = 3,
  interrupted = 130, // as shells say it of a program that the user ended
};

} // namespace qorfaces
