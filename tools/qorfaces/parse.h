// A command line through its parser.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace qorfaces {

/// Reads the words behind the program's name, each as it is. Throws CLI::ParseError.
void parse(CLI::App& app, std::vector<std::string> words);

} // namespace qorfaces
