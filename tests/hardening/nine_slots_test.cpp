// Nine threads on nine slots at once give what one gives alone, bit for bit.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/shared_files.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <thread>

namespace qorocv::testing {
namespace {

constexpr int kSlots = QOROCV460_LAST_SLOT;

/// One call of a slot's programme and what it must give.
struct Step {
  SlotExport slotExport;
  std::filesystem::path photo;
  int maxSide;
};

int modelKindOf(int slot) {
  return slot % 2; // Caffe in odd slots
}
constexpr std::array<int, 2> kOneOfEachKind{1, 2};

// Standard output is captured by the process, so threads call without `detect`.
Outcome callOnce(const Step& step, int slot, const std::filesystem::path& copy) {
  Outcome outcome;
  outcome.count = 1;
  outcome.results.assign(QOROCV460_HEAD_CENTRE_RESULTS + 1, kUntouchedValue);
  CallOptions options;
  options.slot = slot;
  options.maxSide = step.maxSide;
  options.modelKind = modelKindOf(slot);
  options.outputPath = copy.string();
  outcome.returned =
      step.slotExport.call(step.photo.u8string().c_str(), variablesOf(outcome), options);
  return outcome;
}

/// Every slot goes through the list `rounds` times, each thread beginning at another place of it, and
/// compares each call with what a slot with the same kind of network gave alone. Returns how many
/// differed.
int differences(const std::vector<Step>& steps, std::size_t rounds,
                const TemporaryDirectory& directory) {
  const auto copyOf = [&](int slot) {
    return directory / ("copy" + std::to_string(slot) + ".png");
  };
  std::map<int, std::vector<Outcome>> alone; // by the kind of network
  for (const int slot : kOneOfEachKind) {
    for (const Step& step : steps) {
      alone[modelKindOf(slot)].push_back(callOnce(step, slot, copyOf(slot)));
    }
  }
  std::vector<int> different(kSlots + 1, 0);
  std::vector<std::thread> threads;
  for (int slot = QOROCV460_FIRST_SLOT; slot <= kSlots; ++slot) {
    threads.emplace_back([&, slot] {
      const auto index = static_cast<std::size_t>(slot);
      for (std::size_t i = 0; i < rounds * steps.size(); ++i) {
        const std::size_t step = (index + i) % steps.size();
        const Outcome& expected = alone.at(modelKindOf(slot))[step];
        different[index] +=
            sameOutputs(callOnce(steps[step], slot, copyOf(slot)), expected) ? 0 : 1;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  int all = 0;
  for (const int count : different) {
    all += count;
  }
  return all;
}

std::vector<Step> everyExportOn(const std::vector<std::filesystem::path>& photos, int maxSide) {
  std::vector<Step> steps;
  for (const auto& photo : photos) {
    for (const SlotExport& slotExport : kSlotExports) {
      steps.push_back({slotExport, photo, maxSide});
    }
  }
  return steps;
}

TEST(NineSlots, giveInNineThreadsWhatTheyGiveAlone) {
  constexpr std::size_t rounds = 3;
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  initModelsAtPath(directory.asPrefix().c_str());
  const std::vector<std::filesystem::path> photos{
      writePicture(directory / "one.png", pictureWithFace()),
      writePicture(directory / "many.png", pictureWithGrid(7)),
      writePicture(directory / "none.png", texturedPicture({160, 120}))};
  EXPECT_EQ(differences(everyExportOn(photos, 200), rounds, directory), 0);
}

TEST(NineSlots, giveInNineThreadsWhatTheyGiveAloneWithRealModels) {
  constexpr std::size_t rounds = 1;
  const TemporaryDirectory directory;
  ASSERT_EQ(initModelsAtPath(realModels().c_str()), 0);
  std::vector<std::filesystem::path> photos;
  for (const char* const name : photosAtHand({"astronaut.jpg", "painting.jpg", "player.jpg"})) {
    photos.push_back(realPhoto(name));
  }
  EXPECT_EQ(differences(everyExportOn(photos, 160), rounds, directory), 0);
}

TEST(NineSlots, loadSideBySide) {
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  initModelsAtPath(directory.asPrefix().c_str());
  const Step network{kDunTr02, writePicture(directory / "face.png", pictureWithFace()), 0};
  const Step cascade{kHaarTr02, network.photo, 0};
  std::vector<std::thread> threads;
  std::vector<int> returned(kSlots + 1, 0);
  for (int slot = QOROCV460_FIRST_SLOT; slot <= kSlots; ++slot) {
    threads.emplace_back([&, slot] {
      const auto found =
          callOnce(network, slot, {}).returned + callOnce(cascade, slot, {}).returned;
      returned[static_cast<std::size_t>(slot)] = found;
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (int slot = QOROCV460_FIRST_SLOT; slot <= kSlots; ++slot) {
    EXPECT_EQ(returned[static_cast<std::size_t>(slot)], 2) << slot;
  }
}

} // namespace
} // namespace qorocv::testing
