#include "scan_options.h"

#include "crop_options.h"
#include "default_models.h"
#include "detector_option.h"
#include "export.h"
#include "journal.h"
#include "merge_runs.h"
#include "parse.h"
#include "report/report.h"
#include "scan.h"
#include "worker.h"

#include <CLI/CLI.hpp>
#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <utility>

namespace qorfaces {

namespace {

namespace client = qorocv::client;
namespace fs = std::filesystem;

// What stands on the command line of a scan. What it means together is chosen when all is known.
struct ScanWords {
  ScanOptions options;
  std::optional<client::Detector> detector;
  std::string headCentre = "none";
  std::string tiles = "none";
  CropWords crop;
  std::string shard;
  std::string out;
  std::vector<std::string> extensions;
};

std::string existsError(const std::string& name) {
  std::error_code error;
  if (name == "-" || fs::exists(fs::u8path(name), error)) {
    return {};
  }
  return error ? name + " cannot be reached: " + error.message() : name + " is not there";
}

std::string tilesError(const std::string& text) {
  return text == "none" || text == "auto" || gridOf(text)
             ? std::string()
             : text + " is neither auto nor a grid such as 6x4";
}

std::optional<Shard> shardOf(const std::string& text) {
  Shard shard{};
  char behind = 0;
  const int read = std::sscanf(text.c_str(), "%9d/%9d%c", &shard.index, &shard.count, &behind);
  const bool isGood = read == 2 && shard.index >= 1 && shard.index <= shard.count;
  return isGood ? std::optional(shard) : std::nullopt;
}

std::string shardError(const std::string& text) {
  return shardOf(text) ? std::string() : text + " is no shard: the first of three is 1/3";
}

void describe(CLI::App& app, ScanWords& words) {
  ScanOptions& options = words.options;
  client::Request& request = options.settings.request;
  app.add_option("PATH", options.inputs.paths,
                 "Folders, with all below them, and files; - reads paths from standard input")
      ->check(existsError);
  app.add_option("--out", words.out, "The run folder, which is made, or gone on with")
      ->type_name("RUN")
      ->required()
      ->check(nameError);
  app.add_option("--from-file", options.inputs.list, "A file with the path of a photograph a line")
      ->type_name("LIST")
      ->check(existsError);
  app.add_flag("-0,--null", options.inputs.nulls,
               "Paths in lists end in a NUL, as of find -print0");
  app.add_option("--extensions", words.extensions,
                 "Which files of folders are photographs (jpg,jpeg,png,tif,tiff,webp,bmp)")
      ->type_name("LIST")
      ->delimiter(',')
      ->allow_extra_args(false); // what follows is a photograph
  app.add_option("--models", options.models, "Directory of the model files")
      ->type_name("DIR")
      ->capture_default_str();
  describeDetector(app, "What finds the faces: ssd, ssd-tf or haar. With --landmarks it is haar",
                   words.detector);
  app.add_option("--max-side", request.maxSide,
                 "Scale the longer side to N pixels before looking; 0 keeps the photograph's own")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  CLI::Option* const landmarks =
      app.add_flag("--landmarks", request.landmarks, "Write all 68 landmarks of each face");
  app.add_option("--head-centre", words.headCentre,
                 "Write the centre of each head, measured by colour or by mask")
      ->type_name("HOW")
      ->check(CLI::IsMember({"colour", "mask"}))
      ->excludes(landmarks);
  app.add_option(
         "--tiles", words.tiles,
         "Look at overlapping tiles, for small faces in groups: a grid such as 6x4, or auto, "
         "which takes one for photographs of 3000 pixels and more")
      ->type_name("auto|COLSxROWS")
      ->check(tilesError)
      ->excludes(landmarks);
  describeCrop(app, words.crop)->excludes(landmarks);
  app.add_flag("--report", options.settings.thumbnails,
               "Make small copies, and a page to look through it all: RUN/report/index.html");
  app.add_option("--jobs", options.jobs,
                 "Photographs that are looked at at once; as many as there are processors")
      ->type_name("N")
      ->check(CLI::Range(1, 1024));
  app.add_option("--slots", options.slots,
                 "How many of them one process looks at: more take less memory, and one that ends "
                 "takes more with it")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::Range(int{QOROCV460_FIRST_SLOT}, int{QOROCV460_LAST_SLOT}));
  app.add_option("--shard", words.shard, "Look at part I of N of all photographs")
      ->type_name("I/N")
      ->check(shardError);
  app.add_flag("--retry-failed", options.retryFailed,
               "Look again at what failed before; what is no longer there is left out");
  app.add_flag("--quiet", options.quiet, "Say nothing while all goes well");
  app.footer(R"(Started again with the same run folder and options, it goes on where it was.

--landmarks takes one slot a process, and --tiles head centres by colour.

Exit codes: 0 every photograph was read; 1 some were not, or the run folder cannot be written; 2 the
arguments are wrong, or the run folder was made with other options or another scan writes to it; 3
models are missing or cannot be loaded; 130 interrupted.)");
}

ScanOptions chosen(ScanWords words) {
  ScanOptions options = std::move(words.options);
  ScanSettings& settings = options.settings;
  if (options.inputs.paths.empty() && options.inputs.list.empty()) {
    throw CLI::ValidationError("PATH", "nothing to look at");
  }
  settings.request.detector = words.detector.value_or(defaultDetector(settings.request.landmarks));
  settings.request.headCentres = words.headCentre == "colour" ? client::HeadCentres::byColour
                                 : words.headCentre == "mask" ? client::HeadCentres::byMask
                                                              : client::HeadCentres::none;
  settings.grid = gridOf(words.tiles);
  settings.tiles = settings.grid           ? Tiles::grid
                   : words.tiles == "auto" ? Tiles::automatic
                                           : Tiles::none;
  settings.crop = shapeOf(words.crop);
  if (settings.crop && settings.request.headCentres == client::HeadCentres::none) {
    settings.request.headCentres =
        settings.tiles == Tiles::none ? client::HeadCentres::byMask : client::HeadCentres::byColour;
  }
  if (settings.request.landmarks && settings.request.detector != client::Detector::haar) {
    throw CLI::ValidationError("--landmarks", "goes with --detector haar");
  }
  if (settings.request.landmarks && options.slots > 1) {
    throw CLI::ValidationError("--landmarks", "takes one slot a process");
  }
  if (settings.tiles != Tiles::none && settings.request.detector == client::Detector::haar) {
    throw CLI::ValidationError("--tiles", "goes with --detector ssd or ssd-tf, not with haar");
  }
  if (settings.tiles != Tiles::none &&
      settings.request.headCentres == client::HeadCentres::byMask) {
    throw CLI::ValidationError("--tiles", "goes with --head-centre colour, not with mask");
  }
  if (options.models.empty()) {
    options.models = defaultModels();
  }
  if (!words.shard.empty()) {
    options.shard = shardOf(words.shard);
  }
  if (!words.extensions.empty()) {
    options.inputs.extensions.clear();
    for (std::string extension : words.extensions) {
      extension.erase(0, extension.find_first_not_of('.'));
      options.inputs.extensions.insert(CLI::detail::to_lower(extension));
    }
  }
  options.out = fs::absolute(fs::u8path(words.out));
  for (const std::string& path : options.inputs.paths) {
    std::error_code ignored; // one that is not there is no folder to look at
    if (fs::equivalent(fs::u8path(path), options.out, ignored)) {
      throw CLI::ValidationError("--out", "is a folder to look at; name another");
    }
  }
  return options;
}

/// Reads the words and calls `run` behind that, unless there is nothing to do.
template <class Run> ExitCode parsed(CLI::App& app, std::vector<std::string> words, Run run) {
  try {
    parse(app, std::move(words));
    return run();
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? allRead : badArguments;
  } catch (const WrongFolder& error) {
    std::cerr << "qorfaces: " << error.what() << '\n';
    return badArguments;
  }
}

ExitCode scanCommand(std::vector<std::string> words) {
  CLI::App app("Looks at every photograph of folders and writes what it finds into a run folder.",
               "qorfaces scan");
  ScanWords read;
  read.options.jobs = std::max(1, cv::getNumberOfCPUs());
  describe(app, read);
  return parsed(app, std::move(words), [&] { return scan(chosen(std::move(read))); });
}

ExitCode exportCommand(std::vector<std::string> words) {
  CLI::App app("Writes the tables and the summary of a run, finished or not, into its folder.",
               "qorfaces export");
  std::string run;
  app.add_option("RUN", run, "The run folder")->required()->check(nameError);
  app.footer(
      "Exit codes: 0 they were written; 1 they were not; 2 the arguments are wrong, or RUN is\n"
      "no run folder, or one that a scan writes to.");
  return parsed(app, std::move(words), [&] {
    const RunFolder folder = RunFolder::existing(fs::u8path(run));
    putInOrder(folder.journal());
    const Counts counts = exportRun(folder);
    std::cerr << "qorfaces: " << inWords(counts) << '\n';
    return allRead;
  });
}

ExitCode reportCommand(std::vector<std::string> words) {
  CLI::App app("Writes RUN/report/ anew from RUN/faces.ndjson; open its index.html.",
               "qorfaces report");
  std::string run;
  app.add_option("RUN", run, "The run folder")->required()->check(nameError);
  app.footer("Exit codes: 0 it was written; 1 it was not; 2 the arguments are wrong, or RUN is no "
             "run folder.");
  return parsed(app, std::move(words), [&] {
    const fs::path folder = fs::u8path(run);
    if (std::error_code ignored; !fs::exists(folder / "faces.ndjson", ignored)) {
      throw WrongFolder(run + " holds no scan");
    }
    writeReport(folder);
    return allRead;
  });
}

ExitCode mergeCommand(std::vector<std::string> words) {
  CLI::App app("Makes one run of many, such as those of all shards.", "qorfaces merge");
  std::vector<std::string> runs;
  std::string out;
  app.add_option("RUN", runs, "Run folders")->required()->check(nameError);
  app.add_option("--out", out, "The run folder that is made")
      ->type_name("RUN")
      ->required()
      ->check(nameError);
  app.footer(
      "Exit codes: 0 all is in it; 1 a folder of photographs could not be read when its run was\n"
      "made, or the run was not written; 2 the arguments are wrong, or a run folder cannot be "
      "used.");
  return parsed(app, std::move(words), [&] {
    std::vector<fs::path> folders;
    folders.reserve(runs.size());
    for (const std::string& run : runs) {
      folders.push_back(fs::u8path(run));
    }
    const MergedRun merged = mergeRuns(folders, fs::u8path(out));
    for (const std::string& unread : merged.unread) {
      std::cerr << "qorfaces: " << unread << '\n';
    }
    std::cerr << "qorfaces: " << inWords(merged.counts) << '\n';
    return merged.unread.empty() ? allRead : someFailed;
  });
}

} // namespace

bool isCommand(const std::string& word) {
  return word == "scan" || word == "export" || word == "report" || word == "merge" ||
         word == "worker";
}

ExitCode runCommand(std::vector<std::string> words) {
  const std::string command = words.front();
  words.erase(words.begin());
  if (command == "worker") { // which the scan itself starts
    return work();
  }
  return command == "scan"     ? scanCommand(std::move(words))
         : command == "export" ? exportCommand(std::move(words))
         : command == "report" ? reportCommand(std::move(words))
                               : mergeCommand(std::move(words));
}

} // namespace qorfaces
