// The client, as a program in C++ uses it.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <qorocv460/client.h>
#include <set>
#include <stdexcept>

namespace qorocv::client {
namespace {

using qorocv::testing::TemporaryDirectory;

// Boxes lie on whole pixels of the scaled picture.
constexpr double kPixel = 1.0 / 480;

class Client : public ::testing::Test {
protected:
  void SetUp() override {
    qorocv::testing::writeMadeModels(directory_ / "models");
    missing_ = placeModels((directory_ / "models").u8string());
    face_ = write("face.png", qorocv::testing::pictureWithFace());
  }
  std::string write(const std::string& name, const cv::Mat& picture) const {
    return qorocv::testing::writePicture(directory_ / name, picture).u8string();
  }

  TemporaryDirectory directory_;
  std::string face_;
  int missing_ = -1;
};

Request haar(bool landmarks) {
  Request request;
  request.detector = Detector::haar;
  request.landmarks = landmarks;
  return request;
}

Request withHeadCentres(HeadCentres kind) {
  Request request;
  request.headCentres = kind;
  return request;
}

TEST_F(Client, placesModelsWithoutASeparator) {
  EXPECT_EQ(missing_, 0);
}

TEST_F(Client, placesModelsInADirectoryThatIsNamedInAnyLanguageBeforeTheFirstPhotograph) {
  const std::filesystem::path models = directory_.path() / std::filesystem::u8path("modèles");
  qorocv::testing::writeMadeModels(models);
  EXPECT_EQ(placeModels(models.u8string()), 0);
}

TEST_F(Client, readsAnEmptyDirectoryAsTheCurrentOne) {
  std::filesystem::current_path(directory_ / "models");
  EXPECT_EQ(placeModels(""), 0);
  std::filesystem::current_path("/");
}

#ifndef _WIN32
TEST_F(Client, takesABackslashForAPartOfADirectorysName) {
  qorocv::testing::writeMadeModels(directory_ / "models\\");
  EXPECT_EQ(placeModels((directory_ / "models\\").u8string()), 0);
}
#endif

TEST_F(Client, tellsWhichModelsAreMissing) {
  std::filesystem::remove(directory_ / "models/model06.xml");
  EXPECT_EQ(placeModels((directory_ / "models").u8string()), 100000);
}

TEST_F(Client, findsAFaceByTheNetwork) {
  const Result<Photo> photo = analyse(face_, {}, QOROCV460_FIRST_SLOT);
  ASSERT_TRUE(photo) << photo.error().text;
  EXPECT_EQ(photo->found, 1);
  ASSERT_EQ(photo->faces.size(), 1U);
  EXPECT_NEAR(photo->faces[0].box.leftTop.x, 0.25, kPixel);
  EXPECT_NEAR(photo->faces[0].box.rightBottom.y, 0.75, kPixel);
  EXPECT_FALSE(photo->faces[0].headCentre);
}

TEST_F(Client, givesPointsInPixels) {
  const Result<Photo> photo = analyse(face_, {}, QOROCV460_FIRST_SLOT);
  ASSERT_TRUE(photo);
  const Pixel corner = photo->inPixels(photo->faces[0].box.leftTop);
  EXPECT_NEAR(corner.x, 160, 1);
  EXPECT_NEAR(corner.y, 120, 1);
}

TEST_F(Client, findsLandmarksWithTheSharedPair) {
  ASSERT_FALSE(loadSharedPair());
  const Result<Photo> photo = analyse(face_, haar(true), kSharedPair);
  ASSERT_TRUE(photo) << photo.error().text;
  ASSERT_EQ(photo->faces.size(), 1U);
  ASSERT_EQ(photo->faces[0].landmarks.size(), 68U);
  EXPECT_EQ(photo->faces[0].landmarks[QOROCV460_CHIN].y, photo->faces[0].chin.y);
}

TEST_F(Client, givesAnErrorForAPhotographThatCannotBeRead) {
  const Result<Photo> photo =
      analyse((directory_ / "none.png").u8string(), {}, QOROCV460_FIRST_SLOT);
  ASSERT_FALSE(photo);
  EXPECT_EQ(photo.error().kind, ErrorKind::unreadable);
  EXPECT_FALSE(photo.error().text.empty());
}

TEST_F(Client, givesAnErrorForAModelThatCannotBeRead) {
  std::filesystem::resize_file(directory_ / "models/model01.prototxt", 10);
  const Result<Photo> photo = analyse(face_, {}, QOROCV460_FIRST_SLOT);
  ASSERT_FALSE(photo);
  EXPECT_EQ(photo.error().kind, ErrorKind::library);
  EXPECT_FALSE(photo.error().text.empty());
}

TEST_F(Client, refusesLandmarksOnASlot) {
  EXPECT_FALSE(analyse(face_, haar(true), QOROCV460_FIRST_SLOT));
}

TEST_F(Client, refusesTheNetworkOnTheSharedPair) {
  EXPECT_FALSE(analyse(face_, {}, kSharedPair));
}

TEST_F(Client, findsNoFacesByTheOtherKindOfNetworkThanASlotHas) {
  Request tensorflow;
  tensorflow.detector = Detector::ssdTf;
  ASSERT_TRUE(analyse(face_, {}, 1));
  const Result<Photo> refused = analyse(face_, tensorflow, 1);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().kind, ErrorKind::library);
  const Result<Photo> photo = analyse(face_, tensorflow, 2);
  ASSERT_TRUE(photo) << photo.error().text;
  EXPECT_NEAR(photo->faces.at(0).box.leftTop.x, 0.125, kPixel);
}

TEST_F(Client, tellsAHeadTopThatStandsIn) {
  // Nothing is measured above a box that sticks out of the photograph.
  qorocv::testing::MadeModels models;
  models.caffeRows = {{0.875F, -0.25F, 0.25F, 0.5F, 0.75F}};
  qorocv::testing::writeMadeModels(directory_ / "models", models);
  const Result<Photo> photo =
      analyse(face_, withHeadCentres(HeadCentres::byColour), QOROCV460_FIRST_SLOT);
  ASSERT_TRUE(photo) << photo.error().text;
  const Face& face = photo->faces.at(0);
  ASSERT_TRUE(face.headCentre);
  EXPECT_NEAR(face.headCentre->y, face.noseBridge.y, kPixel);
  EXPECT_FALSE(face.headTopMeasured);
}

TEST_F(Client, tellsAHeadTopThatWasMeasured) {
  // The painted head begins below a plain wall.
  cv::Mat picture(480, 640, CV_8UC3, cv::Scalar(200, 60, 20));
  picture(cv::Rect(160, 130, 320, 350)).setTo(cv::Scalar(60, 120, 220));
  const Result<Photo> photo = analyse(write("wall.png", picture),
                                      withHeadCentres(HeadCentres::byColour), QOROCV460_FIRST_SLOT);
  ASSERT_TRUE(photo) << photo.error().text;
  const Face& face = photo->faces.at(0);
  ASSERT_TRUE(face.headCentre);
  EXPECT_TRUE(face.headTopMeasured);
  EXPECT_NEAR((2 * face.headCentre->y - face.chin.y) * photo->height, 130, 3);
}

TEST_F(Client, tellsAHeadTopThatTheCloserMaskDoesNotShow) {
  qorocv::testing::MadeModels models;
  models.caffeRows = {{0.875F, 0.375F, 0.625F, 0.5F, 0.75F}}; // far from the photograph's top
  models.person = {{}, 1.0F};                                 // everywhere: the head ends nowhere
  qorocv::testing::writeMadeModels(directory_ / "models", models);
  const Result<MaskedPhoto> masked =
      analyseWithMasks(face_, withHeadCentres(HeadCentres::byMask), QOROCV460_FIRST_SLOT);
  ASSERT_TRUE(masked) << masked.error().text;
  EXPECT_GT(masked->masks.cropBox[1], 0.0); // which its stand-in goes by
  EXPECT_FALSE(masked->photo.faces.at(0).headTopMeasured);
}

TEST_F(Client, handsOutMasks) {
  const Result<MaskedPhoto> masked =
      analyseWithMasks(face_, withHeadCentres(HeadCentres::byMask), QOROCV460_LAST_SLOT);
  ASSERT_TRUE(masked) << masked.error().text;
  EXPECT_EQ(masked->photo.found, 1);
  EXPECT_EQ(masked->masks.mask.size(), std::size_t{QOROCV460_MASK_BYTES});
  EXPECT_GT(masked->masks.cropBox[2], 0.0);
}

TEST_F(Client, givesFacesOfATileAsFractionsOfThePhotograph) {
  const Result<Tile> tile = analyseTile(face_, {2, 2, 1, 1}, {}, QOROCV460_FIRST_SLOT);
  ASSERT_TRUE(tile) << tile.error().text;
  EXPECT_EQ(tile->place.leftTop.x, 0.25); // three quarters wide, at the right, from top to bottom
  EXPECT_EQ(tile->place.leftTop.y, 0.0);
  EXPECT_EQ(tile->place.rightBottom.x, 1.0);
  EXPECT_EQ(tile->place.rightBottom.y, 1.0);
  EXPECT_EQ(tile->photo.width, 640);
  EXPECT_NEAR(tile->photo.faces.at(0).box.leftTop.x, 0.25 + 0.25 * 0.75, kPixel);
}

TEST(SlotPool, hasAtMostNineSlots) {
  EXPECT_EQ(SlotPool(100).slots(), 9);
  EXPECT_EQ(SlotPool(0).slots(), 1);
}

TEST(SlotPool, givesEveryThreadASlotOfItsOwn) {
  std::mutex mutex;
  std::set<std::pair<int, std::thread::id>> seen;
  {
    SlotPool pool(3);
    for (int i = 0; i < 100; ++i) {
      pool.submit([&](int slot) {
        const std::lock_guard<std::mutex> lock(mutex);
        seen.emplace(slot, std::this_thread::get_id());
      });
    }
  }
  std::set<int> slots;
  for (const auto& [slot, thread] : seen) {
    EXPECT_TRUE(slots.insert(slot).second) << "slot " << slot << " on two threads";
    EXPECT_TRUE(slot >= 1 && slot <= 3);
  }
}

TEST(SlotPool, waitsUntilAllIsDone) {
  std::atomic<int> done{0};
  {
    SlotPool pool(2);
    for (int i = 0; i < 50; ++i) {
      pool.submit([&](int) { ++done; });
    }
  }
  EXPECT_EQ(done, 50);
}

TEST(SlotPool, handsAnExceptionToTheFuture) {
  SlotPool pool(1);
  std::future<int> answer =
      pool.submit([](int slot) -> int { throw std::runtime_error(std::to_string(slot)); });
  EXPECT_THROW(answer.get(), std::runtime_error);
}

TEST_F(Client, findsSideBySideWhatItFindsAlone) {
  SlotPool pool(3);
  std::vector<std::future<Result<Photo>>> photos;
  for (int i = 0; i < 12; ++i) {
    photos.push_back(pool.submit([&](int slot) { return analyse(face_, {}, slot); }));
  }
  for (auto& photo : photos) {
    const Result<Photo> found = photo.get();
    ASSERT_TRUE(found) << found.error().text;
    EXPECT_NEAR(found->faces.at(0).box.leftTop.x, 0.25, kPixel);
  }
}

} // namespace
} // namespace qorocv::client
