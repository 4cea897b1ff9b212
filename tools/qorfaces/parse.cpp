#include "parse.h"

#include <CLI/CLI.hpp>
#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <qorocv460/qorocv460.h>

namespace qorfaces {

namespace {

// The parser takes a word in brackets for a list, and takes it apart. What no argument can hold hides
// the second bracket from it.
constexpr char kHidden = '\0';

} // namespace

void parse(CLI::App& app, std::vector<std::string> words) {
  app.set_version_flag("--version",
                       "qorfaces " QOROCV460_VERSION " (OpenCV " + cv::getVersionString() + ")",
                       "Print the version and exit");
  // A word that begins with a slash is a path on Windows, too.
  app.allow_windows_style_options(false);
  for (CLI::Option* const option : app.get_options()) {
    option->transform(std::function<std::string(std::string)>(
        [](const std::string& word) { return word.substr(0, word.find(kHidden)); }));
  }
  for (std::string& word : words) {
    if (!word.empty() && word.front() == '[' && word.back() == ']') {
      word += kHidden;
    }
  }
  std::reverse(words.begin(), words.end()); // the parser takes them from the back
  try {
    app.parse(words);
  } catch (const CLI::RequiredError&) {
    // Next to a word that nobody knows, what is missing is beside the point.
    if (const std::vector<std::string> unknown = app.remaining(); !unknown.empty()) {
      throw CLI::ExtrasError(unknown);
    }
    throw;
  }
}

std::string nameError(const std::string& name) {
  return name.empty() ? "the name is empty" : std::string();
}

} // namespace qorfaces
