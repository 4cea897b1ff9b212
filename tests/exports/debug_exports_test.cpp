// The annotated copies that the per-slot debug exports keep.
#include "exports/slot_exports_fixture.h"
#include "support/annotations.h"

#include <opencv2/imgcodecs.hpp>

namespace qorocv::testing {
namespace {

class DebugExport : public OneSlotExport {
protected:
  /// The annotated copy of a photograph.
  cv::Mat copyOf(const std::filesystem::path& path, const CallOptions& options = {}) const {
    find(path, copiedTo(copyPath(), options));
    return cv::imread(copyPath().string());
  }
  cv::Scalar landmarkColour() const { return isCascade() ? kLightBlue : kRed; }
  cv::Scalar otherExportsLandmarkColour() const { return isCascade() ? kRed : kLightBlue; }
  /// What a call gives whose copy has a format that OpenCV does not know.
  Outcome failToCopy() const {
    const std::string path = photoOfFaces(1).string();
    return call([&](const HostVariables& host) {
      EXPECT_THROW(GetParam().call(path.c_str(), host, copiedTo(directory_ / "copy.nosuchformat")),
                   cv::Exception);
      return 0;
    });
  }
};

INSTANTIATE_TEST_SUITE_P(Exports, DebugExport, ::testing::Values(kInTreadDebug, kDun01Debug),
                         nameOf);

TEST_P(DebugExport, returnsWhatTheExportWithoutAnnotationReturns) {
  const auto path = photoOfFaces(2);
  const Outcome debug = find(path, copiedTo(copyPath()));
  const Outcome plain = detect(isCascade() ? kInTread01 : kDun01, path);
  EXPECT_EQ(debug.returned, 2);
  EXPECT_EQ(debug.results, plain.results);
  EXPECT_EQ(debug.count, plain.count);
}

TEST_P(DebugExport, copiesTheScaledPicture) {
  EXPECT_EQ(copyOf(photoOfFaces(1), scaledTo(896)).size(), cv::Size(896, 640));
}

TEST_P(DebugExport, drawsBoxesInGreen) {
  EXPECT_GT(pixelsOf(copyOf(photoOfFaces(1), scaledTo(896)), kGreen), 200);
}

TEST_P(DebugExport, drawsLandmarksInTheColourOfItsDetector) {
  const cv::Mat copy = copyOf(photoOfFaces(1), scaledTo(896));
  EXPECT_GT(pixelsOf(copy, landmarkColour()), 50);
  EXPECT_EQ(pixelsOf(copy, otherExportsLandmarkColour()), 0);
}

TEST_P(DebugExport, drawsTheBoxesOfMoreThanThirtyFaces) {
  const cv::Mat copy = copyOf(photoOfFaces(35));
  for (const cv::Rect& square : gridSquares(35)) {
    const cv::Rect cell(square.x - 8, square.y - 8, 64, 64);
    EXPECT_GT(pixelsOf(copy(cell), kGreen), 50) << square;
  }
}

TEST_P(DebugExport, drawsTheLandmarksOfMoreThanThirtyFaces) {
  const cv::Mat copy = copyOf(photoOfFaces(35));
  for (const cv::Rect& square : gridSquares(35)) {
    EXPECT_GT(pixelsOf(copy(square), landmarkColour()), 20) << square;
  }
}

TEST_P(DebugExport, writesThePlainPictureWhereNoFaceIsFound) {
  useModels(modelsSeeing({}));
  const cv::Mat plain = texturedPicture({200, 100});
  EXPECT_EQ(cv::norm(copyOf(photo(plain)), plain, cv::NORM_INF), 0.0);
}

TEST_P(DebugExport, takesAOneCharacterOutputPathAsNone) {
  const auto path = photoOfFaces(1);
  std::filesystem::current_path(directory_.path());
  EXPECT_EQ(find(path, copiedTo("a")).returned, 1);
  EXPECT_FALSE(std::filesystem::exists("a"));
  std::filesystem::current_path("/");
}

TEST_P(DebugExport, ignoresACopyThatCannotBeWritten) {
  EXPECT_EQ(find(photoOfFaces(1), copiedTo(directory_ / "no/such/copy.png")).returned, 1);
}

TEST_P(DebugExport, hasItsRecordsInPlaceWhenTheCopyFails) {
  EXPECT_EQ(failToCopy().written(), 9U);
}

TEST_P(DebugExport, hasItsCountInPlaceWhenTheCopyFailsOnlyWithTheCascade) {
  EXPECT_EQ(failToCopy().count, isCascade() ? 9 : 1);
}

} // namespace
} // namespace qorocv::testing
