#include <algorithm>
#include <qorocv460/client.h>

namespace qorocv::client {

SlotPool::SlotPool(int slots) {
  const int last = std::clamp<int>(slots, QOROCV460_FIRST_SLOT, QOROCV460_LAST_SLOT);
  for (int slot = QOROCV460_FIRST_SLOT; slot <= last; ++slot) {
    threads_.emplace_back([this, slot] { work(slot); });
  }
}

SlotPool::~SlotPool() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) {
    thread.join();
  }
}

void SlotPool::add(std::function<void(int)> task) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  changed_.notify_one();
}

void SlotPool::work(int slot) {
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
