#include "slots.h"

#include <array>
#include <mutex>
#include <string>
#include <thread>

namespace qorocv::client {

namespace {

struct Place {
  bool isAtWork = false;
  bool isPools = false;
  std::thread::id thread; // the pool's
  // The library gives a network the colours in the order of the kind that a call names, whichever
  // network the slot has loaded: of two kinds one would find wrong faces without a word.
  std::optional<Detector> network; // of the first call with one
};

struct Places {
  std::mutex mutex;
  std::array<Place, QOROCV460_LAST_SLOT + 1> all; // the shared pair, and the slots by their numbers

  Place& of(int slot) { return all[static_cast<std::size_t>(slot)]; }
};

Places& thePlaces() {
  static Places places;
  return places;
}

bool keepsAnotherNetwork(const Place& place, Detector detector) {
  return detector != Detector::haar && place.network.value_or(detector) != detector;
}

/// Empty where the calling thread may use it.
std::string whyNot(int slot, const Place& place, Detector detector) {
  const std::string name = slot == kSharedPair ? "the shared pair" : "slot " + std::to_string(slot);
  if (place.isPools && place.thread != std::this_thread::get_id()) {
    return name + " belongs to a thread of a SlotPool";
  }
  if (place.isAtWork) {
    return name + " is at work for another thread";
  }
  if (keepsAnotherNetwork(place, detector)) {
    return name + " keeps the " + (detector == Detector::ssd ? "TensorFlow" : "Caffe") +
           " network: the other kind takes another slot";
  }
  return {};
}

int asTheLibraryReads(int slot) {
  const bool known = slot >= QOROCV460_FIRST_SLOT && slot <= QOROCV460_LAST_SLOT;
  return known || slot == kSharedPair ? slot : QOROCV460_FIRST_SLOT;
}

} // namespace

Work::Work(int slot, Detector detector) : slot_(asTheLibraryReads(slot)) {
  Places& places = thePlaces();
  const std::lock_guard<std::mutex> lock(places.mutex);
  Place& place = places.of(slot_);
  const std::string reason = whyNot(slot_, place, detector);
  if (!reason.empty()) {
    refusal_ = Error{ErrorKind::library, reason};
    return;
  }
  place.isAtWork = true;
  if (detector != Detector::haar) {
    place.network = detector;
  }
}

Work::~Work() {
  if (!refusal_) {
    Places& places = thePlaces();
    const std::lock_guard<std::mutex> lock(places.mutex);
    places.of(slot_).isAtWork = false;
  }
}

std::vector<int> takeSlots(int most, std::optional<Detector> detector) {
  Places& places = thePlaces();
  const std::lock_guard<std::mutex> lock(places.mutex);
  std::vector<int> slots;
  slots.reserve(places.all.size());
  for (int slot = QOROCV460_FIRST_SLOT; slot <= QOROCV460_LAST_SLOT; ++slot) {
    Place& place = places.of(slot);
    const bool fits = !place.isPools && !place.isAtWork &&
                      !keepsAnotherNetwork(place, detector.value_or(Detector::haar));
    if (fits && static_cast<int>(slots.size()) < most) {
      place.isPools = true;
      slots.push_back(slot);
    }
  }
  return slots;
}

void becomeThreadOf(int slot) {
  Places& places = thePlaces();
  const std::lock_guard<std::mutex> lock(places.mutex);
  places.of(slot).thread = std::this_thread::get_id();
}

void giveBack(const std::vector<int>& slots) {
  Places& places = thePlaces();
  const std::lock_guard<std::mutex> lock(places.mutex);
  for (const int slot : slots) {
    places.of(slot).isPools = false;
    places.of(slot).thread = {};
  }
}

} // namespace qorocv::client
