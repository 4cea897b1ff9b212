// Memory, descriptors and stacks that run out: a call throws or says that it failed, and the next one
// works. This program's allocations can be made to fail one by one.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <fstream>
#include <pthread.h>
#include <qorocv460/client.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

// The C library's own, under the names that it keeps for those who replace them.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

thread_local long allocationsLeft = LONG_MAX; // until the one that fails

bool fails() {
  if (allocationsLeft == LONG_MAX) {
    return false;
  }
  if (--allocationsLeft > 0) {
    return false;
  }
  allocationsLeft = LONG_MAX;
  errno = ENOMEM;
  return true;
}

} // namespace

extern "C" {
void* malloc(std::size_t size) {
  return fails() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
  return fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return fails() ? nullptr : __libc_realloc(block, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
  return fails() ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  void* const found = memalign(alignment, size);
  if (found == nullptr) {
    return ENOMEM;
  }
  *block = found;
  return 0;
}
}

namespace qorocv::testing {
namespace {

/// What `body` gives in a process of its own; the negative number of the signal that ended it.
int exitCodeOfChild(const std::function<int()>& body) {
  const pid_t child = fork();
  if (child == 0) {
    int code = 100;
    try {
      code = body();
    } catch (const std::exception& error) {
      std::cerr << error.what() << std::endl;
    }
    _exit(code);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

class Exhaustion : public ::testing::Test {
protected:
  void SetUp() override {
    writeMadeModels(directory_.path());
    ASSERT_EQ(initModelsAtPath(directory_.asPrefix().c_str()), 0);
    face_ = writePicture(directory_ / "face.png", pictureWithFace());
  }

  TemporaryDirectory directory_;
  std::filesystem::path face_;
};

class FailingAllocation : public Exhaustion, public ::testing::WithParamInterface<SlotExport> {
protected:
  // Everything that the call writes to is there before: only its own allocations are counted.
  struct Call {
    Outcome outcome;
    std::string photo;
    int run(const SlotExport& slotExport, int slot) {
      CallOptions options;
      options.slot = slot;
      outcome.count = 1;
      return slotExport.call(photo.c_str(), variablesOf(outcome), options);
    }
  };

  Call newCall() const {
    Call call;
    call.outcome.results.assign(QOROCV460_HEAD_CENTRE_RESULTS, 0.0);
    call.photo = face_.string();
    return call;
  }

  /// The call in slot `slot` with its `nth` allocation failing. False where it made fewer.
  static bool failNth(Call& call, int slot, long nth) {
    allocationsLeft = nth;
    try {
      call.run(GetParam(), slot);
    } catch (const std::exception&) {
      ++thrown;
    }
    const bool failed = allocationsLeft == LONG_MAX;
    allocationsLeft = LONG_MAX;
    return failed;
  }

  static inline int thrown = 0;
};

TEST_P(FailingAllocation, inACallIsAnExceptionOrAFailure) {
  Call call = newCall();
  ASSERT_EQ(call.run(GetParam(), 1), 1);
  const Outcome expected = call.outcome;
  thrown = 0;
  long nth = 1;
  while (failNth(call, 1, nth)) {
    Call next = newCall();
    ASSERT_EQ(next.run(GetParam(), 1), 1) << "after failing allocation " << nth;
    ASSERT_TRUE(sameOutputs(next.outcome, expected)) << "after failing allocation " << nth;
    ++nth;
  }
  std::cout << nth - 1 << " allocations, " << thrown << " thrown" << std::endl;
  EXPECT_GT(nth, 100);
  EXPECT_GT(thrown, 10);
}

// A slot keeps what it has loaded as long as its process: each allocation gets a process of its own.
// Loading makes hundreds and thousands; they fail ever further apart. What the libraries beneath set up once in a
// process is set up before: some of them end it there.
TEST_P(FailingAllocation, whileASlotIsLoadedLeavesTheOtherSlotsAsTheyAre) {
  ASSERT_EQ(newCall().run(GetParam(), 9), 1);
  enum Ending { otherSlotWorks = 0, otherSlotFails = 1, noAllocationFailed = 2 };
  int ending = otherSlotWorks;
  long nth = 1;
  for (; ending == otherSlotWorks; nth += 1 + nth / 10) {
    ending = exitCodeOfChild([&] {
      Call call = newCall();
      if (!failNth(call, 1, nth)) {
        return noAllocationFailed;
      }
      Call next = newCall();
      return next.run(GetParam(), 2) == 1 ? otherSlotWorks : otherSlotFails;
    });
  }
  EXPECT_EQ(ending, noAllocationFailed) << "before allocation " << nth;
  EXPECT_GT(nth, 300);
}

INSTANTIATE_TEST_SUITE_P(Exports, FailingAllocation, ::testing::ValuesIn(kSlotExports),
                         ::testing::PrintToStringParamName());

/// Every descriptor that this process may have, until it goes.
class AllDescriptors {
public:
  AllDescriptors() {
    for (int one = open("/dev/null", O_RDONLY); one >= 0; one = open("/dev/null", O_RDONLY)) {
      taken_.push_back(one);
    }
  }
  ~AllDescriptors() {
    for (const int one : taken_) {
      close(one);
    }
  }
  AllDescriptors(const AllDescriptors&) = delete;
  AllDescriptors& operator=(const AllDescriptors&) = delete;

private:
  std::vector<int> taken_;
};

class EveryExport : public Exhaustion, public ::testing::WithParamInterface<SlotExport> {};

TEST_P(EveryExport, cannotReadAPhotographWithoutADescriptor) {
  const SlotExport& slotExport = GetParam();
  CallOptions options;
  const Outcome expected = detect(slotExport, face_, options);
  ASSERT_EQ(expected.returned, 1);
  Outcome outcome;
  outcome.results.assign(expected.results.size(), kUntouchedValue);
  outcome.count = 1;
  {
    const AllDescriptors all;
    outcome.returned = slotExport.call(face_.c_str(), variablesOf(outcome), options);
  }
  EXPECT_EQ(outcome.returned, -1);
  expectNothingTouched(outcome, 1);
  EXPECT_TRUE(sameOutputs(detect(slotExport, face_, options), expected));
}

/// While one lives, the process may have so much more address space than it has, in bytes.
class TightAddressSpace {
public:
  explicit TightAddressSpace(rlim_t more) {
    std::ifstream statistics("/proc/self/statm");
    rlim_t pages = 0;
    statistics >> pages;
    const rlim_t now = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
    const rlimit tight{now + more, RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &tight);
  }
  ~TightAddressSpace() {
    const rlimit loose{RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_AS, &loose);
  }
  TightAddressSpace(const TightAddressSpace&) = delete;
  TightAddressSpace& operator=(const TightAddressSpace&) = delete;
};

// Room for the 144 MB of the photograph, but not for the 576 MB that it would be scaled up to as well.
TEST_P(EveryExport, throwsWhereTheAddressSpaceEnds) {
  const SlotExport& slotExport = GetParam();
  const auto large = writePicture(directory_ / "large.png", plainPicture({8000, 6000}));
  const int ending = exitCodeOfChild([&] {
    if (detect(slotExport, face_).returned != 1) {
      return 2;
    }
    CallOptions options;
    options.maxSide = 16000;
    bool failed = false;
    try {
      const TightAddressSpace tight(300'000'000);
      failed = detect(slotExport, large, options).returned == -1;
    } catch (const std::exception&) {
      failed = true;
    }
    return failed && detect(slotExport, face_).returned == 1 ? 0 : 1;
  });
  EXPECT_EQ(ending, 0);
}

TEST_P(EveryExport, worksOnAThreadWithASmallStack) {
  constexpr std::size_t stack = 256 * 1024;
  struct Job {
    SlotExport slotExport;
    std::filesystem::path photo;
    int returned = 0;
  } job{GetParam(), face_};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, stack), 0);
  pthread_t thread{};
  const auto work = [](void* argument) -> void* {
    auto& own = *static_cast<Job*>(argument);
    own.returned = detect(own.slotExport, own.photo).returned;
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, work, &job), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(job.returned, 1);
}

INSTANTIATE_TEST_SUITE_P(Exports, EveryExport, ::testing::ValuesIn(kSlotExports),
                         ::testing::PrintToStringParamName());

TEST(SlotPool, leavesNothingBehindWhereItsFourthThreadCannotBeStarted) {
  const int ending = exitCodeOfChild([] {
    pthread_attr_t attributes;
    pthread_getattr_default_np(&attributes);
    std::size_t stack = 0;
    pthread_attr_getstacksize(&attributes, &stack);
    pthread_attr_destroy(&attributes);
    bool failed = false;
    try {
      const TightAddressSpace tight(3 * stack + stack / 2);
      const client::SlotPool pool(QOROCV460_LAST_SLOT);
    } catch (const std::system_error&) {
      failed = true;
    }
    return failed && client::SlotPool(QOROCV460_LAST_SLOT).slots() == QOROCV460_LAST_SLOT ? 0 : 1;
  });
  EXPECT_EQ(ending, 0);
}

} // namespace
} // namespace qorocv::testing
