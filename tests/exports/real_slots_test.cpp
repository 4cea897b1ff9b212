// The per-slot exports with real models on real photographs.
#include "qorocv460/qorocv460.h"
#include "support/bare_pipelines.h"
#include "support/shared_files.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace qorocv::testing {
namespace {

class RealSlots : public RealModelsTest {
protected:
  BareDetectors bare(int modelKind) const { return loadBare(realModels(), modelKind); }
};

/// Those whose places a short record tells, in its order.
const std::vector<std::size_t> kTwoLandmarks{QOROCV460_NOSE_BRIDGE, QOROCV460_CHIN};

struct KnownCount {
  const char* photo;
  int maxSide;
  int byNetwork;
  int byCascade;
};

/// Those of the photographs that are there.
std::vector<KnownCount> knownCounts() {
  std::vector<KnownCount> known{{"astronaut.jpg", 480, 1, 1},
                                {"couple.jpg", 0, 2, 2},
                                {"painting.jpg", 0, 1, 1},
                                {"player.jpg", 0, 1, 1},
                                {"quartet.jpg", 1000, 4, 4}};
  known.erase(std::remove_if(known.begin(), known.end(),
                             [](const KnownCount& one) { return !haveRealPhoto(one.photo); }),
              known.end());
  return known;
}

TEST_F(RealSlots, findTheFacesOfEachPhotograph) {
  for (const KnownCount& known : knownCounts()) {
    const auto path = realPhoto(known.photo);
    EXPECT_EQ(detect(kInTread01, path, scaledTo(known.maxSide)).returned, known.byCascade)
        << known.photo;
    EXPECT_EQ(detect(kDun01, path, scaledTo(known.maxSide, inSlot(2))).returned, known.byNetwork)
        << known.photo;
    EXPECT_EQ(detect(kDun02, path, scaledTo(known.maxSide, inSlot(3))).returned, known.byNetwork)
        << known.photo;
  }
}

TEST_F(RealSlots, takeTheSuitForAFaceByCascadeAtFullSize) {
  const auto path = realPhoto("astronaut.jpg");
  EXPECT_EQ(detect(kInTread01, path).returned, 2);
  EXPECT_EQ(detect(kDun01, path).returned, 1);
}

TEST_F(RealSlots, findACrowdByCascade) {
  if (!haveRealPhoto("crowd.jpg")) {
    GTEST_SKIP() << "crowd.jpg does not lie beside the checkout";
  }
  const Outcome cascade = detect(kHaarTr02, realPhoto("crowd.jpg"));
  EXPECT_EQ(cascade.returned, 178);
  EXPECT_EQ(cascade.results[0], 178.0);
  EXPECT_EQ(cascade.count, 301);
  EXPECT_EQ(cascade.written(), 301U);
}

TEST_F(RealSlots, findTheFrontOfACrowdByNetwork) {
  if (!haveRealPhoto("crowd.jpg")) {
    GTEST_SKIP() << "crowd.jpg does not lie beside the checkout";
  }
  EXPECT_EQ(detect(kDun01, realPhoto("crowd.jpg")).returned, 4);
}

TEST_F(RealSlots, equalTheBareCallsBitForBit) {
  BareDetectors ofCaffe = bare(kCaffe);
  BareDetectors ofTensorflow = bare(kTensorflow);
  std::map<int, std::size_t> networkFaces; // by the kind of network
  std::size_t networkFacesAtOwnSize = 0;
  for (const KnownCount& known : knownCounts()) {
    const std::filesystem::path path = realPhoto(known.photo);
    for (const int maxSide : {333, 701}) {
      const BareFaces cascade = bareCascade(ofCaffe, path.string(), maxSide);
      ASSERT_GT(cascade.boxes.size(), 0U) << known.photo << maxSide;
      const std::vector<double> cascadeRecords = bareRecords(cascade, kTwoLandmarks);
      networkFacesAtOwnSize += static_cast<std::size_t>(known.byNetwork);
      for (const int kind : {kCaffe, kTensorflow}) {
        BareDetectors& detectors = kind == kCaffe ? ofCaffe : ofTensorflow;
        const BareFaces network = bareNetwork(detectors, path.string(), maxSide, kind);
        networkFaces[kind] += network.boxes.size();
        const std::vector<double> networkRecords = bareRecords(network, kTwoLandmarks);
        const CallOptions options = scaledTo(maxSide, ofKind(kind, inSlot(kind)));
        EXPECT_EQ(records(detect(kInTread01, path, options)), cascadeRecords)
            << known.photo << maxSide;
        EXPECT_EQ(records(detect(kInTreadDebug, path, options)), cascadeRecords)
            << known.photo << maxSide;
        EXPECT_EQ(records(detect(kDun01, path, options)), networkRecords) << known.photo << maxSide;
        EXPECT_EQ(records(detect(kDun01Debug, path, options)), networkRecords)
            << known.photo << maxSide;
      }
    }
  }
  EXPECT_GT(2 * networkFaces[kCaffe], networkFacesAtOwnSize);
  EXPECT_GT(2 * networkFaces[kTensorflow], networkFacesAtOwnSize);
}

// One face's box, as fractions.
struct Box {
  double left, top, right, bottom;
};

std::vector<Box> boxesOf(const Outcome& outcome, std::size_t recordSize) {
  std::vector<Box> boxes;
  for (std::size_t at = 1; at + recordSize <= static_cast<std::size_t>(outcome.count);
       at += recordSize) {
    const double* record = &outcome.results[at];
    boxes.push_back({record[0], record[1], record[2], record[3]});
  }
  return boxes;
}

double area(const Box& box) {
  return std::max(0.0, box.right - box.left) * std::max(0.0, box.bottom - box.top);
}

// Intersection over union.
double overlap(const Box& a, const Box& b) {
  const double common = area({std::max(a.left, b.left), std::max(a.top, b.top),
                              std::min(a.right, b.right), std::min(a.bottom, b.bottom)});
  return common / (area(a) + area(b) - common);
}

TEST_F(RealSlots, boxTheSameFacesByCascadeAndByNetwork) {
  constexpr double sameFace = 0.4; // the cascade boxes the face, the network the head
  for (const KnownCount& known : knownCounts()) {
    const auto path = realPhoto(known.photo);
    const auto byCascade = boxesOf(detect(kInTread01, path, scaledTo(known.maxSide)), 8);
    const auto byNetwork = boxesOf(detect(kDun01, path, scaledTo(known.maxSide)), 8);
    ASSERT_EQ(byCascade.size(), byNetwork.size());
    for (const Box& box : byCascade) {
      EXPECT_TRUE(std::any_of(byNetwork.begin(), byNetwork.end(), [&](const Box& other) {
        return overlap(box, other) > sameFace;
      })) << known.photo;
    }
  }
}

TEST_F(RealSlots, boxTheSameFacesWithBothKindsOfNetwork) {
  // The two kinds hold the same weights, in half floats and in 8 bits, but see red and blue
  // exchanged.
  constexpr double nearlyEqual = 0.8;
  for (const char* photo :
       photosAtHand({"astronaut.jpg", "couple.jpg", "painting.jpg", "quartet.jpg"})) {
    const auto caffe = boxesOf(detect(kDun01, realPhoto(photo), scaledTo(1000)), 8);
    const auto tensorflow = boxesOf(
        detect(kDun01, realPhoto(photo), scaledTo(1000, ofKind(kTensorflow, inSlot(2)))), 8);
    ASSERT_GT(caffe.size(), 0U) << photo;
    ASSERT_EQ(caffe.size(), tensorflow.size()) << photo;
    for (const Box& box : caffe) {
      EXPECT_TRUE(std::any_of(tensorflow.begin(), tensorflow.end(), [&](const Box& other) {
        return overlap(box, other) > nearlyEqual;
      })) << photo;
    }
  }
}

TEST_F(RealSlots, putTheHeadsCentreBetweenItsTopAndTheChin) {
  for (const KnownCount& known : knownCounts()) {
    for (const SlotExport& slotExport : {kHaarTr02, kDunTr02}) {
      const Outcome outcome = detect(slotExport, realPhoto(known.photo), scaledTo(known.maxSide));
      for (std::size_t at = 1; at < static_cast<std::size_t>(outcome.count); at += 10) {
        const double* points = &outcome.results[at + 4]; // behind the box
        const cv::Point2d noseBridge(points[0], points[1]);
        const cv::Point2d chin(points[2], points[3]);
        const cv::Point2d headCentre(points[4], points[5]);
        const double noseToChin = chin.y - noseBridge.y;
        EXPECT_EQ(headCentre.x, noseBridge.x);
        EXPECT_GT(noseToChin, 0.0);
        // The measure is at most three times the way from nose bridge to chin.
        EXPECT_LT(headCentre.y, chin.y);
        EXPECT_GT(headCentre.y, noseBridge.y - 1.1 * noseToChin) << known.photo << slotExport.name;
      }
    }
  }
}

} // namespace
} // namespace qorocv::testing
