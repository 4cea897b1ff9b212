// The exports with a person mask through the C interface, on made models: what they hand out
// besides records, and by which measure they place the head's centre. The made segmenter takes
// bright pixels for a person.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cmath>

namespace qorocv::testing {
namespace {

const cv::Scalar kBright(255, 255, 255);

class MaskExportsBase {
protected:
  void useModels(const std::vector<DetectionRow>& rows) const {
    MadeModels models;
    models.caffeRows = rows;
    models.tensorflowRows = rows;
    writeMadeModels(directory_.path(), models);
    ASSERT_EQ(initModelsAtPath(directory_.asPrefix().c_str()), 0);
  }
  std::filesystem::path photo(const cv::Mat& picture) const {
    return writePicture(directory_ / "photo.png", picture);
  }

  TemporaryDirectory directory_;
};

class EveryMaskExport : public MaskExportsBase, public ::testing::TestWithParam<SlotExport> {
protected:
  Outcome find(const std::filesystem::path& path, const SlotOptions& options = {}) const {
    return detect(GetParam(), path, options);
  }
};

INSTANTIATE_TEST_SUITE_P(Exports, EveryMaskExport, ::testing::ValuesIn(kMaskExports),
                         [](const auto& instance) { return instance.param.name; });

cv::Vec4b pixelAt(const std::vector<unsigned char>& block, int side, int x, int y) {
  const auto at = static_cast<std::size_t>(4 * (y * side + x));
  return {block[at], block[at + 1], block[at + 2], block[at + 3]};
}

const cv::Vec4b kPerson(255, 255, 255, 255);
const cv::Vec4b kBackground(0, 0, 0, 255);

TEST_P(EveryMaskExport, handsOutViewAndMaskOfAPhotographWithoutFaces) {
  useModels({});
  cv::Mat picture(100, 200, CV_8UC3, cv::Scalar(10, 20, 30));
  picture(cv::Rect(100, 0, 100, 100)).setTo(kBright); // the right half is a person
  const Outcome outcome = find(photo(picture));
  EXPECT_EQ(outcome.returned, 0);
  EXPECT_EQ(outcome.count, 0);
  EXPECT_EQ(outcome.written(), 0U);
  EXPECT_EQ(outcome.width, 200);
  EXPECT_EQ(outcome.height, 100);
  const auto view = outcome.view.inside();
  EXPECT_EQ(pixelAt(view, 1000, 0, 0), cv::Vec4b(30, 20, 10, 255)); // red first
  EXPECT_EQ(pixelAt(view, 1000, 490, 999), cv::Vec4b(30, 20, 10, 255));
  EXPECT_EQ(pixelAt(view, 1000, 999, 999), kPerson);
  const auto mask = outcome.mask.inside();
  for (const int row : {0, 100, 191}) {
    EXPECT_EQ(pixelAt(mask, 192, 0, row), kBackground);
    EXPECT_EQ(pixelAt(mask, 192, 95, row), kBackground);
    EXPECT_EQ(pixelAt(mask, 192, 97, row), kPerson);
    EXPECT_EQ(pixelAt(mask, 192, 191, row), kPerson);
  }
  EXPECT_TRUE(outcome.cropMask.isUntouched());
  EXPECT_TRUE(outcome.cropBox.isUntouched());
}

TEST_P(EveryMaskExport, showsAGreyPhotographInFourChannelsToo) {
  useModels({});
  const Outcome outcome = find(photo(cv::Mat(50, 50, CV_8UC1, cv::Scalar(77))));
  EXPECT_EQ(pixelAt(outcome.view.inside(), 1000, 500, 500), cv::Vec4b(77, 77, 77, 255));
}

TEST_P(EveryMaskExport, takesTheViewFromThePhotographAndNotFromItsScaledForm) {
  useModels({});
  const auto path = photo(texturedPicture({300, 200}));
  EXPECT_EQ(find(path).view, find(path, {1, 20}).view);
}

TEST_P(EveryMaskExport, leavesTheCloseUpAloneUnlessOneFaceIsFound) {
  std::vector<DetectionRow> rows;
  for (const cv::Rect& square : gridSquares(2)) {
    rows.push_back({0.875F, static_cast<float>(square.x) / 448, static_cast<float>(square.y) / 320,
                    static_cast<float>(square.x + square.width) / 448,
                    static_cast<float>(square.y + square.height) / 320});
  }
  useModels(rows);
  const Outcome outcome = find(photo(pictureWithGrid(2)));
  ASSERT_EQ(outcome.returned, 2);
  EXPECT_EQ(outcome.count, 21);
  EXPECT_TRUE(outcome.cropMask.isUntouched());
  EXPECT_TRUE(outcome.cropBox.isUntouched());
  EXPECT_FALSE(outcome.mask.isUntouched());
}

TEST_P(EveryMaskExport, sharesItsFirstNineValuesWithTheExportWithoutAMask) {
  useModels({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  const auto path = photo(pictureWithFace());
  const Outcome outcome = find(path, {1, 500});
  const Outcome plain =
      detect(GetParam().detector == DetectorKind::cascade ? kHaarTr02 : kDunTr02, path, {1, 500});
  ASSERT_EQ(outcome.count, 11);
  for (std::size_t i = 0; i <= 9; ++i) {
    EXPECT_EQ(outcome.results[i], plain.results[i]) << i;
  }
}

TEST_P(EveryMaskExport, recoversWhenTheSegmentationModelIsThereAtTheNextCall) {
  useModels({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  const auto path = photo(pictureWithFace());
  std::filesystem::remove(directory_ / kMadeSegmentation);
  const Outcome failed = call([&](const HostVariables& host) {
    EXPECT_THROW(GetParam().call(path.u8string().c_str(), host, {}), cv::Exception);
    return 0;
  });
  EXPECT_EQ(failed.width, 640); // as far as the call came
  EXPECT_EQ(failed.count, 1);
  EXPECT_TRUE(failed.view.isUntouched());
  EXPECT_TRUE(failed.mask.isUntouched());
  useModels({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  EXPECT_EQ(find(path).count, 11);
}

TEST_P(EveryMaskExport, loadsTheFaceDetectorsBeforeTheSegmenter) {
  useModels({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  const auto path = photo(pictureWithFace());
  std::filesystem::remove(directory_ / kMadeSegmentation);
  EXPECT_THROW(find(path), cv::Exception);
  for (const char* const model :
       {kMadeCaffeText, kMadeCaffeWeights, kMadeLandmarks, kMadeCascade}) {
    std::filesystem::remove(directory_ / model);
  }
  // Faces and landmarks need no file any more.
  const SlotExport& plain = GetParam().detector == DetectorKind::cascade ? kHaarTr02 : kDunTr02;
  EXPECT_EQ(detect(plain, path).returned, 1);
}

// One face, by the network: boxes can be put anywhere.
class NetworkMasks : public MaskExportsBase, public ::testing::Test {
protected:
  /// The box in pixels of a 256 x 256 photograph.
  void useFace(int left, int top, int right, int bottom) const {
    useModels({row(left, top, right, bottom)});
  }
  static DetectionRow row(int left, int top, int right, int bottom) {
    const auto fraction = [](int pixel) { return static_cast<float>(pixel) / 256; };
    return {0.875F, fraction(left), fraction(top), fraction(right), fraction(bottom)};
  }
  Outcome find(const SlotExport& slotExport, const cv::Mat& picture, int maxSide = 0) const {
    return detect(slotExport, photo(picture), {1, maxSide});
  }
};

// A photograph in which the person fills everything from row `top` down.
cv::Mat personFrom(int top) {
  cv::Mat picture(256, 256, CV_8UC3, cv::Scalar::all(0));
  picture(cv::Rect(0, top, 256, 256 - top)).setTo(kBright);
  return picture;
}

std::vector<double> box(const Outcome& outcome) {
  return outcome.cropBox.inside();
}

std::vector<double> of256(double left, double top, double width, double height) {
  return {left / 256, top / 256, width / 256, height / 256};
}

TEST_F(NetworkMasks, segmentTheSurroundingsOfAnOnlyFace) {
  useFace(96, 96, 128, 144);
  cv::Mat picture = personFrom(256);
  picture(cv::Rect(64, 48, 48, 144)).setTo(kBright); // the left half of the close-up
  const Outcome outcome = find(kDunMask02, picture);
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(box(outcome), of256(64, 48, 96, 144));
  const auto mask = outcome.cropMask.inside();
  for (const int row : {0, 191}) {
    EXPECT_EQ(pixelAt(mask, 192, 0, row), kPerson);
    EXPECT_EQ(pixelAt(mask, 192, 94, row), kPerson);
    EXPECT_EQ(pixelAt(mask, 192, 97, row), kBackground);
    EXPECT_EQ(pixelAt(mask, 192, 191, row), kBackground);
  }
}

TEST_F(NetworkMasks, reportTheCloseUpInFractionsOfThePhotographWhateverTheScale) {
  useFace(96, 96, 128, 144);
  EXPECT_EQ(box(find(kDunMask02, personFrom(0), 512)), of256(64, 48, 96, 144));
}

TEST_F(NetworkMasks, endTheCloseUpAtEachEdgeOfThePhotograph) {
  const struct {
    cv::Rect face;
    std::vector<double> closeUp;
  } cases[] = {
      {{0, 96, 32, 48}, of256(0, 48, 64, 144)},
      {{96, 0, 32, 48}, of256(64, 0, 96, 96)},
      {{224, 96, 32, 48}, of256(192, 48, 64, 144)},
      {{96, 208, 32, 48}, of256(64, 160, 96, 96)},
  };
  int slot = 1;
  for (const auto& [face, closeUp] : cases) {
    useFace(face.x, face.y, face.x + face.width, face.y + face.height);
    const Outcome outcome = detect(kDunMask02, photo(personFrom(0)), {slot++});
    EXPECT_EQ(box(outcome), closeUp) << face;
    EXPECT_FALSE(outcome.cropMask.isUntouched()) << face;
  }
}

TEST_F(NetworkMasks, giveNoCloseUpOfAFaceThatSticksOutAndMeasureItWithoutOne) {
  useFace(-16, 64, 48, 128);
  const cv::Mat picture = personFrom(30);
  const Outcome outcome = find(kDunMask02, picture);
  EXPECT_EQ(box(outcome), of256(0, 0, 0, 0));
  EXPECT_TRUE(outcome.cropMask.isUntouched());
  EXPECT_EQ(records(outcome), records(find(kDunMask01, picture)));
}

TEST_F(NetworkMasks, haveACloseUpButNoRecordsWhereTheFitFails) {
  useFace(64, 128, 192, 128); // no height: nothing to fit, and no close-up
  const Outcome flat = find(kDunMask02, personFrom(0));
  EXPECT_EQ(flat.returned, 1);
  EXPECT_EQ(flat.count, 0);
  EXPECT_EQ(flat.written(), 0U);
  EXPECT_EQ(box(flat), of256(0, 0, 0, 0));
  EXPECT_FALSE(flat.mask.isUntouched());
  // In a picture one pixel wide every fit fails, also of a box that has a close-up.
  useModels({{1.F, 0.F, 0.25F, 1.F, 0.75F}});
  const Outcome narrow = detect(kDunMask02, photo(cv::Mat(200, 1, CV_8UC3, kBright)), {2});
  EXPECT_EQ(narrow.returned, 1);
  EXPECT_EQ(narrow.count, 0);
  EXPECT_EQ(box(narrow), (std::vector<double>{0, 0, 1, 1}));
  EXPECT_FALSE(narrow.cropMask.isUntouched());
}

// The made landmarker puts nose bridge and chin at fixed places of the box, as fractions of half
// its height from its middle.
struct Marks {
  double bridge;
  double chin;
};

Marks marksOf(const Outcome& outcome) {
  return {outcome.results[6] * 256, outcome.results[8] * 256};
}

/// The head's centre that a head reaching `distance` pixels above the nose bridge has.
double centreFor(const Outcome& outcome, double distance) {
  const auto [bridge, chin] = marksOf(outcome);
  const double top = bridge - distance;
  return std::floor((chin - top) / 2 + top) / 256;
}

TEST_F(NetworkMasks, placeTheHeadsCentreByTheMask) {
  useModels({row(64, 96, 128, 160), row(160, 96, 224, 160)});
  // Rows of the photograph and of its 192 rows of mask meet at every fourth row.
  const Outcome outcome = find(kDunMask01, personFrom(80));
  ASSERT_EQ(outcome.count, 21);
  const double above = marksOf(outcome).bridge - 80;
  // Enlarging the mask leaves traces of the person a row or so above it.
  EXPECT_GE(outcome.results[10], centreFor(outcome, std::floor(above) + 2));
  EXPECT_LE(outcome.results[10], centreFor(outcome, std::floor(above)));
  EXPECT_NE(outcome.results[10], detect(kDunTr02, photo(personFrom(80))).results[10]);
  EXPECT_EQ(outcome.results[20], outcome.results[10]); // both heads are the same
  EXPECT_EQ(records(find(kDunMask02, personFrom(80))), records(outcome));
}

TEST_F(NetworkMasks, measureAnOnlyFaceInItsCloseUp) {
  useFace(96, 96, 128, 144);
  // A person who fills the close-up to its top edge (row 48), and ends above that: the close-up
  // has no answer and falls back to its top edge plus the face's length; the whole mask has one.
  const cv::Mat picture = personFrom(40);
  const Outcome closeUp = find(kDunMask02, picture);
  const auto [bridge, chin] = marksOf(closeUp);
  EXPECT_EQ(closeUp.results[10], centreFor(closeUp, 48 + (chin - bridge)));
  const Outcome whole = find(kDunMask01, picture);
  EXPECT_NE(whole.results[10], closeUp.results[10]);
}

TEST_F(NetworkMasks, takeTheFacesLengthWhereThePersonReachesTheTopEdge) {
  useFace(96, 96, 128, 144);
  const Outcome outcome = find(kDunMask01, personFrom(0));
  const auto [bridge, chin] = marksOf(outcome);
  EXPECT_EQ(outcome.results[10], centreFor(outcome, chin - bridge));
}

class HaarMask : public MaskExportsBase, public ::testing::Test {};

TEST_F(HaarMask, neverReadsModelKindAndReserved) {
  useModels({});
  const auto path = photo(pictureWithFace());
  const Outcome plain = detect(kHaarMask02, path);
  ASSERT_EQ(plain.returned, 1);
  EXPECT_FALSE(plain.cropMask.isUntouched());
  for (const int value : {0, 2, -1, 2147483647}) {
    SlotOptions options;
    options.modelKind = value;
    options.reserved = value;
    EXPECT_TRUE(sameOutputs(detect(kHaarMask02, path, options), plain)) << value;
  }
}

} // namespace
} // namespace qorocv::testing
