// qorfaces: the library from the command line.
#include "analysis.h"
#include "report.h"
#include "result_stream.h"
#include "utf8_arguments.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <qorocv460/qorocv460.h>
#include <system_error>

namespace {

enum ExitCode { allRead = 0, someFailed = 1, badArguments = 2, modelsMissing = 3 };

struct Arguments {
  qorfaces::Settings settings;
  bool detectorChosen = false;
  std::string grid;
  std::string models = "models";
  bool json = false;
  std::vector<std::string> photos;
};

void complain(const std::string& message) {
  std::cerr << "qorfaces: " << message << std::endl;
}

/// The empty text for a directory that is there, else what is wrong with it.
std::string directoryError(const std::string& name) {
  std::error_code ignored;
  const bool there = std::filesystem::is_directory(std::filesystem::u8path(name), ignored);
  return there ? std::string() : "Directory does not exist: " + name;
}

/// The empty text for a file name whose extension names a picture format, else what is wrong with
/// it.
std::string pictureFileError(const std::string& name) {
  const std::string extension =
      CLI::detail::to_lower(std::filesystem::path(name).extension().string());
  for (const char* const known : {".png", ".jpg", ".jpeg", ".bmp", ".tif", ".tiff", ".webp"}) {
    if (extension == known) {
      return {};
    }
  }
  return name + " does not end in .png, .jpg, .bmp, .tif or .webp";
}

/// The same for what can also be transparent.
std::string transparentFileError(const std::string& name) {
  const std::string extension =
      CLI::detail::to_lower(std::filesystem::path(name).extension().string());
  return extension == ".png" ? std::string() : name + " does not end in .png";
}

// Tiles smaller than this see no more faces, only more pixels of each; a typing error sees none.
constexpr int kMostTiles = 50;

/// Nothing where the text is no grid.
std::optional<qorfaces::Grid> gridOf(const std::string& text) {
  const char* const end = text.data() + text.size();
  qorfaces::Grid grid{};
  const auto [cross, columnsError] = std::from_chars(text.data(), end, grid.columns);
  if (columnsError != std::errc() || cross == end || *cross != 'x') {
    return std::nullopt;
  }
  const auto [rest, rowsError] = std::from_chars(cross + 1, end, grid.rows);
  if (rowsError != std::errc() || rest != end) {
    return std::nullopt;
  }
  const auto fits = [](int number) { return number >= 1 && number <= kMostTiles; };
  return fits(grid.columns) && fits(grid.rows) ? std::optional(grid) : std::nullopt;
}

/// The empty text for a grid such as 6x4, else what is wrong with it.
std::string gridError(const std::string& text) {
  return gridOf(text) ? std::string()
                      : text + " is no grid: columns and rows, 1 to " + std::to_string(kMostTiles) +
                            " each, as in 6x4";
}

void describe(CLI::App& app, Arguments& arguments) {
  app.add_option("PHOTO", arguments.photos, "Photographs to look at")->required();
  app.add_option("--models", arguments.models,
                 "Directory of the model files (model01.prototxt to model07.onnx); "
                 "scripts/get-models.sh fills one")
      ->type_name("DIR")
      ->capture_default_str()
      ->check(directoryError);
  const auto chooseDetector = [&arguments](const std::string& name) {
    arguments.detectorChosen = true;
    arguments.settings.detector = name == "ssd"      ? qorfaces::Detector::ssd
                                  : name == "ssd-tf" ? qorfaces::Detector::ssdTf
                                                     : qorfaces::Detector::haar;
  };
  app.add_option_function<std::string>(
         "--detector", chooseDetector,
         "What finds the faces: the Haar cascade, the SSD network in its "
         "Caffe form, or the same in its TensorFlow form. Tiles take a network, ssd by default")
      ->type_name("NAME")
      ->default_str("haar")
      ->check(CLI::IsMember({"haar", "ssd", "ssd-tf"}));
  app.add_option(
         "--slot", arguments.settings.slot,
         "Work in detector slot N, 1 to 9. Without it the Haar cascade is the shared one, and "
         "everything else works in slot 1")
      ->type_name("N")
      ->check(CLI::Range(int{QOROCV460_FIRST_SLOT}, int{QOROCV460_LAST_SLOT}));
  app.add_option(
         "--max-side", arguments.settings.maxSide,
         "Scale the longer side to N pixels before looking for faces: smaller is faster and "
         "misses small faces. 0 keeps the photograph's size")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  CLI::Option* const landmarks =
      app.add_flag("--landmarks", arguments.settings.landmarks,
                   "Report all 68 landmarks of each face; for the shared Haar "
                   "cascade");
  app.add_flag("--head-centre", arguments.settings.headCentre,
               "Report the centre of each head, halfway between chin and estimated top")
      ->excludes(landmarks);
  app.add_option("--mask", arguments.settings.mask,
                 "Write the photograph to OUT.png with the person cut out on transparency; for one "
                 "photograph")
      ->type_name("OUT.png")
      ->check(transparentFileError)
      ->excludes(landmarks);
  app.add_option("--crop-mask", arguments.settings.cropMask,
                 "The same of the surroundings of the photograph's only face, by a closer mask")
      ->type_name("OUT.png")
      ->check(transparentFileError)
      ->excludes(landmarks);
  app.add_option("--tiles", arguments.grid,
                 "For a group photograph: look at overlapping tiles on a grid of COLS x ROWS, and "
                 "at the whole, on all processors, and report every face once")
      ->type_name("COLSxROWS")
      ->check(gridError)
      ->excludes(landmarks, "--slot", "--mask", "--crop-mask");
  app.add_option(
         "--annotate", arguments.settings.annotatedCopy,
         "Write the picture with boxes, landmarks and head centres drawn to OUT.png; for one "
         "photograph")
      ->type_name("OUT.png")
      ->check(pictureFileError);
  app.add_flag("--json", arguments.json, "Print JSON for programs instead of a table");
  app.footer(
      "All positions are fractions of the photograph's width and height, 0 at its left and top.\n"
      "\n"
      "Exit codes: 0 every photograph was read, with faces or without; 1 a photograph could not "
      "be\n"
      "read or analysed, or its copy not written; 2 the arguments are wrong; 3 models are "
      "missing,\n"
      "or fail to load before the first photograph.");
}

/// Analyses and prints every photograph; false where one failed.
bool analyseAll(const Arguments& arguments, qorfaces::ResultStream& results) {
  bool good = true;
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const std::string& photo : arguments.photos) {
    std::string error;
    try {
      if (const auto analysis = qorfaces::analyse(photo, arguments.settings)) {
        if (arguments.json) {
          list.push_back(qorfaces::json(photo, *analysis));
        } else {
          good &= results.print(qorfaces::table(photo, *analysis));
        }
        continue;
      }
      error = "cannot be read as a picture";
    } catch (const std::exception& exception) {
      error = exception.what();
    }
    good = false;
    complain(std::string(photo).append(": ").append(error));
    list.push_back(qorfaces::jsonError(photo, error));
  }
  if (arguments.json) {
    const auto replaceBadText = nlohmann::ordered_json::error_handler_t::replace;
    good &= results.print(list.dump(2, ' ', false, replaceBadText) + "\n");
  }
  return good;
}

/// False, with a complaint, where a model is missing or cannot be loaded.
bool loadModels(const Arguments& arguments) {
  const std::vector<std::string> missing =
      qorfaces::placeModels(arguments.models, arguments.settings);
  if (!missing.empty()) {
    complain(arguments.models + " lacks " + CLI::detail::join(missing, ", ") +
             "; scripts/get-models.sh fills a directory with all models");
    return false;
  }
  try {
    qorfaces::loadModels(arguments.settings);
  } catch (const std::exception& exception) {
    complain(std::string("a model cannot be loaded: ") + exception.what());
    return false;
  }
  return true;
}

int run(int argc, char** argv) {
  std::setlocale(LC_ALL,
                 ""); // --models is read in the current locale, and may be named in any language

  Arguments arguments;
  CLI::App app(
      "Finds the faces in photographs and prints where each one, its nose bridge and its chin are.",
      "qorfaces");
  describe(app, arguments);
  try {
    std::vector<std::string> words = qorfaces::utf8Arguments(argc, argv);
    std::reverse(words.begin(), words.end()); // the parser takes them from the back
    app.parse(words);
    for (const char* const picture : {"--annotate", "--mask", "--crop-mask"}) {
      if (arguments.photos.size() > 1 && app.count(picture) > 0) {
        throw CLI::ValidationError(picture, "takes one photograph at a time");
      }
    }
    if (!arguments.grid.empty()) {
      if (!arguments.detectorChosen) {
        arguments.settings.detector = qorfaces::Detector::ssd;
      }
      if (arguments.settings.detector == qorfaces::Detector::haar) {
        throw CLI::ValidationError("--tiles", "goes with --detector ssd or ssd-tf, not with haar");
      }
      arguments.settings.tiles = gridOf(arguments.grid);
    }
    if (arguments.settings.landmarks && usesSlot(arguments.settings)) {
      throw CLI::ValidationError("--landmarks",
                                 "goes with the shared Haar cascade: not with --slot, "
                                 "--detector ssd or --detector ssd-tf");
    }
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? allRead : badArguments;
  }
  qorfaces::ResultStream results;
  if (!loadModels(arguments)) {
    return modelsMissing;
  }
  return analyseAll(arguments, results) ? allRead : someFailed;
}

} // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::fputs("qorfaces: ", stderr);
    std::fputs(error.what(), stderr);
    std::fputs("\n", stderr);
  }
  return someFailed;
}
