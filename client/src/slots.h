// Who uses which slots, for all threads of the process.
#pragma once

#include <optional>
#include <qorocv460/client.h>
#include <vector>

namespace qorocv::client {

/// While one lives, a slot or the shared pair is at work for the calling thread; or it says why not.
class Work {
public:
  /// A number that is neither a slot's nor kSharedPair means slot 1, as in the library.
  Work(int slot, Detector detector);
  ~Work();
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

  const std::optional<Error>& refusal() const { return refusal_; }

private:
  int slot_;
  std::optional<Error> refusal_;
};

/// For a pool: up to `most` slots that no other pool has and no thread is at work on. Where a
/// detector is named, none that keeps the other kind of network.
std::vector<int> takeSlots(int most, std::optional<Detector> detector);

/// From now on the calling thread alone may use a slot that was taken.
void becomeThreadOf(int slot);

void giveBack(const std::vector<int>& slots);

} // namespace qorocv::client
