// What QOROCV460Safe adds: no exception, no trap, no end of the process, no second thread on a slot.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "qorocv460/safe.h"
#include "support/host.h"
#include "support/shared_files.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <fstream>
#include <functional>
#include <thread>
#ifdef _WIN32
#include <xmmintrin.h>
#endif

namespace qorocv::testing {
namespace {

#ifdef _WIN32
const std::filesystem::path kReportDirectory = "C:/Temp/DeleteIt";
#else
const std::filesystem::path kReportDirectory = "/tmp/DeleteIt";
#endif

/// One call of a detection with little to say: network, slot, no scaling.
struct Detection {
  int returned = 0;
  int count = 0;
};

Detection detectSafely(const std::string& photo, int slot = 1, int modelKind = kCaffe) {
  std::vector<double> results(QOROCV460_FACE_RESULTS);
  Detection made;
  made.count = QOROCV460_FACE_RESULTS;
  int width = 0;
  int height = 0;
  made.returned = qorocv460_findQORFacesDUNInTread01(photo.c_str(), results.data(), &made.count,
                                                     modelKind, slot, 0, &width, &height);
  return made;
}

class Safe : public ::testing::Test {
protected:
  void useMadeModels() const {
    writeMadeModels(directory_.path());
    ASSERT_EQ(qorocv460_initModelsAtPath(directory_.path().u8string().c_str()), 0);
  }
  std::string face() const {
    return writePicture(directory_ / "face.png", pictureWithFace()).u8string();
  }

  TemporaryDirectory directory_;
};

TEST_F(Safe, knowsTheVersionOfTheHeader) {
  EXPECT_STREQ(qorocv460_version(), QOROCV460_VERSION);
}

TEST_F(Safe, returnsFailedWhereAnExceptionWouldLeave) {
  EXPECT_EQ(qorocv460_initModelsAtPath((directory_ / "nowhere").u8string().c_str()), 1111111);
  EXPECT_EQ(detectSafely(face()).returned, QOROCV460_FAILED);
  EXPECT_EQ(qorocv460_initDetector(), QOROCV460_FAILED);
}

TEST_F(Safe, tellsWhatTheExceptionSaid) {
  qorocv460_initModelsAtPath((directory_ / "nowhere").u8string().c_str());
  EXPECT_STREQ(qorocv460_lastError(), "");
  detectSafely(face());
  EXPECT_NE(std::string(qorocv460_lastError()).find("nowhere"), std::string::npos)
      << qorocv460_lastError();
}

TEST_F(Safe, keepsAnErrorThroughCallsThatSucceed) {
  qorocv460_initModelsAtPath((directory_ / "nowhere").u8string().c_str());
  detectSafely(face());
  const std::string error = qorocv460_lastError();
  useMadeModels();
  EXPECT_EQ(detectSafely(face()).returned, 1);
  EXPECT_EQ(qorocv460_lastError(), error);
}

TEST_F(Safe, endsNoErrorWithALineEnd) {
  qorocv460_initModelsAtPath((directory_ / "nowhere").u8string().c_str());
  detectSafely(face());
  EXPECT_NE(std::string(qorocv460_lastError()).back(), '\n');
}

// On Windows paths in errors are not UTF-8, and no path is that long.
#ifndef _WIN32
TEST_F(Safe, cutsLongErrorsBehindAWholeCharacter) {
  const std::string face = this->face();
  for (const char* before : {"", "x"}) { // one of them has half a character at the end of the room
    std::string directory = before;
    for (int i = 0; i < 600; ++i) {
      directory += "é";
    }
    ASSERT_EQ(qorocv460_initModelsAtPath(directory.c_str()), 1111111);
    ASSERT_EQ(detectSafely(face).returned, QOROCV460_FAILED);
    const std::string error = qorocv460_lastError();
    EXPECT_GE(error.size(), 1022U);
    EXPECT_LE(error.size(), 1023U);
    EXPECT_EQ(error.substr(error.size() - 2), "é");
  }
}
#endif

TEST_F(Safe, keepsAnErrorForEachThread) {
  qorocv460_initModelsAtPath((directory_ / "nowhere").u8string().c_str());
  detectSafely(face());
  std::string others = "not asked";
  std::thread([&others] { others = qorocv460_lastError(); }).join();
  EXPECT_EQ(others, "");
  EXPECT_STRNE(qorocv460_lastError(), "");
}

TEST_F(Safe, namesNoModelWhereNoneIsMissing) {
  EXPECT_STREQ(qorocv460_missingModels(0), "");
}

TEST_F(Safe, namesAMissingModelByBothItsNames) {
  EXPECT_STREQ(qorocv460_missingModels(100000), "model06.xml (haarcascade_frontalface_alt.xml)");
}

TEST_F(Safe, namesMissingModelsInTheirOrder) {
  EXPECT_STREQ(qorocv460_missingModels(1010001),
               "model01.prototxt (deploy.prototxt), model05.yaml (lbfmodel.yaml), "
               "model07.onnx (human_segmentation_pphumanseg_2023mar.onnx)");
}

TEST_F(Safe, namesAllMissingModels) {
  const std::string names = qorocv460_missingModels(1111111);
  EXPECT_EQ(std::count(names.begin(), names.end(), ','), 6);
}

TEST_F(Safe, namesNoModelForAFailure) {
  EXPECT_STREQ(qorocv460_missingModels(QOROCV460_FAILED), "");
}

TEST_F(Safe, takesADirectoryOfModelsWithoutASlash) {
  writeMadeModels(directory_.path());
  EXPECT_EQ(qorocv460_initModelsAtPath(directory_.path().u8string().c_str()), 0);
}

TEST_F(Safe, takesADirectoryOfModelsWithASlash) {
  writeMadeModels(directory_.path());
  EXPECT_EQ(qorocv460_initModelsAtPath(directory_.asPrefix().c_str()), 0);
}

TEST_F(Safe, readsAnEmptyDirectoryAsTheCurrentOne) {
  writeMadeModels(directory_.path());
  std::filesystem::current_path(directory_.path());
  EXPECT_EQ(qorocv460_initModelsAtPath(""), 0);
  EXPECT_EQ(qorocv460_initModelsAtPath(nullptr), 0);
  std::filesystem::current_path("/");
}

TEST_F(Safe, takesADirectoryOfModelsThatIsNamedInAnyLanguageBeforeTheFirstPhotograph) {
  const std::filesystem::path models = directory_.path() / std::filesystem::u8path("modèles");
  writeMadeModels(models);
  EXPECT_EQ(qorocv460_initModelsAtPath(models.u8string().c_str()), 0);
}

TEST_F(Safe, returnsUnreadableForAPhotographThatIsNotThere) {
  useMadeModels();
  EXPECT_EQ(detectSafely("no-such-photograph.jpg").returned, QOROCV460_UNREADABLE);
}

TEST_F(Safe, returnsUnreadableForAFileThatIsNoPhotograph) {
  useMadeModels();
  std::ofstream(directory_ / "text.jpg") << "no photograph";
  EXPECT_EQ(detectSafely((directory_ / "text.jpg").u8string()).returned, QOROCV460_UNREADABLE);
}

TEST_F(Safe, fillsTheValuesThatTestABinding) {
  std::vector<double> values(QOROCV460_TEST_VALUES);
  int count = 0;
  EXPECT_EQ(qorocv460_findFaces(), 0);
  EXPECT_EQ(qorocv460_testPass(values.data(), &count), QOROCV460_TEST_VALUES);
  EXPECT_EQ(count, QOROCV460_TEST_VALUES);
  EXPECT_EQ(values[67], 67.67);
}

// ---- Traps

void unmaskTraps() {
#ifdef _WIN32
  constexpr unsigned masks = _MM_MASK_INVALID | _MM_MASK_DIV_ZERO | _MM_MASK_OVERFLOW;
  _mm_setcsr(_mm_getcsr() & ~masks);
#else
  feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
#endif
}

bool areTrapsUnmasked() {
#ifdef _WIN32
  constexpr unsigned masks = _MM_MASK_INVALID | _MM_MASK_DIV_ZERO | _MM_MASK_OVERFLOW;
  return (_mm_getcsr() & masks) == 0;
#else
  return fegetexcept() == (FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
#endif
}

class SafeTraps : public RealModelsTest {
protected:
  const std::string photo_ = realPhoto("astronaut.jpg").u8string();
};

TEST_F(SafeTraps, areMaskedWhileTheTensorFlowNetworkWorks) {
  unmaskTraps();
  EXPECT_EQ(detectSafely(photo_, 1, kTensorflow).returned, 1);
}

TEST_F(SafeTraps, areUnmaskedAfterwards) {
  unmaskTraps();
  detectSafely(photo_);
  EXPECT_TRUE(areTrapsUnmasked());
}

TEST_F(SafeTraps, areUnmaskedAfterAFailure) {
  qorocv460_initModelsAtPath("nowhere");
  unmaskTraps();
  EXPECT_EQ(detectSafely(photo_).returned, QOROCV460_FAILED);
  EXPECT_TRUE(areTrapsUnmasked());
}

TEST_F(SafeTraps, leaveTheHostsFlagsAsTheyWere) {
  std::feclearexcept(FE_ALL_EXCEPT);
  std::feraiseexcept(FE_DIVBYZERO);
  detectSafely(photo_, 1, kTensorflow);
  EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), FE_DIVBYZERO);
}

#ifndef _WIN32
TEST_F(SafeTraps, wouldEndAHostOfTheNineteen) {
  // What the tests above would not show of a network without such steps.
  EXPECT_EXIT(
      {
        std::signal(SIGFPE, SIG_DFL); // the sanitizers' handler would end it otherwise
        unmaskTraps();
        std::vector<double> results(QOROCV460_FACE_RESULTS);
        int count = QOROCV460_FACE_RESULTS;
        int width = 0;
        int height = 0;
        findQORFacesDUNInTread01(photo_.c_str(), results.data(), &count, kTensorflow, 1, 0, &width,
                                 &height);
      },
      ::testing::KilledBySignal(SIGFPE), "");
}
#endif

// ---- The report of initModelNames

class SafeInitModelNames : public ::testing::Test {
protected:
  void SetUp() override { std::filesystem::remove_all(kReportDirectory); }
  void TearDown() override { std::filesystem::remove_all(kReportDirectory); }
};

TEST_F(SafeInitModelNames, failsWhereTheReportHasNoDirectory) {
  EXPECT_EQ(qorocv460_initModelNames(), QOROCV460_FAILED);
  EXPECT_NE(std::string(qorocv460_lastError()).find("info.txt"), std::string::npos);
}

TEST_F(SafeInitModelNames, countsTheModelsMissingBesideTheLibrary) {
  std::filesystem::create_directories(kReportDirectory);
  EXPECT_EQ(qorocv460_initModelNames(), 6);
}

TEST_F(SafeInitModelNames, leavesTheReport) {
  std::filesystem::create_directories(kReportDirectory);
  qorocv460_initModelNames();
  EXPECT_GT(std::filesystem::file_size(kReportDirectory / "info.txt"), 0U);
}

// ---- Threads

/// Lets two threads make calls until one of them was refused, and returns why.
std::string refusalAmong(const std::function<int()>& one, const std::function<int()>& other) {
  std::atomic<bool> refused{false};
  std::string reason;
  std::atomic_flag told = ATOMIC_FLAG_INIT;
  const auto callUntilRefused = [&](const std::function<int()>& call) {
    while (!refused) {
      if (call() == QOROCV460_FAILED && !told.test_and_set()) {
        reason = qorocv460_lastError();
        refused = true;
      }
    }
  };
  std::thread second(callUntilRefused, other);
  callUntilRefused(one);
  second.join();
  return reason;
}

class SafeThreads : public Safe {
protected:
  void SetUp() override {
    useMadeModels();
    face_ = face();
  }
  int detectOn(int slot) const { return detectSafely(face_, slot).returned; }
  int detectWithSharedPair() const {
    std::vector<double> results(QOROCV460_FACE_RESULTS);
    int count = QOROCV460_FACE_RESULTS;
    int width = 0;
    int height = 0;
    return qorocv460_findQORFaces(face_.c_str(), nullptr, results.data(), &count, 0, false, &width,
                                  &height);
  }

  std::string face_;
};

TEST_F(SafeThreads, areRefusedASlotThatIsAtWork) {
  const auto detect = [this] { return detectOn(3); };
  EXPECT_EQ(refusalAmong(detect, detect), "slot 3 is at work for another thread");
}

TEST_F(SafeThreads, areRefusedSlotOneByEveryOtherNumber) {
  EXPECT_EQ(refusalAmong([this] { return detectOn(1); }, [this] { return detectOn(-7); }),
            "slot 1 is at work for another thread");
}

TEST_F(SafeThreads, areRefusedTheSharedPairThatIsAtWork) {
  EXPECT_EQ(refusalAmong([this] { return detectWithSharedPair(); }, qorocv460_initDetector),
            "the shared pair is at work for another thread");
}

TEST_F(SafeThreads, mayNotPlaceModelsDuringADetection) {
  const std::string models = directory_.path().u8string();
  const std::string reason =
      refusalAmong([this] { return detectOn(9); },
                   [&models] { return qorocv460_initModelsAtPath(models.c_str()); });
  EXPECT_TRUE(reason == "slot 9 is at work for another thread" ||
              reason == "a slot or the shared pair is at work for another thread")
      << reason;
}

TEST_F(SafeThreads, workSideBySideOnSlotsOfTheirOwn) {
  std::atomic<int> found{0};
  std::vector<std::thread> threads;
  for (int slot = QOROCV460_FIRST_SLOT; slot <= QOROCV460_LAST_SLOT; ++slot) {
    threads.emplace_back([&found, slot, this] {
      for (int i = 0; i < 5; ++i) {
        found += detectOn(slot);
      }
    });
  }
  for (int i = 0; i < 5; ++i) {
    found += detectWithSharedPair();
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(found, 5 * 9 + 5);
}

TEST_F(SafeThreads, mayUseASlotAgainAfterItFailed) {
  qorocv460_initModelsAtPath("nowhere");
  EXPECT_EQ(detectOn(2), QOROCV460_FAILED);
  useMadeModels();
  EXPECT_EQ(detectOn(2), 1);
}

} // namespace
} // namespace qorocv::testing
