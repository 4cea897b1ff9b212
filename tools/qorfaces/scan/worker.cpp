#include "worker.h"

#include "console.h"
#include "damage.h"
#include "descriptors.h"
#include "hexadecimal.h"
#include "line_reader.h"
#include "look.h"
#include "models.h"
#include "name_for_library.h"
#include "new_file.h"
#include "photo_json.h"
#include "picture_file.h"
#include "pictures.h"

#include <opencv2/core/utility.hpp>

#include <atomic>
#include <csignal>
#include <exception>
#include <filesystem>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>

namespace qorfaces {

namespace {

namespace client = qorocv::client;
using Json = nlohmann::ordered_json;

/// Tells which photograph the libraries' words are about. They go to one place, whichever thread
/// says them.
class DamageWatch {
public:
  DamageWatch(Console& console, int slots) : console_(console), isAlone_(slots == 1) {}

  /// Calls `look` and tells whether it found the file at `path` damaged.
  template <class Look> auto watch(const std::string& path, bool& damaged, Look look) {
    const unsigned before = alarms_;
    auto result = [&] {
      const std::shared_lock<std::shared_mutex> many(looking_);
      return look();
    }();
    damaged = false;
    if (console_.hasLibraryText() || alarms_ != before) {
      const std::unique_lock<std::shared_mutex> alone(looking_);
      const bool anyDamage = tellsOfDamage(console_.takeLibraryText());
      if (isAlone_) {
        damaged = anyDamage;
      } else {
        alarms_ += anyDamage ? 1 : 0;
        damaged = alarms_ != before && isDamaged(path);
      }
    }
    return result;
  }

private:
  bool isDamaged(const std::string& path) {
    readPicture(path);
    return tellsOfDamage(console_.takeLibraryText());
  }

  Console& console_;
  const bool isAlone_;
  std::shared_mutex looking_;
  std::atomic<unsigned> alarms_{0};
};

std::string inOneLine(std::string text) {
  for (char& letter : text) {
    letter = letter == '\n' || letter == '\r' ? ' ' : letter;
  }
  return text;
}

/// The members of an object of JSON, without braces. Names of files need not be text.
std::string membersOf(const Json& object) {
  const std::string text = object.dump(-1, ' ', false, Json::error_handler_t::replace);
  return text.substr(1, text.size() - 2);
}

/// What became of a photograph, as the worker's answer has it.
struct Answer {
  Outcome outcome = Outcome::failed;
  std::size_t faces = 0;
  std::string text; // the members of its line, or why the run folder cannot be written
};

class Worker {
public:
  Worker(Console& console, const Json& setup)
      : console_(console), settings_(scanSettingsOf(setup["settings"])),
        run_(std::filesystem::u8path(fromHexadecimal(setup["out"]))),
        watch_(console, setup["slots"]), pool_(setup["slots"]) {}

  void add(const Json& task) {
    pool_.submit([this, task](int slot) {
      if (!isOver_) {
        answer(task, slot);
      }
    });
  }

  /// Nobody takes answers any more: what is not begun stays undone.
  void end() { isOver_ = true; }

private:
  struct Looked {
    client::Result<client::Photo> photo;
    Pictures pictures;
  };

  Looked lookAndCut(const std::string& name, const Json& task, int slot) const {
    Looked looked{look(name, settings_, slot), {}};
    if (looked.photo) {
      looked.pictures = writePictures(name, *looked.photo, settings_, run_,
                                      {task["thumbnail"], task["portraits"]});
    }
    return looked;
  }

  Answer answerTo(const Json& task, int slot) {
    const NameForLibrary name = task.contains("path") ? NameForLibrary::ofText(task["path"])
                                                      : NameForLibrary::ofBytes(task["bytes"]);
    std::string error;
    try {
      bool damaged = false;
      const Looked looked =
          watch_.watch(name.text(), damaged, [&] { return lookAndCut(name.text(), task, slot); });
      if (looked.photo) {
        return {Outcome::good, looked.photo->faces.size(),
                membersOf(toJson(*looked.photo, damaged, looked.pictures))};
      }
      const bool isOurs = looked.photo.error().kind == client::ErrorKind::unreadable;
      error = isOurs ? whyUnreadable(name.text()) : looked.photo.error().text;
    } catch (const CannotWrite& problem) {
      return {Outcome::cannotWrite, 0, inOneLine(problem.what())};
    } catch (const std::exception& problem) { // of a picture that cannot be cut
      error = inOneLine(problem.what());
    }
    return {Outcome::failed, 0, membersOf({{"status", "failed"}, {"error", error}})};
  }

  void answer(const Json& task, int slot) {
    const Answer answer = answerTo(task, slot);
    const std::lock_guard<std::mutex> lock(printing_);
    console_.print(std::to_string(task["id"].get<long>()) + " " +
                   std::to_string(static_cast<int>(answer.outcome)) + " " +
                   std::to_string(answer.faces) + " " + answer.text + "\n");
  }

  Console& console_;
  const ScanSettings settings_;
  const std::filesystem::path run_;
  DamageWatch watch_;
  std::mutex printing_;
  std::atomic<bool> isOver_{false};
  client::SlotPool pool_; // last: its threads use all of the above
};

/// The empty text where the models can be loaded, else what is wrong.
std::string modelError(const std::string& directory, const ScanSettings& settings) {
  Settings needed;
  needed.detector = settings.request.detector;
  needed.landmarks = settings.request.landmarks;
  needed.headCentre = settings.request.headCentres == client::HeadCentres::byColour;
  if (settings.request.headCentres == client::HeadCentres::byMask) {
    needed.mask = "asked for";
  }
  // A cascade without landmarks works on a slot, as the network does.
  needed.slot = settings.request.landmarks ? 0 : QOROCV460_FIRST_SLOT;
  std::string missing = placeModels(directory, needed);
  if (!missing.empty()) {
    return missing;
  }
  const auto error = loadModels(needed);
  return error ? "a model cannot be loaded: " + error->text : std::string();
}

} // namespace

ExitCode work() {
  // The one that gives out the photographs decides when to end.
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGTERM, SIG_IGN);
  cv::setNumThreads(1); // the processors have their workers already
  LineReader input(0);
  const auto first = input.next();
  if (!first) {
    return allRead;
  }
  const Json setup = Json::parse(*first);
  const ScanSettings settings = scanSettingsOf(setup["settings"]);
  Console console;
  // The library takes names in UTF-8; as long as this lives, others have one.
  const std::string directory = fromHexadecimal(setup["models"]);
  std::optional<NameForLibrary> models;
  if (const auto bytes = bytesOf(std::filesystem::u8path(directory))) {
    models.emplace(NameForLibrary::ofBytes(*bytes));
  }
  const std::string error = modelError(models ? models->text() : directory, settings);
  console.takeLibraryText();
  if (!error.empty()) {
    console.print("models " + inOneLine(error) + "\n");
    return modelsMissing;
  }
  Worker worker(console, setup); // throws where there can be no threads
  console.print("ready\n");
  while (const auto line = input.next()) {
    worker.add(Json::parse(*line));
  }
  worker.end();
  return allRead;
}

} // namespace qorfaces
