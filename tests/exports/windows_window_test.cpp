// The window that showImage and the debug exports open on Windows.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/host.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <windows.h>

namespace qorocv::testing {
namespace {

using namespace std::chrono_literals;

/// Presses a key in the "Display window" as soon as it is there; false where the call that was to show
/// it ended before it came.
bool pressKeyInWindow(const std::atomic<bool>& ended) {
  do {
    const HWND window = FindWindowA(nullptr, "Display window");
    if (window != nullptr && IsWindowVisible(window) != 0) {
      std::this_thread::sleep_for(200ms);
      const HWND picture = GetWindow(window, GW_CHILD); // the window's inner part takes keys, too
      PostMessageA(picture != nullptr ? picture : window, WM_CHAR, 'q', 1);
      PostMessageA(window, WM_CHAR, 'q', 1);
      return true;
    }
    std::this_thread::sleep_for(100ms);
  } while (!ended);
  return false;
}

class Window : public ::testing::Test {
protected:
  void SetUp() override {
    writeMadeModels(directory_.path());
    ASSERT_EQ(initModelsAtPath(directory_.asPrefix().c_str()), 0);
    face_ = writePicture(directory_ / "face.png", pictureWithFace()).string();
  }
  /// Whether the window came, and what the call gave once a key was pressed.
  template <typename Call> std::pair<bool, int> withKey(const Call& call) const {
    std::atomic<bool> ended{false};
    auto came = std::async(std::launch::async, [&] { return pressKeyInWindow(ended); });
    const int returned = call();
    ended = true;
    return {came.get(), returned};
  }

  TemporaryDirectory directory_;
  std::string face_;
};

TEST_F(Window, showsAPhotographUntilAKeyIsPressed) {
  int width = 0;
  int height = 0;
  const auto [came, returned] = withKey([&] { return showImage(face_.c_str(), &width, &height); });
  EXPECT_TRUE(came);
  EXPECT_EQ(returned, 0);
  EXPECT_EQ(width, 640);
  EXPECT_EQ(height, 480);
}

TEST_F(Window, showsTheFacesThatWereFound) {
  std::vector<double> results(QOROCV460_FACE_RESULTS);
  int count = 1;
  int width = 0;
  int height = 0;
  const auto [came, returned] = withKey([&] {
    return findQORFaces(face_.c_str(), "", results.data(), &count, 0, true, &width, &height);
  });
  EXPECT_TRUE(came);
  EXPECT_EQ(returned, 1);
  EXPECT_EQ(count, 9);
}

} // namespace
} // namespace qorocv::testing
