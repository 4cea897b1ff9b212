#include "faces/shared_lbf_model.h"

#include "faces/lbf_reader.h"
#include "platform/platform.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <vector>

namespace qorocv {

namespace {

/// A model that somebody holds, and the file that it was read from.
struct HeldModel {
  FileStamp stamp;
  bool isStampReliable;
  std::weak_ptr<const LbfModel> model;
};

/// False for a file that was changed just now: changed once more it may keep its stamp, as times
/// come in ticks. Two seconds is the longest one, FAT's.
bool isReliable(const FileStamp& stamp) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::nanoseconds(stamp.changed) + std::chrono::seconds(3) < now;
}

class HeldModels {
public:
  std::shared_ptr<const LbfModel> load(const std::string& path) {
    const std::lock_guard<std::mutex> lock(mutex_);
    forgetReleased();
    const std::optional<FileStamp> stamp = fileStamp(path);
    if (auto held = stamp ? unchanged(*stamp) : nullptr) {
      return held;
    }
    auto model = readLbfModel(path);
    if (!model) {
      return nullptr;
    }
    if (auto held = equalTo(*model)) {
      model = held;
    }
    if (stamp) {
      models_.push_back({*stamp, isReliable(*stamp), model});
    }
    return model;
  }

private:
  void forgetReleased() {
    const auto isReleased = [](const HeldModel& held) { return held.model.expired(); };
    models_.erase(std::remove_if(models_.begin(), models_.end(), isReleased), models_.end());
  }

  std::shared_ptr<const LbfModel> unchanged(const FileStamp& stamp) const {
    for (const HeldModel& held : models_) {
      if (held.isStampReliable && held.stamp == stamp) {
        return held.model.lock();
      }
    }
    return nullptr;
  }

  std::shared_ptr<const LbfModel> equalTo(const LbfModel& model) const {
    for (const HeldModel& held : models_) {
      auto other = held.model.lock();
      if (other && *other == model) {
        return other;
      }
    }
    return nullptr;
  }

  std::mutex mutex_;
  std::vector<HeldModel> models_;
};

} // namespace

std::shared_ptr<const LbfModel> sharedLbfModel(const std::string& path) {
  // Made by the first call and gone with the library. It owns no model: those end with the last of
  // their landmarkers, before it or after it.
  static HeldModels heldModels;
  return heldModels.load(path);
}

} // namespace qorocv
