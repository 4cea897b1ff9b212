// The command line as the library wants its texts.
#pragma once

#include <string>
#include <vector>

namespace qorfaces {

/// The arguments behind the program's name, in UTF-8. Windows hands `main` only what the user's
/// code page has of them.
std::vector<std::string> utf8Arguments(int argc, char** argv);

} // namespace qorfaces
