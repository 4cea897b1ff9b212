#include "walk_ahead.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <iterator>
#include <mutex>
#include <thread>
#include <utility>

namespace qorfaces {

namespace {

constexpr std::size_t kMostAhead = 1000; // photographs

} // namespace

struct WalkAhead::Shared {
  Shared(const Inputs& given, std::function<void()> call)
      : inputs(given), arrived(std::move(call)) {}

  void walk();
  bool add(std::optional<PhotographFile> file, std::vector<std::string> newComplaints);

  const Inputs inputs;
  const std::function<void()> arrived;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<PhotographFile> files;
  std::vector<std::string> complaints;
  std::exception_ptr failure;
  bool isEnd = false;
  bool isWaitedFor = false;
  bool isOver = false; // nobody asks any more
};

void WalkAhead::Shared::walk() {
  try {
    Walk walk(inputs);
    std::optional<PhotographFile> file;
    do {
      file = walk.next();
    } while (add(std::move(file), walk.takeComplaints()));
  } catch (...) {
    failure = std::current_exception();
    add(std::nullopt, {});
  }
}

/// Waits until there is room for more; false where none is wanted.
bool WalkAhead::Shared::add(std::optional<PhotographFile> file,
                            std::vector<std::string> newComplaints) {
  std::unique_lock<std::mutex> lock(mutex);
  complaints.insert(complaints.end(), std::make_move_iterator(newComplaints.begin()),
                    std::make_move_iterator(newComplaints.end()));
  isEnd = !file;
  if (file) {
    files.push_back(std::move(*file));
  }
  if (!isOver && std::exchange(isWaitedFor, false)) {
    arrived();
  }
  changed.wait(lock, [this] { return isOver || isEnd || files.size() < kMostAhead; });
  return !isOver && !isEnd;
}

WalkAhead::WalkAhead(const Inputs& inputs, std::function<void()> arrived)
    : shared_(std::make_shared<Shared>(inputs, std::move(arrived))) {
  std::thread([shared = shared_] { shared->walk(); }).detach();
}

WalkAhead::~WalkAhead() {
  const std::lock_guard<std::mutex> lock(shared_->mutex);
  shared_->isOver = true;
  shared_->changed.notify_all();
}

WalkAhead::Next WalkAhead::next() {
  const std::lock_guard<std::mutex> lock(shared_->mutex);
  Next next;
  next.complaints = std::exchange(shared_->complaints, {});
  if (!shared_->files.empty()) {
    next.file = std::move(shared_->files.front());
    shared_->files.pop_front();
    shared_->changed.notify_all();
    return next;
  }
  if (shared_->failure) {
    std::rethrow_exception(shared_->failure);
  }
  next.isEnd = shared_->isEnd;
  shared_->isWaitedFor = !next.isEnd;
  return next;
}

} // namespace qorfaces
