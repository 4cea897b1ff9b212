// The SSD detector on networks whose rows the test chooses.
#include "faces/ssd_detector.h"
#include "make_models/made_models.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace qorocv {
namespace {

using testing::DetectionRow;
using Boxes = std::vector<cv::Rect>;

constexpr int kCaffe = 1;

cv::dnn::Net netAnswering(const std::vector<DetectionRow>& rows, int modelKind = kCaffe) {
  const testing::TemporaryDirectory directory;
  testing::MadeModels models;
  models.caffeRows = rows;
  models.tensorflowRows = rows;
  testing::writeMadeModels(directory.path(), models);
  const auto file = [&](const char* name) { return (directory / name).string(); };
  if (modelKind == kCaffe) {
    return cv::dnn::readNetFromCaffe(file("model01.prototxt"), file("model02.caffemodel"));
  }
  return cv::dnn::readNetFromTensorflow(file("model04.pb"), file("model03.pbtxt"));
}

cv::Mat flatImage(cv::Size size, const cv::Scalar& blueGreenRed = {}) {
  return cv::Mat(size, CV_8UC3, blueGreenRed);
}

Boxes detect(const std::vector<DetectionRow>& rows, cv::Size size = {200, 100}) {
  Boxes faces;
  detectFacesSsd(netAnswering(rows), flatImage(size), kCaffe, faces);
  return faces;
}

TEST(DetectFacesSsd, scalesARowToTheImage) {
  EXPECT_EQ(detect({{0.875F, 0.25F, 0.5F, 0.75F, 0.875F}}), (Boxes{{50, 50, 100, 37}}));
}

TEST(DetectFacesSsd, dropsRowsUpToTheThreshold) {
  EXPECT_EQ(detect({{0.7F, 0.F, 0.F, 1.F, 1.F}}), Boxes{});
  EXPECT_EQ(detect({{std::nextafter(0.7F, 0.F), 0.F, 0.F, 1.F, 1.F}}), Boxes{});
}

TEST(DetectFacesSsd, keepsRowsAboveTheThreshold) {
  EXPECT_EQ(detect({{std::nextafter(0.7F, 1.F), 0.F, 0.F, 1.F, 1.F}}).size(), 1U);
  EXPECT_EQ(detect({{0.7000001F, 0.F, 0.F, 1.F, 1.F}}).size(), 1U);
}

TEST(DetectFacesSsd, dropsAConfidenceThatIsNoNumber) {
  EXPECT_EQ(detect({{std::numeric_limits<float>::quiet_NaN(), 0.F, 0.F, 1.F, 1.F}}), Boxes{});
}

TEST(DetectFacesSsd, turnsReversedEdgesRound) {
  EXPECT_EQ(detect({{1.F, 0.75F, 0.5F, 0.25F, 0.25F}}), (Boxes{{50, 25, 100, 25}}));
}

TEST(DetectFacesSsd, doesNotClampToTheImage) {
  EXPECT_EQ(detect({{1.F, -0.5F, -0.25F, 1.5F, 1.25F}}), (Boxes{{-100, -25, 400, 150}}));
}

TEST(DetectFacesSsd, truncatesTowardsZeroOnBothSidesOfTheEdge) {
  // 200 * 0.0099 is 1.98 and 100 * -0.0099 is -0.99.
  EXPECT_EQ(detect({{1.F, 0.0099F, -0.0099F, 0.5F, 0.5F}}), (Boxes{{1, 0, 99, 50}}));
}

TEST(DetectFacesSsd, multipliesInSinglePrecision) {
  // 0.29f is a little under 0.29, and its product with 100 rounds up to 29 in single precision
  // alone.
  ASSERT_LT(static_cast<double>(0.29F) * 100.0, 29.0);
  EXPECT_EQ(detect({{1.F, 0.29F, 0.F, 1.F, 1.F}}, {100, 100}), (Boxes{{29, 0, 71, 100}}));
}

TEST(DetectFacesSsd, makesABoxOfNoSizeOfEqualEdges) {
  EXPECT_EQ(detect({{1.F, 0.5F, 0.5F, 0.5F, 0.5F}}), (Boxes{{100, 50, 0, 0}}));
}

TEST(DetectFacesSsd, survivesCoordinatesBeyondEveryInteger) {
  constexpr int smallest = std::numeric_limits<int>::min();
  EXPECT_EQ(detect({{1.F, 1e30F, 0.F, -1e30F, 1.F}}), (Boxes{{smallest, 0, 0, 100}}));
}

TEST(DetectFacesSsd, keepsTheOrderOfTheRows) {
  EXPECT_EQ(detect({{0.75F, 0.F, 0.F, 0.5F, 0.5F},
                    {0.5F, 0.F, 0.F, 1.F, 1.F},
                    {1.F, 0.5F, 0.5F, 1.F, 1.F},
                    {0.875F, 0.F, 0.F, 0.5F, 0.5F}}),
            (Boxes{{0, 0, 100, 50}, {100, 50, 100, 50}, {0, 0, 100, 50}}));
}

TEST(DetectFacesSsd, appendsToWhatIsThere) {
  Boxes faces{{1, 2, 3, 4}};
  const cv::dnn::Net net = netAnswering({{1.F, 0.F, 0.F, 0.5F, 0.5F}});
  detectFacesSsd(net, flatImage({200, 100}), kCaffe, faces);
  detectFacesSsd(net, flatImage({20, 10}), kCaffe, faces);
  EXPECT_EQ(faces, (Boxes{{1, 2, 3, 4}, {0, 0, 100, 50}, {0, 0, 10, 5}}));
}

TEST(DetectFacesSsd, leavesTheListAloneWhereNoRowCounts) {
  Boxes faces{{1, 2, 3, 4}};
  detectFacesSsd(netAnswering({}), flatImage({200, 100}), kCaffe, faces);
  EXPECT_EQ(faces, (Boxes{{1, 2, 3, 4}}));
}

// Edges that repeat the planes of the blob: on an image of side 1024 the box's left, top and bottom
// are the values of plane 0, 1 and 2.
const std::vector<DetectionRow> kPlanesAsEdges{
    {1.F, {0.F, {1 / 1024.F, 0, 0}}, {0.F, {0, 1 / 1024.F, 0}}, 1.F, {0.F, {0, 0, 1 / 1024.F}}}};

Boxes planes(int modelKind) {
  Boxes faces;
  detectFacesSsd(netAnswering(kPlanesAsEdges, modelKind), flatImage({1024, 1024}, {130, 180, 140}),
                 modelKind, faces);
  return faces;
}

TEST(DetectFacesSsd, doublesTheDifferenceToTheMeanInBlueGreenRedOrderForKindOne) {
  // 2 * (130 - 104), 2 * (180 - 177), 2 * (140 - 123)
  EXPECT_EQ(planes(kCaffe), (Boxes{{52, 6, 1024 - 52, 34 - 6}}));
}

TEST(DetectFacesSsd, exchangesRedAndBlueForEveryOtherKind) {
  // The first plane is red and has the mean's first value taken off: 2 * (140 - 104), 2 * (180 -
  // 177), 2 * (130 - 123).
  for (const int kind : {2, 0, -1}) {
    EXPECT_EQ(planes(kind), (Boxes{{72, 6, 1024 - 72, 14 - 6}})) << kind;
  }
}

TEST(DetectFacesSsd, throwsForAnEmptyNetwork) {
  Boxes faces;
  EXPECT_THROW(detectFacesSsd(cv::dnn::Net(), flatImage({20, 10}), kCaffe, faces), cv::Exception);
}

} // namespace
} // namespace qorocv
