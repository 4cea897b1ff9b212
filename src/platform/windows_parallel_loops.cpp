// OpenCV's parallel loops on the thread pool that Windows keeps for every process. The library
// starts no thread of its own: one that waited for the next loop would still be there when the host
// unloads the library, with nothing left under its feet.
#include "platform/platform.h"

#include <opencv2/core/parallel/parallel_backend.hpp>
#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <windows.h>

namespace qorocv {
namespace {

/// One loop: its tasks, taken one by one by whichever thread is free.
class Loop {
public:
  using Body = cv::parallel::ParallelForAPI::FN_parallel_for_body_cb_t;

  Loop(int tasks, Body body, void* data) : tasks_(tasks), body_(body), data_(data) {}

  void work() {
    for (int task = next_++; task < tasks_; task = next_++) {
      body_(task, task + 1, data_);
    }
  }

  static void CALLBACK help(PTP_CALLBACK_INSTANCE, void* loop, PTP_WORK) {
    static_cast<Loop*>(loop)->work();
  }

private:
  const int tasks_;
  const Body body_;
  void* const data_;
  std::atomic<int> next_{0};
};

class SystemThreadPool : public cv::parallel::ParallelForAPI {
public:
  void parallel_for(int tasks, FN_parallel_for_body_cb_t body, void* data) override {
    Loop loop(tasks, body, data);
    const PTP_WORK help = CreateThreadpoolWork(Loop::help, &loop, nullptr);
    if (help != nullptr) {
      for (int helper = 1; helper < std::min(tasks, threads_); ++helper) {
        SubmitThreadpoolWork(help);
      }
    }
    loop.work();
    if (help != nullptr) {
      WaitForThreadpoolWorkCallbacks(help, TRUE); // TRUE: who has not begun need not begin
      CloseThreadpoolWork(help);
    }
  }

  int getThreadNum() const override { return 0; }
  int getNumThreads() const override { return threads_; }
  int setNumThreads(int threads) override {
    const int before = threads_;
    threads_ = threads > 0 ? threads : cv::getNumberOfCPUs();
    return before;
  }
  const char* getName() const override { return "system thread pool"; }

private:
  int threads_ = cv::getNumberOfCPUs();
};

} // namespace

void useSystemThreads() {
  static std::once_flag once;
  std::call_once(once,
                 [] { cv::parallel::setParallelForBackend(std::make_shared<SystemThreadPool>()); });
}

} // namespace qorocv
