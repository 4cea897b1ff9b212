#include "worker.h"

#include "console.h"
#include "damage.h"
#include "descriptors.h"
#include "line_reader.h"
#include "look.h"
#include "models.h"
#include "photo_json.h"
#include "picture_file.h"

#include <opencv2/core/utility.hpp>

#include <atomic>
#include <csignal>
#include <exception>
#include <fcntl.h>
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

/// A photograph's name as the library takes it. It takes UTF-8: a name that is none is reached
/// through a descriptor.
class NameForLibrary {
public:
  explicit NameForLibrary(const Json& task) {
    if (task.contains("path")) {
      name_ = task["path"].get<std::string>();
      return;
    }
#ifdef __linux__
    const auto hexadecimal = task["bytes"].get<std::string>();
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hexadecimal.size(); i += 2) {
      bytes += static_cast<char>(std::stoi(hexadecimal.substr(i, 2), nullptr, 16));
    }
    descriptor_ = open(bytes.c_str(), O_RDONLY | O_CLOEXEC);
    name_ = "/proc/self/fd/" + std::to_string(descriptor_);
#endif
  }
  ~NameForLibrary() {
    if (descriptor_ != kNoDescriptor) {
      closeDescriptor(descriptor_);
    }
  }
  NameForLibrary(const NameForLibrary&) = delete;
  NameForLibrary& operator=(const NameForLibrary&) = delete;

  const std::string& text() const {
    return name_;
  }

private:
  std::string name_;
  int descriptor_ = kNoDescriptor;
};

class Worker {
public:
  Worker(Console& console, const ScanSettings& settings, int slots)
      : console_(console), settings_(settings), watch_(console, slots), pool_(slots) {}

  void add(const Json& task) {
    pool_.submit([this, task](int slot) { answer(task, slot); });
  }

private:
  void answer(const Json& task, int slot) {
    const NameForLibrary name(task);
    bool damaged = false;
    const client::Result<client::Photo> photo =
        watch_.watch(name.text(), damaged, [&] { return look(name.text(), settings_, slot); });
    Json line;
    std::size_t faces = 0;
    if (photo) {
      line = toJson(*photo, damaged);
      faces = photo->faces.size();
    } else {
      const bool isOurs = photo.error().kind == client::ErrorKind::unreadable;
      line = {{"status", "failed"},
              {"error", isOurs ? whyUnreadable(name.text()) : photo.error().text}};
    }
    // Names of files need not be text.
    const std::string members = line.dump(-1, ' ', false, Json::error_handler_t::replace);
    const std::lock_guard<std::mutex> lock(printing_);
    console_.print(std::to_string(task["id"].get<long>()) + (photo ? " 1 " : " 0 ") +
                   std::to_string(faces) + " " + members.substr(1, members.size() - 2) + "\n");
  }

  Console& console_;
  const ScanSettings settings_;
  DamageWatch watch_;
  std::mutex printing_;
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
  std::string names;
  for (const std::string& model : placeModels(directory, needed)) {
    names += (names.empty() ? "" : ", ") + model;
  }
  if (!names.empty()) {
    return directory + " lacks " + names;
  }
  const auto error = loadModels(needed);
  return error ? "a model cannot be loaded: " + error->text : std::string();
}

std::string inOneLine(std::string text) {
  for (char& letter : text) {
    letter = letter == '\n' || letter == '\r' ? ' ' : letter;
  }
  return text;
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
  const std::string error = modelError(setup["models"], settings);
  console.takeLibraryText();
  if (!error.empty()) {
    console.print("models " + inOneLine(error) + "\n");
    return modelsMissing;
  }
  console.print("ready\n");
  Worker worker(console, settings, setup["slots"]);
  while (const auto line = input.next()) {
    worker.add(Json::parse(*line));
  }
  return allRead;
}

} // namespace qorfaces
