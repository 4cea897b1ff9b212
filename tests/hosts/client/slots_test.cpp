// Who may use which slots: a second thread is refused the one that another is at work on, or that a
// pool has.
#include "slots.h"

#include <gtest/gtest.h>

#include <future>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

namespace qorocv::client {
namespace {

constexpr const char* kUnreadable = "the file cannot be read as a picture";

Request of(Detector detector) {
  Request request;
  request.detector = detector;
  return request;
}

// What a call says of a photograph that is not there: first the slot is looked at.
std::string sayOf(int slot, const Request& request = {}) {
  return analyse("no-such-photograph.png", request, slot).error().text;
}

std::string saysToAnotherThread(int slot, const Request& request = {}) {
  return std::async(std::launch::async, sayOf, slot, request).get();
}

/// The slots of a pool's threads, each of which waits for all the others.
std::set<int> slotsOf(SlotPool& pool) {
  std::mutex mutex;
  std::condition_variable changed;
  std::set<int> slots;
  std::vector<std::future<void>> done;
  for (int i = 0; i < pool.slots(); ++i) {
    done.push_back(pool.submit([&](int slot) {
      std::unique_lock<std::mutex> lock(mutex);
      slots.insert(slot);
      changed.notify_all();
      changed.wait(lock, [&] { return static_cast<int>(slots.size()) == pool.slots(); });
    }));
  }
  for (std::future<void>& one : done) {
    one.get();
  }
  return slots;
}

TEST(Slot, isRefusedToASecondThreadWhileOneIsAtWork) {
  const Work work(3, Detector::ssd);
  ASSERT_FALSE(work.refusal());
  EXPECT_EQ(saysToAnotherThread(3), "slot 3 is at work for another thread");
  EXPECT_EQ(saysToAnotherThread(4), kUnreadable);
}

TEST(Slot, isRefusedForMasksAndTilesToo) {
  const Work work(3, Detector::ssd);
  const char* const refused = "slot 3 is at work for another thread";
  EXPECT_EQ(analyseWithMasks("none.png", {}, 3).error().text, refused);
  EXPECT_EQ(analyseTile("none.png", {1, 1, 1, 1}, {}, 3).error().text, refused);
}

TEST(Slot, isSlotOneByEveryOtherNumber) {
  const Work work(QOROCV460_FIRST_SLOT, Detector::ssd);
  EXPECT_EQ(saysToAnotherThread(-7), "slot 1 is at work for another thread");
  EXPECT_EQ(saysToAnotherThread(10), "slot 1 is at work for another thread");
}

TEST(Slot, isOneOfItsOwnUpToTheLast) {
  const Work work(QOROCV460_LAST_SLOT, Detector::ssd);
  EXPECT_EQ(saysToAnotherThread(9), "slot 9 is at work for another thread");
  EXPECT_EQ(saysToAnotherThread(QOROCV460_FIRST_SLOT, of(Detector::haar)), kUnreadable);
}

TEST(Slot, isFreeAfterACall) {
  { const Work work(3, Detector::ssd); }
  EXPECT_EQ(saysToAnotherThread(3), kUnreadable);
  EXPECT_EQ(saysToAnotherThread(3), kUnreadable);
}

TEST(SharedPair, isRefusedToASecondThreadWhileOneIsAtWork) {
  const Work work(kSharedPair, Detector::haar);
  const char* const refused = "the shared pair is at work for another thread";
  EXPECT_EQ(saysToAnotherThread(kSharedPair, of(Detector::haar)), refused);
  const std::optional<Error> error = loadSharedPair();
  ASSERT_TRUE(error);
  EXPECT_EQ(error->text, refused);
}

TEST(SharedPair, hasNoMasksAndNoTiles) {
  EXPECT_EQ(analyseWithMasks("none.png", {}, kSharedPair).error().kind, ErrorKind::library);
  EXPECT_EQ(analyseTile("none.png", {1, 1, 1, 1}, {}, kSharedPair).error().kind,
            ErrorKind::library);
}

TEST(Slot, keepsTheKindOfNetworkThatWasNamedFirst) {
  EXPECT_EQ(sayOf(1, of(Detector::haar)), kUnreadable);
  EXPECT_EQ(sayOf(1, of(Detector::ssdTf)), kUnreadable);
  EXPECT_EQ(sayOf(1, of(Detector::ssd)),
            "slot 1 keeps the TensorFlow network: the other kind takes another slot");
  EXPECT_EQ(sayOf(1, of(Detector::haar)), kUnreadable);
  EXPECT_EQ(sayOf(1, of(Detector::ssdTf)), kUnreadable);
  EXPECT_EQ(sayOf(2, of(Detector::ssd)), kUnreadable);
  EXPECT_EQ(sayOf(2, of(Detector::ssdTf)),
            "slot 2 keeps the Caffe network: the other kind takes another slot");
}

TEST(Slot, keepsTheKindForMasksAndTilesToo) {
  const char* const refused = "slot 1 keeps the Caffe network: the other kind takes another slot";
  EXPECT_EQ(sayOf(1, of(Detector::ssd)), kUnreadable);
  EXPECT_EQ(analyseWithMasks("none.png", of(Detector::ssdTf), 1).error().text, refused);
  EXPECT_EQ(analyseTile("none.png", {1, 1, 1, 1}, of(Detector::ssdTf), 1).error().text, refused);
}

TEST(SlotPool, hasNoSlotThatKeepsAnotherNetworkThanItsDetectors) {
  sayOf(1, of(Detector::ssd));
  sayOf(2, of(Detector::ssdTf));
  SlotPool caffe(2, Detector::ssd);
  SlotPool tensorflow(2, Detector::ssdTf);
  EXPECT_EQ(slotsOf(caffe), (std::set<int>{1, 3}));
  EXPECT_EQ(slotsOf(tensorflow), (std::set<int>{2, 4}));
}

TEST(SlotPool, hasAnySlotsForTheCascade) {
  sayOf(1, of(Detector::ssd));
  sayOf(2, of(Detector::ssdTf));
  SlotPool pool(3, Detector::haar);
  EXPECT_EQ(slotsOf(pool), (std::set<int>{1, 2, 3}));
}

TEST(SlotPool, takesTheFirstSlots) {
  SlotPool pool(3);
  EXPECT_EQ(slotsOf(pool), (std::set<int>{1, 2, 3}));
}

TEST(SlotPool, leavesAnotherOneItsSlots) {
  SlotPool one(3);
  SlotPool other(2);
  EXPECT_EQ(slotsOf(one), (std::set<int>{1, 2, 3}));
  EXPECT_EQ(slotsOf(other), (std::set<int>{4, 5}));
}

TEST(SlotPool, leavesASlotThatIsAtWork) {
  const Work work(2, Detector::haar);
  SlotPool pool(2);
  EXPECT_EQ(slotsOf(pool), (std::set<int>{1, 3}));
}

TEST(SlotPool, hasAsManySlotsAsAreFree) {
  const SlotPool one(7);
  EXPECT_EQ(SlotPool(9).slots(), 2);
}

TEST(SlotPool, throwsWhereNoSlotIsFree) {
  const SlotPool all(9);
  EXPECT_THROW(SlotPool(1), std::runtime_error);
}

TEST(SlotPool, keepsItsSlotsFromOtherThreads) {
  {
    SlotPool pool(1);
    EXPECT_EQ(sayOf(1), "slot 1 belongs to a thread of a SlotPool");
    EXPECT_EQ(pool.submit([](int slot) { return sayOf(slot); }).get(), kUnreadable);
  }
  EXPECT_EQ(sayOf(1), kUnreadable);
}

} // namespace
} // namespace qorocv::client
