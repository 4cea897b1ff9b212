// qorfaces: the library from the command line.
#include "analyse.h"
#include "console.h"
#include "damage.h"
#include "descriptors.h"
#include "json.h"
#include "models.h"
#include "models_command.h"
#include "options.h"
#include "picture_file.h"
#include "scan/scan_options.h"
#include "table.h"
#include "utf8_arguments.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

using namespace qorfaces;

namespace {

// An exception's text as the end of a line.
std::string inOneLine(const std::exception& exception) {
  const std::string text = exception.what();
  return text.substr(0, text.find_last_not_of('\n') + 1);
}

/// False, with a complaint, where a model is missing or cannot be loaded.
bool haveModels(const Options& options, Console& console) {
  const std::string missing = placeModels(options.models, options.settings);
  if (!missing.empty()) {
    console.complain(missing);
    return false;
  }
  if (const auto error = loadModels(options.settings)) {
    console.show(console.takeLibraryText());
    console.complain("a model cannot be loaded: " + error->text);
    return false;
  }
  const std::string libraryText = console.takeLibraryText();
  if (options.verbose) {
    console.show(libraryText);
  }
  return true;
}

/// What became of a photograph.
struct Outcome {
  std::optional<Analysis> analysis;
  std::string error; // where there is no analysis
};

Outcome lookAt(const std::string& photo, const Options& options, Console& console) {
  Outcome outcome;
  bool libraryFailed = false;
  try {
    const auto analysed = analyse(photo, options.settings);
    if (analysed) {
      outcome.analysis = *analysed;
    } else if (analysed.error().kind == qorocv::client::ErrorKind::unreadable) {
      outcome.error = whyUnreadable(photo);
    } else {
      outcome.error = analysed.error().text;
      libraryFailed = true;
    }
  } catch (const std::runtime_error& error) { // of our own, which explains itself
    outcome.error = error.what();
  } catch (const std::exception& exception) { // of a picture that was to be written
    outcome.error = inOneLine(exception);
    libraryFailed = true;
  }
  const std::string libraryText = console.takeLibraryText();
  if (outcome.analysis) {
    outcome.analysis->damaged = tellsOfDamage(libraryText);
  }
  if (options.verbose || libraryFailed) {
    console.show(libraryText);
  }
  return outcome;
}

/// False where a photograph failed, or could not be printed.
bool analyseAll(const Options& options, Console& console) {
  const std::unique_ptr<Output> output = options.json ? jsonOutput() : tableOutput();
  bool allGood = true;
  bool allPrinted = true;
  for (const std::string& photo : options.photos) {
    const Outcome outcome = lookAt(photo, options, console);
    if (!outcome.analysis) {
      allGood = false;
      console.complain(std::string(photo).append(": ").append(outcome.error));
      allPrinted &= console.print(output->failed(photo, outcome.error));
      continue;
    }
    if (outcome.analysis->damaged) {
      console.complain(photo + ": the file is damaged or cut short; what could be read was used");
    }
    allPrinted &= console.print(output->analysed(photo, *outcome.analysis));
  }
  allPrinted &= console.print(output->end());
  if (!allPrinted) {
    console.complain("the results cannot be written to standard output");
  }
  return allGood && allPrinted;
}

ExitCode run(const Options& options) {
  Console console;
  if (!haveModels(options, console)) {
    return modelsMissing;
  }
  return analyseAll(options, console) ? allRead : someFailed;
}

} // namespace

int main(int argc, char** argv) {
  keepStandardDescriptors();
#ifndef _WIN32
  // The library opens files by the user's locale; names may be in every language, whatever that has.
  setenv("LC_ALL", "C.UTF-8", 1);
#endif
  // --models is read in the current locale.
  std::setlocale(LC_ALL, "");
  try {
    std::vector<std::string> words = utf8Arguments(argc, argv);
    if (!words.empty() && words.front() == "models") {
      return modelsCommand({words.begin() + 1, words.end()});
    }
    if (!words.empty() && isCommand(words.front())) {
      return runCommand(std::move(words));
    }
    if (!words.empty() && words.front() == "find") {
      words.erase(words.begin());
    }
    const auto options = readOptions(std::move(words));
    const auto* const toDo = std::get_if<Options>(&options);
    return toDo != nullptr ? run(*toDo) : std::get<ExitCode>(options);
  } catch (const std::exception& error) {
    std::fputs("qorfaces: ", stderr);
    std::fputs(error.what(), stderr);
    std::fputs("\n", stderr);
  }
  return someFailed;
}
