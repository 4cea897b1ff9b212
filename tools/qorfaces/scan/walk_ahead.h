// The walk through what a scan is to look at, in a thread of its own.
#pragma once

#include "inputs.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qorfaces {

/// So that nobody stands still while a disk or whoever writes a list does.
class WalkAhead {
public:
  /// Calls `arrived`, in the walk's thread, when there is more behind a `next` that gave nothing.
  WalkAhead(const Inputs& inputs, std::function<void()> arrived);
  /// Waits for nothing: the walk may wait for a list that nobody ends.
  ~WalkAhead();
  WalkAhead(const WalkAhead&) = delete;
  WalkAhead& operator=(const WalkAhead&) = delete;

  struct Next {
    std::optional<PhotographFile> file;  // nothing: not yet, or
    bool isEnd = false;                  // no more
    std::vector<std::string> complaints; // as of Walk
  };
  /// Throws what has ended the walk before its end.
  Next next();

private:
  struct Shared;

  const std::shared_ptr<Shared> shared_; // with the thread
};

} // namespace qorfaces
