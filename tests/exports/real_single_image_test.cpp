// findQORFaces and processImage with real models on real photographs.
#include "qorocv460/qorocv460.h"
#include "support/bare_pipelines.h"
#include "support/host.h"
#include "support/shared_files.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <numeric>

namespace qorocv::testing {
namespace {

class RealSingleImage : public RealModelsTest {};

TEST_F(RealSingleImage, findsTheFacesOfEachPhotograph) {
  struct Known {
    const char* photo;
    int maxSide;
    int faces;
  };
  constexpr Known all[] = {
      {"astronaut.jpg", 480, 1}, {"astronaut.jpg", 0, 2}, // the second on her suit
      {"couple.jpg", 0, 2},      {"painting.jpg", 0, 1},
      {"player.jpg", 0, 1},      {"quartet.jpg", 1000, 4}};
  for (const Known& known : all) {
    if (haveRealPhoto(known.photo)) {
      EXPECT_EQ(detect(findQORFaces, realPhoto(known.photo), scaledTo(known.maxSide)).returned,
                known.faces)
          << known.photo << known.maxSide;
    }
  }
}

TEST_F(RealSingleImage, writesThirtyRecordsOfACrowdOf178) {
  if (!haveRealPhoto("crowd.jpg")) {
    GTEST_SKIP() << "crowd.jpg does not lie beside the checkout";
  }
  const Outcome faces = detect(findQORFaces, realPhoto("crowd.jpg"));
  EXPECT_EQ(faces.returned, 178);
  EXPECT_EQ(faces.results[0], 178.0);
  EXPECT_EQ(faces.count, 241);
  EXPECT_EQ(faces.written(), 241U);
  const Outcome landmarks = detect(processImage, realPhoto("crowd.jpg"));
  EXPECT_EQ(landmarks.returned, 178);
  EXPECT_EQ(landmarks.count, 4201);
  EXPECT_EQ(landmarks.written(), 4201U);
}

TEST_F(RealSingleImage, equalsTheBareCallsBitForBit) {
  BareDetectors detectors = loadBare(realModels());
  std::vector<std::size_t> all(QOROCV460_LANDMARKS);
  std::iota(all.begin(), all.end(), 0);
  for (const char* photo :
       photosAtHand({"astronaut.jpg", "couple.jpg", "painting.jpg", "player.jpg", "quartet.jpg"})) {
    for (const int maxSide : {480, 333, 701}) {
      const BareFaces faces = bareCascade(detectors, realPhoto(photo).string(), maxSide);
      const Outcome two = detect(findQORFaces, realPhoto(photo), scaledTo(maxSide));
      const Outcome whole = detect(processImage, realPhoto(photo), scaledTo(maxSide));
      ASSERT_GT(faces.boxes.size(), 0U) << photo << maxSide;
      EXPECT_EQ(two.returned, static_cast<int>(faces.boxes.size()));
      EXPECT_EQ(records(two), bareRecords(faces, {QOROCV460_NOSE_BRIDGE, QOROCV460_CHIN}))
          << photo << maxSide;
      EXPECT_EQ(records(whole), bareRecords(faces, all)) << photo << maxSide;
    }
  }
}

/// A face's box and landmarks, as fractions.
struct FaceWithLandmarks {
  const char* photo;
  double left, top, right, bottom;
  std::vector<cv::Point2d> landmarks;
};

/// What processImage finds on the photographs of one or two people that are there.
std::vector<FaceWithLandmarks> facesWithLandmarks() {
  std::vector<FaceWithLandmarks> faces;
  for (const char* photo :
       photosAtHand({"astronaut.jpg", "couple.jpg", "painting.jpg", "player.jpg"})) {
    const Outcome outcome = detect(processImage, realPhoto(photo));
    constexpr int size = QOROCV460_LANDMARK_RECORD;
    for (int start = 1; start + size <= outcome.count; start += size) {
      const double* record = &outcome.results[static_cast<std::size_t>(start)];
      FaceWithLandmarks face{photo, record[0], record[1], record[2], record[3], {}};
      for (int i = 4; i < size; i += 2) {
        face.landmarks.emplace_back(record[i], record[i + 1]);
      }
      faces.push_back(face);
    }
  }
  EXPECT_FALSE(faces.empty());
  return faces;
}

TEST_F(RealSingleImage, putsEdgesInOrderWithinThePhotograph) {
  for (const FaceWithLandmarks& face : facesWithLandmarks()) {
    EXPECT_LT(0.0, face.left) << face.photo;
    EXPECT_LT(face.left, face.right) << face.photo;
    EXPECT_LT(face.right, 1.0) << face.photo;
    EXPECT_LT(0.0, face.top) << face.photo;
    EXPECT_LT(face.top, face.bottom) << face.photo;
    EXPECT_LT(face.bottom, 1.0) << face.photo;
  }
}

TEST_F(RealSingleImage, putsLandmarksIntoTheBoxTwiceAsLarge) {
  for (const FaceWithLandmarks& face : facesWithLandmarks()) {
    const double halfWidth = (face.right - face.left) / 2;
    const double halfHeight = (face.bottom - face.top) / 2;
    for (const cv::Point2d& landmark : face.landmarks) {
      EXPECT_GT(landmark.x, face.left - halfWidth) << face.photo << landmark;
      EXPECT_LT(landmark.x, face.right + halfWidth) << face.photo << landmark;
      EXPECT_GT(landmark.y, face.top - halfHeight) << face.photo << landmark;
      EXPECT_LT(landmark.y, face.bottom + halfHeight) << face.photo << landmark;
    }
  }
}

TEST_F(RealSingleImage, putsTheNoseBridgeAboveTheChin) {
  for (const FaceWithLandmarks& face : facesWithLandmarks()) {
    ASSERT_EQ(face.landmarks.size(), static_cast<std::size_t>(QOROCV460_LANDMARKS));
    EXPECT_LT(face.landmarks[QOROCV460_NOSE_BRIDGE].y, face.landmarks[QOROCV460_CHIN].y)
        << face.photo;
  }
}

TEST_F(RealSingleImage, givesNearlyTheSameFractionsAtTwoSizes) {
  constexpr double boxTolerance = 0.03;      // the cascade's steps differ with the size
  constexpr double landmarkTolerance = 0.04; // and the fit follows the box
  for (const char* photo : photosAtHand({"astronaut.jpg", "couple.jpg", "painting.jpg"})) {
    const Outcome own = detect(findQORFaces, realPhoto(photo), scaledTo(480));
    const Outcome other = detect(findQORFaces, realPhoto(photo), scaledTo(600));
    ASSERT_EQ(own.count, other.count) << photo;
    // The cascade may list the faces in another order.
    for (int a = 1; a < own.count; a += 8) {
      int nearest = 1;
      const auto distance = [&](int b) {
        return std::abs(own.results[static_cast<std::size_t>(a)] -
                        other.results[static_cast<std::size_t>(b)]);
      };
      for (int b = 1; b < other.count; b += 8) {
        nearest = distance(b) < distance(nearest) ? b : nearest;
      }
      for (int i = 0; i < 8; ++i) {
        EXPECT_NEAR(own.results[static_cast<std::size_t>(a + i)],
                    other.results[static_cast<std::size_t>(nearest + i)],
                    i < 4 ? boxTolerance : landmarkTolerance)
            << photo << " value " << i;
      }
    }
  }
}

} // namespace
} // namespace qorocv::testing
