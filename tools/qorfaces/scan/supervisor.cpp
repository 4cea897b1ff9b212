#include "supervisor.h"

#include "hexadecimal.h"
#include "journal.h"
#include "pictures.h"
#include "progress.h"
#include "scan.h"
#include "shards.h"
#include "walk_ahead.h"
#include "worker.h"
#include "worker_process.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <csignal>
#include <deque>
#include <exception>
#include <filesystem>
#include <list>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace qorfaces {

namespace asio = boost::asio;
namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

// So many photographs wait in a worker for each slot that is at work: none stands still meanwhile.
constexpr std::size_t kWaitingPerSlot = 1;

// Workers that end before they have loaded their models are started again so often.
constexpr int kMostFailedStarts = 3;

// After so many photographs that are done already, signals and answers have their turn.
constexpr int kMostAtOnce = 1000;

std::string membersOf(const std::string& error) {
  return R"("status":"failed","error":)" + nlohmann::json(error).dump();
}

/// Counts the photographs in folders ahead of those who look at them, for the time that is left.
class Count {
public:
  explicit Count(const ScanOptions& options) {
    if (!options.quiet && canBeReadTwice(options.inputs)) {
      thread_ = std::thread([this, &options] {
        try {
          count(options);
        } catch (const std::exception&) { // the walk that finds the photographs says so
          return;
        }
      });
    }
  }
  ~Count() {
    isEnding_ = true;
    if (thread_.joinable()) {
      thread_.join();
    }
  }
  Count(const Count&) = delete;
  Count& operator=(const Count&) = delete;

  /// 0 as long as it is not known.
  long total() const { return total_; }

private:
  // What a pipe has given to one reader is lost to the other.
  static bool canBeReadTwice(const Inputs& inputs) {
    std::error_code ignored;
    return std::find(inputs.paths.begin(), inputs.paths.end(), "-") == inputs.paths.end() &&
           (inputs.list.empty() || fs::is_regular_file(fs::u8path(inputs.list), ignored));
  }

  void count(const ScanOptions& options) {
    Walk walk(options.inputs);
    long total = 0;
    while (const auto file = walk.next()) {
      if (isEnding_) {
        return;
      }
      total += !options.shard || isIn(*options.shard, file->name) ? 1 : 0;
    }
    total_ = total;
  }

  std::atomic<bool> isEnding_{false};
  std::atomic<long> total_{0};
  std::thread thread_;
};

} // namespace

class Supervisor::Work final : public WorkerProcess::Listener {
public:
  Work(const ScanOptions& options, Journal& journal, KnownPhotographs& known)
      : options_(options), journal_(journal), known_(known), signals_(context_, SIGINT, SIGTERM),
        timer_(context_),
        walk_(options.inputs, [this] { asio::post(context_, [this] { giveOut(); }); }),
        count_(options), progress_(options.quiet) {}

  SupervisionResult run() {
    signals_.async_wait([this](const boost::system::error_code& error, int) {
      if (!error) {
        interrupt();
      }
    });
    tick();
    giveOut();
    context_.run();
    progress_.end();
    if (!fatal_.empty()) {
      throw std::runtime_error(fatal_);
    }
    return result_;
  }

private:
  using Workers = std::list<WorkerProcess>;

  // How many more photographs may be looked at at once.
  int freeJobs() const {
    return std::accumulate(
        workers_.begin(), workers_.end(), options_.jobs,
        [](int free, const WorkerProcess& worker) { return free - worker.slots; });
  }

  bool isStopping() const { return isInterrupted_ || !fatal_.empty() || result_.code != allRead; }

  void interrupt() {
    isInterrupted_ = true;
    result_.code = interrupted;
    signals_.clear(); // a second one ends at once
    progress_.note("ending: what is being looked at is finished first; start again to go on");
    giveOut();
  }

  void fail(const std::string& text) {
    if (fatal_.empty()) {
      fatal_ = text;
    }
    giveOut();
  }

  void tick() {
    timer_.expires_after(progress_.interval());
    timer_.async_wait([this](const boost::system::error_code& error) {
      if (!error) {
        progress_.show(count_.total());
        tick();
      }
    });
  }

  /// The next photograph that is to be looked at. Nothing behind the last one, where the walk has not
  /// come to it, and where others should have their turn first.
  std::optional<PhotographFile> nextPhotograph() {
    for (int i = 0; i < kMostAtOnce; ++i) {
      WalkAhead::Next next = walk_.next();
      for (const std::string& complaint : next.complaints) {
        progress_.note(complaint);
        result_.unread.insert(complaint);
      }
      if (!next.file) {
        isWalked_ = next.isEnd;
        return std::nullopt;
      }
      PhotographFile& file = *next.file;
      if (options_.shard && !isIn(*options_.shard, file.name)) {
        continue;
      }
      readState(file); // where it cannot be, the worker says why
      if (known_.isNew(file)) {
        return std::move(file);
      }
      progress_.skipped();
    }
    if (!isToGoOn_) {
      isToGoOn_ = true;
      asio::post(context_, [this] {
        isToGoOn_ = false;
        giveOut();
      });
    }
    return std::nullopt;
  }

  std::optional<PhotographFile> nextUnlessWalked() {
    return isWalked_ || isStopping() ? std::nullopt : nextPhotograph();
  }

  bool isNothingLeft() const { return isWalked_ && waiting_.empty() && suspects_.empty(); }

  /// Gives every worker what it has room for, starts those that are missing, and ends them when
  /// nothing is left.
  void giveOut() {
    for (WorkerProcess& worker : workers_) {
      if ((worker.isReady || isStopping()) && !worker.isFinishing) {
        fill(worker);
      }
    }
    while (!isStopping() && freeJobs() > 0 && isSomethingForAnother()) {
      const int slots = std::min(options_.slots, freeJobs());
      workers_.emplace_back(context_, *this);
      workers_.back().slots = slots;
      // What every worker is told first. Names need not be text.
      workers_.back().send(Json{{"models", inHexadecimal(options_.models)},
                                {"out", inHexadecimal(options_.out.u8string())},
                                {"slots", slots},
                                {"settings", toJson(options_.settings)}}
                               .dump());
    }
    if (workers_.empty() && (isStopping() || isNothingLeft())) {
      signals_.cancel();
      timer_.cancel();
    }
  }

  // A worker takes a moment to start, and is started only where there is a photograph for it.
  bool isSomethingForAnother() {
    const auto starting = static_cast<std::size_t>(
        std::count_if(workers_.begin(), workers_.end(),
                      [](const WorkerProcess& worker) { return !worker.isReady; }));
    if (starting < waiting_.size() + suspects_.size()) {
      return true;
    }
    std::optional<PhotographFile> file = nextUnlessWalked();
    if (file) {
      waiting_.push_back(std::move(*file));
    }
    return file.has_value();
  }

  void fill(WorkerProcess& worker) {
    const std::size_t room = (1 + kWaitingPerSlot) * static_cast<std::size_t>(worker.slots);
    while (!isStopping() && !worker.isAlone && worker.given.size() < room) {
      if (worker.given.empty() && !suspects_.empty()) {
        worker.isAlone = true;
        give(worker, std::move(suspects_.front()));
        suspects_.pop_front();
      } else if (!waiting_.empty()) {
        give(worker, std::move(waiting_.front()));
        waiting_.pop_front();
      } else if (auto file = nextUnlessWalked()) {
        give(worker, std::move(*file));
      } else {
        break;
      }
    }
    if (worker.given.empty() && (isStopping() || isNothingLeft())) {
      worker.finish();
    }
  }

  void give(WorkerProcess& worker, PhotographFile file) {
    const long id = ++lastId_;
    const PictureNames pictures = pictureNames(file);
    Json task{{"id", id}, {"thumbnail", pictures.thumbnail}, {"portraits", pictures.portraits}};
    if (const auto bytes = bytesOf(file.path)) {
      task["bytes"] = *bytes;
    } else {
      task["path"] = file.path.u8string();
    }
    worker.send(task.dump());
    worker.given.emplace(id, std::move(file));
  }

  void answered(WorkerProcess& worker, const std::string& line) override {
    if (worker.isReady) {
      writeDown(worker, line);
    } else if (line == "ready") {
      worker.isReady = true;
      failedStarts_ = 0;
    } else if (result_.code == allRead) { // "models" and what is wrong with them
      progress_.note(line.substr(line.find(' ') + 1));
      result_.code = modelsMissing;
    }
    giveOut();
  }

  void writeDown(WorkerProcess& worker, const std::string& answer) {
    std::istringstream words(answer);
    long id = 0;
    int outcome = 0;
    long faces = 0;
    words >> id >> outcome >> faces;
    words.get();
    const auto photograph = worker.given.find(id);
    if (!words || photograph == worker.given.end()) {
      fail("a worker gave an answer that is none: " + answer);
      return;
    }
    const PhotographFile file = std::move(photograph->second);
    worker.given.erase(photograph);
    worker.isAlone = false;
    const std::string text = answer.substr(static_cast<std::size_t>(words.tellg()));
    if (outcome == static_cast<int>(Outcome::cannotWrite)) {
      failToWrite(text);
    } else {
      write(file, text, outcome == static_cast<int>(Outcome::good), faces);
    }
  }

  void write(const PhotographFile& file, const std::string& members, bool isGood, long faces) {
    if (!fatal_.empty()) {
      return;
    }
    try {
      journal_.append(lineOf(file, members));
      progress_.done(isGood, faces);
    } catch (const std::runtime_error& error) {
      failToWrite(error.what());
    }
  }

  void failToWrite(const std::string& text) {
    fail(text + "; what was done until then is kept, and the next start goes on from there");
  }

  void ended(WorkerProcess& worker) override {
    if (!worker.isReady && !isStopping() && ++failedStarts_ > kMostFailedStarts) {
      fail("workers end before they begin: " + worker.howItEnded());
    }
    for (auto& [id, file] : worker.given) {
      if (isStopping()) {
        break; // whoever ends the scan may have ended the worker, too: the next start tells
      }
      if (worker.isAlone) {
        write(file,
              membersOf("a worker that looked at it alone did not survive: " + worker.howItEnded()),
              false, 0);
      } else {
        suspects_.push_back(std::move(file));
      }
    }
    worker.given.clear();
    worker.isFinishing = true;             // what it were given from now on would be lost with it
    asio::post(context_, [this, &worker] { // not while it is at work in a call of its own
      workers_.remove_if([&](const WorkerProcess& each) { return &each == &worker; });
      giveOut();
    });
  }

  const ScanOptions& options_;
  Journal& journal_;
  KnownPhotographs& known_;
  asio::io_context context_;
  asio::signal_set signals_;
  asio::steady_timer timer_;
  WalkAhead walk_;
  Count count_;
  Progress progress_;
  Workers workers_;
  std::deque<PhotographFile> waiting_;  // for a worker that is being started
  std::deque<PhotographFile> suspects_; // were in a worker that ended
  long lastId_ = 0;
  int failedStarts_ = 0;
  bool isWalked_ = false;
  bool isToGoOn_ = false; // with the walk, when signals and answers have had their turn
  bool isInterrupted_ = false;
  std::string fatal_; // why it cannot go on
  SupervisionResult result_;
};

Supervisor::Supervisor(const ScanOptions& options, Journal& journal, KnownPhotographs& known)
    : work_(std::make_unique<Work>(options, journal, known)) {}

Supervisor::~Supervisor() = default;

SupervisionResult Supervisor::run() {
  return work_->run();
}

} // namespace qorfaces
