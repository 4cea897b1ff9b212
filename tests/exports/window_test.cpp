// The "Display window" on a real screen: found by its title, closed by a key from another process.
// Each test ends only if its call does; a call that waits for ever is taken to hang.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "qorocv460/qorocv460.h"
#include "support/annotations.h"
#include "support/host.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <future>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <thread>

namespace qorocv::testing {
namespace {

int shell(const std::string& command) {
  return std::system(command.c_str());
}

/// What is on the screen, in blue, green, red order. The server keeps it in a file: a head of big-endian
/// numbers, a table of colours, and then rows of four bytes per pixel.
cv::Mat screenPixels() {
  std::ifstream file(SCREEN_FILE, std::ios::binary);
  std::string all((std::istreambuf_iterator<char>(file)), {});
  const auto number = [&](std::size_t index) {
    std::size_t value = 0;
    for (std::size_t byte = 4 * index; byte < 4 * index + 4; ++byte) {
      value = 256 * value + static_cast<unsigned char>(all.at(byte));
    }
    return value;
  };
  const std::size_t headLength = number(0);
  const std::size_t width = number(4);
  const std::size_t height = number(5);
  const std::size_t bitsPerPixel = number(11);
  const std::size_t rowLength = number(12);
  const std::size_t colours = number(19);
  constexpr std::size_t colourLength = 12;
  const std::size_t first = headLength + colourLength * colours;
  if (bitsPerPixel != 32 || all.size() < first + height * rowLength) {
    throw std::runtime_error("no screen of 32 bits per pixel in " SCREEN_FILE);
  }
  const cv::Mat fourChannels(static_cast<int>(height), static_cast<int>(width), CV_8UC4,
                             &all[first], rowLength);
  cv::Mat picture;
  cv::cvtColor(fourChannels, picture, cv::COLOR_BGRA2BGR);
  return picture;
}

const cv::Scalar kGround = plainPicture({1, 1}).at<cv::Vec3b>(0);

/// The window of an earlier call stays, and shows what that call found: away with it. The screen may be
/// a little behind.
void closeWindow() {
  cv::destroyAllWindows();
  while (shell("xdotool search --onlyvisible --name '^Display window$' >/dev/null") == 0) {
    cv::pollKey();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

/// Somebody at an empty screen: waits until the window is there with room for the picture, then presses
/// keys until the call under test has returned.
class Visitor {
public:
  /// Where it knows a colour of the picture, it waits until that is painted too.
  Visitor(int width, int height, std::optional<cv::Scalar> colour = {}) {
    closeWindow();
    visit_ = std::async(std::launch::async, [this, width, height, colour] {
      const std::string holds =
          std::string(WINDOW_HOLDS) + " " + std::to_string(width) + " " + std::to_string(height);
      bool seen = false;
      while (!returned_) {
        if (!seen && shell(holds) == 0) {
          // Twice the same: nobody is painting any more.
          const cv::Mat before = screen_;
          screen_ = screenPixels();
          const bool isStill =
              before.size() == screen_.size() && cv::norm(before, screen_, cv::NORM_INF) == 0;
          seen = isStill && (!colour || pixelsOf(screen_, *colour) > 0);
        }
        if (seen) {
          shell("xdotool search --onlyvisible --name '^Display window$' windowfocus key space");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      }
      return seen;
    });
  }

  /// To be asked after the call: whether the window was there at that size.
  bool saw() {
    returned_ = true;
    return visit_.get();
  }
  /// The screen as it was before the first key, once `saw` has been asked.
  const cv::Mat& screen() const { return screen_; }

private:
  cv::Mat screen_;
  std::atomic<bool> returned_{false};
  std::future<bool> visit_;
};

class Window : public ::testing::Test {
protected:
  void SetUp() override {
    writeMadeModels(directory_.path());
    initModelsAtPath(directory_.asPrefix().c_str());
    face_ = writePicture(directory_ / "face.png", pictureWithFace());
    plain_ = writePicture(directory_ / "plain.png", texturedPicture({300, 200}));
  }

  TemporaryDirectory directory_;
  std::filesystem::path face_;
  std::filesystem::path plain_;
};

TEST_F(Window, showImageShowsThePhotographUntilAKeyIsPressed) {
  Visitor visitor(640, 480);
  int width = 0;
  int height = 0;
  EXPECT_EQ(showImage(face_.c_str(), &width, &height), 0);
  EXPECT_TRUE(visitor.saw());
  EXPECT_EQ(width, 640);
  EXPECT_EQ(height, 480);
}

TEST_F(Window, showWaitsForAKeyBeforeTheCallReturns) {
  Visitor visitor(320, 240);
  const Outcome outcome = detect(findQORFaces, face_, shown(scaledTo(320)));
  EXPECT_TRUE(visitor.saw());
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(outcome.count, 9);
}

TEST_F(Window, showAlsoShowsAPictureWithoutAFace) {
  Visitor visitor(300, 200);
  const Outcome outcome = detect(processImage, plain_, shown());
  EXPECT_TRUE(visitor.saw());
  EXPECT_EQ(outcome.returned, 0);
  EXPECT_EQ(outcome.count, 0);
}

TEST_F(Window, theDebugExportsOfASlotShowAPictureWithAFace) {
  for (const SlotExport& slotExport : {kInTreadDebug, kDun01Debug}) {
    Visitor visitor(640, 480);
    const Outcome outcome = detect(slotExport, face_, shown());
    EXPECT_TRUE(visitor.saw()) << slotExport.name;
    EXPECT_EQ(outcome.returned, 1) << slotExport.name;
    EXPECT_EQ(outcome.count, 9) << slotExport.name;
  }
}

TEST_F(Window, theDebugExportsOfASlotShowAPictureWithoutAFace) {
  MadeModels noFaces;
  noFaces.caffeRows = {};
  writeMadeModels(directory_.path(), noFaces);
  for (const SlotExport& slotExport : {kInTreadDebug, kDun01Debug}) {
    Visitor visitor(300, 200);
    const Outcome outcome = detect(slotExport, plain_, shown(inSlot(2)));
    EXPECT_TRUE(visitor.saw()) << slotExport.name;
    EXPECT_EQ(outcome.returned, 0) << slotExport.name;
    EXPECT_EQ(outcome.count, 0) << slotExport.name;
  }
}

TEST_F(Window, theSharedPairsExportsDrawAlsoWithoutAPathForACopy) {
  for (const SingleImageExport detection : {findQORFaces, processImage}) {
    Visitor visitor(640, 480, kGround);
    EXPECT_EQ(detect(detection, face_, shown()).returned, 1);
    EXPECT_TRUE(visitor.saw());
    EXPECT_GT(pixelsOf(visitor.screen(), kGreen), 1000);
    EXPECT_GT(pixelsOf(visitor.screen(), kLightBlue), 100);
  }
}

TEST_F(Window, theCascadesDebugExportDrawsAlsoWithoutAPathForACopy) {
  Visitor visitor(640, 480, kGround);
  EXPECT_EQ(detect(kInTreadDebug, face_, shown(inSlot(3))).returned, 1);
  EXPECT_TRUE(visitor.saw());
  EXPECT_GT(pixelsOf(visitor.screen(), kGreen), 1000);
  EXPECT_GT(pixelsOf(visitor.screen(), kLightBlue), 100);
}

TEST_F(Window, theNetworksDebugExportDrawsAlsoWithoutAPathForACopy) {
  Visitor visitor(640, 480, kGround);
  EXPECT_EQ(detect(kDun01Debug, face_, shown(inSlot(3))).returned, 1);
  EXPECT_TRUE(visitor.saw());
  EXPECT_GT(pixelsOf(visitor.screen(), kGreen), 1000);
  EXPECT_GT(pixelsOf(visitor.screen(), kRed), 100);
}

TEST_F(Window, showImageDrawsNothing) {
  Visitor visitor(640, 480, kGround);
  int width = 0;
  int height = 0;
  EXPECT_EQ(showImage(face_.c_str(), &width, &height), 0);
  EXPECT_TRUE(visitor.saw());
  EXPECT_EQ(pixelsOf(visitor.screen(), kGreen), 0);
}

TEST_F(Window, showTakesEveryByteButZeroForTrue) {
  // As a host binds and declares the function whose language has bytes and no bool.
  using WithByte = int (*)(const char*, const char*, double*, int*, int, unsigned char, int*, int*);
  const auto findFacesWithByte = reinterpret_cast<WithByte>(dlsym(RTLD_DEFAULT, "findQORFaces"));
  Visitor visitor(640, 480);
  const Outcome outcome = call([&](const HostVariables& host) {
    return findFacesWithByte(face_.c_str(), "", host.results, host.count, 0, 2, host.width,
                             host.height);
  });
  EXPECT_TRUE(visitor.saw());
  EXPECT_EQ(outcome.returned, 1);
}

} // namespace
} // namespace qorocv::testing
