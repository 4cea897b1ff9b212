// A command line through its parser.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace qorfaces {

/// Reads the words behind the program's name, each as it is; --version is one that every command
/// knows. Throws CLI::ParseError.
void parse(CLI::App& app, std::vector<std::string> words);

/// For CLI::Option::check: the empty text for a name, else what is wrong with it. An empty one often
/// is a variable of a script that was never set.
std::string nameError(const std::string& name);

} // namespace qorfaces
