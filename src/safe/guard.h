// What stands around each call of QOROCV460Safe: who is at work with which detectors, the calling
// thread's floating-point environment, and what becomes of exceptions.
#pragma once

#include "qorocv460/safe.h"

#include <cfenv>
#include <exception>
#ifdef __GLIBCXX__
#include <cxxabi.h>
#endif

namespace qorocv::safe {

/// A set of detectors: a bit for the shared pair, and one for each slot.
using DetectorSet = unsigned;

constexpr DetectorSet kNoDetectors = 0;
constexpr DetectorSet kSharedPair = 1;
constexpr DetectorSet kAllDetectors = (1U << (QOROCV460_LAST_SLOT + 1U)) - 1U;

/// Slot `number`, 1 to 9; slot 1 for every other number.
DetectorSet slotOf(int number);

/// While one lives, its detectors are at work for the calling thread. Throws std::runtime_error
/// where one of them is at work already.
class Work {
public:
  explicit Work(DetectorSet detectors);
  ~Work();
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;

private:
  DetectorSet detectors_;
};

/// Keeps a text for qorocv460_lastError, without the line ends behind it.
void rememberError(const char* text) noexcept;

/// The text that the calling thread keeps; empty where it keeps none.
const char* rememberedError() noexcept;

/// While one lives, the calling thread's floating-point traps are masked. Its environment is as
/// before afterwards.
class MaskedTraps {
public:
  MaskedTraps() noexcept;
  ~MaskedTraps();
  MaskedTraps(const MaskedTraps&) = delete;
  MaskedTraps& operator=(const MaskedTraps&) = delete;

private:
  std::fenv_t host_{};
#ifdef _WIN32
  unsigned hostVectors_;
#endif
};

/// What `call` returns; QOROCV460_FAILED where it throws.
template <typename Call> int guarded(DetectorSet detectors, const Call& call) {
  const MaskedTraps masked;
  try {
    const Work work(detectors);
    return call();
#ifdef __GLIBCXX__
  } catch (const abi::__forced_unwind&) {
    // The end of a thread that is being cancelled. Held up, it would end the process.
    throw;
#endif
  } catch (const std::exception& error) {
    rememberError(error.what());
  } catch (...) {
    rememberError("an exception of an unknown kind");
  }
  return QOROCV460_FAILED;
}

} // namespace qorocv::safe
