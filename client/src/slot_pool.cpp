#include "slots.h"

#include <algorithm>
#include <stdexcept>

namespace qorocv::client {

SlotPool::SlotPool(int slots, std::optional<Detector> detector)
    : slots_(
          takeSlots(std::clamp<int>(slots, QOROCV460_FIRST_SLOT, QOROCV460_LAST_SLOT), detector)) {
  if (slots_.empty()) {
    throw std::runtime_error("no slot is free for a SlotPool");
  }
  try {
    for (const int slot : slots_) {
      threads_.emplace_back([this, slot] { work(slot); });
    }
  } catch (...) { // a thread that cannot be started
    end();
    throw;
  }
}

SlotPool::~SlotPool() {
  end();
}

void SlotPool::end() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) {
    thread.join();
  }
  giveBack(slots_);
}

void SlotPool::add(std::function<void(int)> task) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  changed_.notify_one();
}

void SlotPool::work(int slot) {
  becomeThreadOf(slot);
  while (true) {
    std::function<void(int)> task;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      changed_.wait(lock, [this] { return ending_ || !tasks_.empty(); });
      if (tasks_.empty()) {
        return;
      }
      task = std::move(tasks_.front());
      tasks_.pop_front();
    }
    task(slot);
  }
}

} // namespace qorocv::client
