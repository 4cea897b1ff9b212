#include "safe/guard.h"

#include <atomic>
#include <cstring>
#include <stdexcept>
#include <string>
#ifdef _WIN32
#include <xmmintrin.h>
#endif

namespace qorocv::safe {
namespace {

// Of the plainest kind: nothing is made when the library is loaded, or ended when it is unloaded.
std::atomic<DetectorSet> atWork{kNoDetectors};

// Plain arrays, so that a thread that outlives the library leaves nothing to be ended by it.
constexpr std::size_t kTextSize = 1024;
thread_local char lastError[kTextSize];

std::string nameOf(DetectorSet detectors) {
  if (detectors == kAllDetectors) {
    return "a slot or the shared pair";
  }
  if (detectors == kSharedPair) {
    return "the shared pair";
  }
  int slot = QOROCV460_FIRST_SLOT;
  while (slotOf(slot) != detectors) {
    ++slot;
  }
  return "slot " + std::to_string(slot);
}

/// The first bytes of a text that a buffer of kTextSize holds, without a part of a UTF-8 character.
std::size_t lengthThatFits(const char* text) {
  std::size_t length = std::strlen(text);
  if (length >= kTextSize) {
    length = kTextSize - 1;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
      --length;
    }
  }
  return length;
}

} // namespace

DetectorSet slotOf(int number) {
  const bool known = number >= QOROCV460_FIRST_SLOT && number <= QOROCV460_LAST_SLOT;
  return 1U << static_cast<unsigned>(known ? number : QOROCV460_FIRST_SLOT);
}

Work::Work(DetectorSet detectors) : detectors_(detectors) {
  DetectorSet before = atWork.load();
  do {
    if ((before & detectors) != 0) {
      throw std::runtime_error(nameOf(detectors) + " is at work for another thread");
    }
  } while (!atWork.compare_exchange_weak(before, before | detectors));
}

Work::~Work() {
  atWork.fetch_and(~detectors_);
}

#ifdef _WIN32
// The run-time's own functions there leave the traps of vector instructions as they are.
MaskedTraps::MaskedTraps() noexcept : hostVectors_(_mm_getcsr()) {
  std::feholdexcept(&host_);
  _mm_setcsr((hostVectors_ & ~_MM_EXCEPT_MASK) | _MM_MASK_MASK);
}

MaskedTraps::~MaskedTraps() {
  std::fesetenv(&host_);
  _mm_setcsr(hostVectors_);
}
#else
MaskedTraps::MaskedTraps() noexcept {
  std::feholdexcept(&host_);
}

MaskedTraps::~MaskedTraps() {
  std::fesetenv(&host_);
}
#endif

void rememberError(const char* text) noexcept {
  std::size_t length = lengthThatFits(text);
  while (length > 0 && (text[length - 1] == '\n' || text[length - 1] == '\r')) {
    --length;
  }
  std::memcpy(lastError, text, length);
  lastError[length] = '\0';
}

const char* rememberedError() noexcept {
  return lastError;
}

} // namespace qorocv::safe
