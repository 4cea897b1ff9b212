#include "utf8_arguments.h"

#ifdef _WIN32
// The first declares what the second is written in.
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on
#endif

namespace qorfaces {

#ifdef _WIN32
std::vector<std::string> utf8Arguments(int /*argc*/, char** /*argv*/) {
  int count = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, nullptr, 0, nullptr, nullptr);
    std::string argument(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, argument.data(), size, nullptr, nullptr);
    argument.pop_back(); // the terminator
    arguments.push_back(argument);
  }
  LocalFree(wide);
  return arguments;
}
#else
std::vector<std::string> utf8Arguments(int argc, char** argv) {
  return {argv + 1, argv + argc};
}
#endif

} // namespace qorfaces
