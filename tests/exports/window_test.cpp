// The "Display window" on a real screen: found by its title, closed by a key from another process.
// Each test ends only if its call does; a call that waits for ever runs into the test's time limit.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "qorocv460/qorocv460.h"
#include "support/host.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <future>
#include <thread>

namespace qorocv::testing {
namespace {

int shell(const std::string& command) {
  return std::system(command.c_str());
}

/// Somebody at the screen: waits until the window is there with room for the picture, then presses
/// keys until the call under test has returned.
class Visitor {
public:
  Visitor(int width, int height)
      : visit_(std::async(std::launch::async, [this, width, height] {
          const bool seen = shell(std::string(WAIT_FOR_WINDOW) + " " + std::to_string(width) + " " +
                                  std::to_string(height)) == 0;
          while (!returned_) {
            shell("xdotool search --onlyvisible --name '^Display window$' windowfocus key space");
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
          }
          return seen;
        })) {}

  /// To be asked after the call: whether the window was there at that size.
  bool saw() {
    returned_ = true;
    return visit_.get();
  }

private:
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

TEST_F(Window, showImageShowsThePhotographUnscaledUntilAKeyIsPressed) {
  Visitor visitor(640, 480);
  int width = 0;
  int height = 0;
  EXPECT_EQ(showImage(face_.c_str(), &width, &height), 0);
  EXPECT_TRUE(visitor.saw());
  EXPECT_EQ(width, 640);
  EXPECT_EQ(height, 480);
}

TEST_F(Window, showWaitsForAKeyAndThenReturnsTheRecords) {
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

TEST_F(Window, theDebugExportsOfASlotShowPicturesWithAndWithoutAFace) {
  MadeModels noFaces; // in slot 2
  noFaces.caffeRows = {};
  for (const SlotExport& slotExport : {kInTreadDebug, kDun01Debug}) {
    CallOptions options;
    options.show = true;
    {
      writeMadeModels(directory_.path());
      Visitor visitor(640, 480);
      const Outcome outcome = detect(slotExport, face_, options);
      EXPECT_TRUE(visitor.saw()) << slotExport.name;
      EXPECT_EQ(outcome.returned, 1) << slotExport.name;
      EXPECT_EQ(outcome.count, 9) << slotExport.name;
    }
    {
      writeMadeModels(directory_.path(), noFaces);
      options.slot = 2;
      Visitor visitor(300, 200);
      const Outcome outcome = detect(slotExport, plain_, options);
      EXPECT_TRUE(visitor.saw()) << slotExport.name;
      EXPECT_EQ(outcome.returned, 0) << slotExport.name;
      EXPECT_EQ(outcome.count, 0) << slotExport.name;
    }
  }
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
