#include "options.h"

#include "crop_options.h"
#include "default_models.h"
#include "detector_option.h"
#include "parse.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <optional>
#include <qorocv460/qorocv460.h>
#include <set>
#include <system_error>
#include <utility>

namespace qorfaces {

namespace {

// What stands on the command line. What does not is chosen when all of it is known.
struct Words {
  Options options;
  std::optional<Detector> detector;
  std::optional<int> maxSide;
  std::string grid;
  CropWords crop;
};

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

/// The empty text for a grid such as 6x4, else what is wrong with it.
std::string gridError(const std::string& text) {
  return gridOf(text) ? std::string()
                      : text + " is no grid: columns and rows, 1 to " + std::to_string(kMostTiles) +
                            " each, as in 6x4";
}

void describe(CLI::App& app, Words& words) {
  Options& options = words.options;
  Settings& settings = options.settings;
  app.add_option("PHOTO", options.photos, "Photographs to look at")->required();
  app.add_option("--models", options.models,
                 "Directory of the model files (model01.prototxt to model07.onnx); "
                 "scripts/get-models.sh fills one. Without it models here, or else the ones that "
                 "were unpacked with qorfaces")
      ->type_name("DIR")
      ->check(directoryError);
  describeDetector(
      app,
      "What finds the faces: the SSD network in its Caffe form (ssd) or in its TensorFlow form "
      "(ssd-tf), or the Haar cascade (haar). With --landmarks it is the cascade",
      words.detector);
  app.add_option("--slot", settings.slot,
                 "Work in detector slot N, 1 to 9. Without it the Haar cascade is the shared one, "
                 "and everything else works in slot 1")
      ->type_name("N")
      ->check(CLI::Range(int{QOROCV460_FIRST_SLOT}, int{QOROCV460_LAST_SLOT}));
  app.add_option("--max-side", words.maxSide,
                 "Scale the longer side to N pixels before looking for faces: smaller is faster "
                 "and misses small faces. 0 keeps the photograph's own size, as tiles do without "
                 "this option")
      ->type_name("N")
      ->default_str(std::to_string(qorocv::client::Request().maxSide))
      ->check(CLI::NonNegativeNumber);
  CLI::Option* const landmarks =
      app.add_flag("--landmarks", settings.landmarks,
                   "Report all 68 landmarks of each face; for the shared Haar cascade");
  app.add_flag("--head-centre", settings.headCentre,
               "Report the centre of each head, halfway between chin and estimated top")
      ->excludes(landmarks);
  app.add_option("--mask", settings.mask,
                 "Write the photograph to OUT.png with the person cut out on transparency; for one "
                 "photograph")
      ->type_name("OUT.png")
      ->check(transparentFileError)
      ->excludes(landmarks);
  app.add_option("--crop-mask", settings.cropMask,
                 "The same of the surroundings of the photograph's only face, by a closer mask")
      ->type_name("OUT.png")
      ->check(transparentFileError)
      ->excludes(landmarks);
  app.add_option("--tiles", words.grid,
                 "For a group photograph: look at overlapping tiles on a grid of COLS x ROWS, and "
                 "at the whole, on all processors, and report every face once")
      ->type_name("COLSxROWS")
      ->check(gridError)
      ->excludes(landmarks, "--slot", "--mask", "--crop-mask");
  app.add_option(
         "--annotate", settings.annotatedCopy,
         "Write the picture, scaled as --max-side says, with boxes, landmarks and head centres "
         "drawn to OUT.png; for one photograph")
      ->type_name("OUT.png")
      ->check(pictureFileError);
  describeCrop(app, words.crop)->excludes(landmarks);
  app.add_option("--portraits", settings.portraits,
                 "Directory for the portraits of --crop, made if it is not there")
      ->type_name("DIR")
      ->check(nameError)
      ->capture_default_str()
      ->needs("--crop");
  app.add_flag("--json", options.json, "Print JSON for programs instead of a table");
  app.add_flag("--verbose", options.verbose,
               "Print what the libraries below say, too, on standard error");
  app.footer(
      R"(Commands: "qorfaces find PHOTO..." is the same as "qorfaces PHOTO..."; "qorfaces scan FOLDER...
--out RUN" looks at folders, "qorfaces export RUN" writes its tables anew, "qorfaces report RUN" its
page, "qorfaces merge RUN... --out RUN" makes one run of many; "qorfaces models DIR" looks at model
files. Each has a --help. A photograph with such a name is ./scan.

All positions are fractions of the photograph's width and height, 0 at its left and top.

Exit codes: 0 every photograph was read, with faces or without; 1 a photograph could not be read
or analysed, a picture not written or the results not printed; 2 the arguments are wrong; 3 models
are missing or cannot be loaded. A photograph that is damaged or cut short is read as far as it
goes: a warning on standard error names it, and the exit code stays 0.)");
}

// Two photographs of the same name would write the same portraits.
void checkPortraitNames(const std::vector<std::string>& photos) {
  std::set<std::string> names;
  for (const std::string& photo : photos) {
    const std::string name =
        CLI::detail::to_lower(std::filesystem::u8path(photo).filename().u8string());
    if (!names.insert(name).second) {
      throw CLI::ValidationError("--crop", "takes one photograph of the name " + name +
                                               ": portraits are named after it");
    }
  }
}

// Of two pictures in one file the second would be left.
void checkPictureNames(const Settings& settings) {
  std::set<std::string> names;
  for (const std::string& name : {settings.annotatedCopy, settings.mask, settings.cropMask}) {
    if (!name.empty() && !names.insert(name).second) {
      throw CLI::ValidationError(name, "is named for two pictures");
    }
  }
}

// What the options say together. Throws CLI::ValidationError where they contradict each other.
Options chosen(const CLI::App& app, const Words& words) {
  Options options = words.options;
  if (options.models.empty()) {
    options.models = defaultModels();
  }
  Settings& settings = options.settings;
  for (const char* const picture : {"--annotate", "--mask", "--crop-mask"}) {
    if (options.photos.size() > 1 && app.count(picture) > 0) {
      throw CLI::ValidationError(picture, "takes one photograph at a time");
    }
  }
  checkPictureNames(settings);
  settings.detector = words.detector.value_or(defaultDetector(settings.landmarks));
  settings.tiles = gridOf(words.grid);
  if (settings.tiles && settings.detector == Detector::haar) {
    throw CLI::ValidationError("--tiles", "goes with --detector ssd or ssd-tf, not with haar");
  }
  if (settings.landmarks && usesSlot(settings)) {
    throw CLI::ValidationError("--landmarks", "goes with the shared Haar cascade: not with --slot, "
                                              "--detector ssd or --detector ssd-tf");
  }
  settings.crop = shapeOf(words.crop);
  if (settings.crop) {
    settings.headCentre = true;
    checkPortraitNames(options.photos);
  }
  settings.maxSide = words.maxSide.value_or(settings.tiles ? 0 : qorocv::client::Request().maxSide);
  return options;
}

} // namespace

std::variant<Options, ExitCode> readOptions(std::vector<std::string> words) {
  CLI::App app(
      "Finds the faces in photographs and prints where each one, its nose bridge and its chin are.",
      "qorfaces");
  Words read;
  describe(app, read);
  try {
    parse(app, std::move(words));
    return chosen(app, read);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? allRead : badArguments;
  }
}

} // namespace qorfaces
