// What holds of all eleven per-slot exports, through the C interface and on made models.
#include "exports/slot_exports_fixture.h"

#include <clocale>

namespace qorocv::testing {
namespace {

class EverySlotExport : public OneSlotExport {};

INSTANTIATE_TEST_SUITE_P(Exports, EverySlotExport, ::testing::ValuesIn(kSlotExports), nameOf);

/// What each rejected call gave: without an array, without a count, and with too little capacity.
std::vector<Outcome> rejectedCalls(const SlotExport& slotExport, const std::string& path,
                                   const CallOptions& options = {}) {
  std::vector<Outcome> outcomes;
  outcomes.push_back(call([&](HostVariables host) {
    host.results = nullptr;
    return slotExport.call(path.c_str(), host, options);
  }));
  outcomes.push_back(call([&](HostVariables host) {
    host.count = nullptr;
    return slotExport.call(path.c_str(), host, options);
  }));
  for (const int capacity : {0, -1}) {
    outcomes.push_back(detect(slotExport, path, options, capacity));
    EXPECT_EQ(outcomes.back().count, capacity);
    outcomes.back().count = 1; // as in the other two
  }
  return outcomes;
}

TEST_P(EverySlotExport, returnsZeroForACallWithoutRoomForAnAnswer) {
  for (const Outcome& outcome : rejectedCalls(GetParam(), photoOfFaces(1).string())) {
    EXPECT_EQ(outcome.returned, 0);
  }
}

TEST_P(EverySlotExport, touchesNothingInARejectedCall) {
  const std::string path = photoOfFaces(1).string();
  for (const Outcome& outcome : rejectedCalls(GetParam(), path, copiedTo(copyPath()))) {
    expectNothingTouched(outcome, 1);
  }
  EXPECT_FALSE(std::filesystem::exists(copyPath()));
}

TEST_P(EverySlotExport, keepsTheLocaleInARejectedCall) {
  rejectedCalls(GetParam(), photoOfFaces(1).string());
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST_P(EverySlotExport, saysNothingInARejectedCall) {
  for (const Outcome& outcome : rejectedCalls(GetParam(), photoOfFaces(1).string())) {
    EXPECT_EQ(outcome.printed, "");
  }
}

TEST_P(EverySlotExport, doesNotLookForThePhotographOfARejectedCall) {
  for (const Outcome& outcome : rejectedCalls(GetParam(), "no-such-picture.jpg")) {
    EXPECT_EQ(outcome.returned, 0);
    EXPECT_EQ(outcome.printed, "");
  }
}

class UnreadablePhotograph : public OneSlotExport {
protected:
  void SetUp() override {
    // There are no models either: none is looked for.
    initModelsAtPath(directory_.asPrefix().c_str());
    outcome_ = find("no-such-picture.jpg", copiedTo(copyPath()));
  }
  Outcome outcome_;
};

INSTANTIATE_TEST_SUITE_P(Exports, UnreadablePhotograph, ::testing::ValuesIn(kSlotExports), nameOf);

TEST_P(UnreadablePhotograph, isReportedInOneLine) {
  EXPECT_EQ(outcome_.returned, -1);
  EXPECT_EQ(outcome_.printed, kUnreadableMessage);
}

TEST_P(UnreadablePhotograph, leavesEverythingUntouched) {
  expectNothingTouched(outcome_, 1);
  EXPECT_FALSE(std::filesystem::exists(copyPath()));
}

TEST_P(EverySlotExport, reportsOneFace) {
  const Outcome outcome = find(photoOfFaces(1), scaledTo(896));
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(outcome.results[0], 1.0);
  EXPECT_EQ(outcome.count, static_cast<int>(1 + recordSize()));
  EXPECT_EQ(outcome.written(), 1 + recordSize());
  EXPECT_LT(outcome.results[1], outcome.results[3]);
  EXPECT_LT(outcome.results[2], outcome.results[4]);
}

TEST_P(EverySlotExport, reportsTheSizeBeforeScaling) {
  const Outcome outcome = find(photoOfFaces(1), scaledTo(896));
  EXPECT_EQ(outcome.width, 448);
  EXPECT_EQ(outcome.height, 320);
}

TEST_P(EverySlotExport, findsNothingOnAPlainPicture) {
  useModels(modelsSeeing({}));
  const Outcome outcome = find(photo(plainPicture({200, 100})));
  EXPECT_EQ(outcome.returned, 0);
  EXPECT_EQ(outcome.count, 0);
  EXPECT_EQ(outcome.written(), 0U);
  EXPECT_EQ(outcome.width, 200);
  EXPECT_EQ(outcome.height, 100);
}

TEST_P(EverySlotExport, writesThirtyRecordsOfMoreFacesWhateverTheCapacity) {
  int slot = 1;
  for (const int faces : {31, 35}) {
    const auto path = photoOfFaces(faces);
    for (const int capacity : {1, 5000}) {
      const Outcome outcome = find(path, inSlot(slot), capacity);
      EXPECT_EQ(outcome.returned, faces);
      EXPECT_EQ(outcome.results[0], static_cast<double>(faces));
      EXPECT_EQ(outcome.count, static_cast<int>(1 + 30 * recordSize()));
      EXPECT_EQ(outcome.written(), 1 + 30 * recordSize());
    }
    ++slot; // a fresh one, for the networks keep their rows
  }
}

TEST_P(EverySlotExport, treatsEveryOtherSlotNumberAsSlotOne) {
  const auto path = photoOfFaces(2);
  const Outcome one = find(path, inSlot(1));
  ASSERT_EQ(one.returned, 2);
  std::filesystem::remove_all(directory_ / kMadeLandmarks); // slot 1 needs no file any more
  std::filesystem::remove_all(directory_ / kMadeCascade);
  std::filesystem::remove_all(directory_ / kMadeCaffeWeights);
  for (const int number : {0, 10, -1, 2147483647}) {
    EXPECT_EQ(find(path, inSlot(number)).results, one.results) << number;
  }
  EXPECT_THROW(find(path, inSlot(2)), cv::Exception);
}

TEST_P(EverySlotExport, loadsASlotOnItsFirstCallOnly) {
  const auto path = photoOfFaces(1);
  const Outcome first = find(path, inSlot(3));
  initModelsAtPath("/no/such/directory/");
  EXPECT_EQ(find(path, inSlot(3)).results, first.results);
  EXPECT_THROW(find(path, inSlot(4)), cv::Exception);
}

TEST_P(EverySlotExport, givesTheSameFromEverySlot) {
  const auto path = photoOfFaces(3);
  const Outcome one = find(path, inSlot(1));
  for (int slot = 2; slot <= 9; ++slot) {
    EXPECT_EQ(find(path, inSlot(slot)).results, one.results) << slot;
  }
}

TEST_P(EverySlotExport, normalisesWithTheSizeThatStandsInTheHostsVariables) {
  const std::string path = photoOfFaces(1).string();
  const Outcome apart = find(path);
  int side = 0;
  const Outcome together = call([&](HostVariables host) {
    host.width = &side;
    host.height = &side;
    host.tileWidth = &side; // what the tile export divides by
    host.tileHeight = &side;
    return GetParam().call(path.c_str(), host, {});
  });
  EXPECT_EQ(side, 320);
  EXPECT_EQ(together.results[2], apart.results[2]);
  EXPECT_NEAR(together.results[1], apart.results[1] * 448 / 320, 1e-6);
}

} // namespace
} // namespace qorocv::testing
