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
  void useModels(const std::vector<DetectionRow>& rows, MadeModels models = {}) const {
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
  Outcome find(const std::filesystem::path& path, const CallOptions& options = {}) const {
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

class NoFace : public EveryMaskExport {
protected:
  void SetUp() override {
    useModels({});
    cv::Mat picture(100, 200, CV_8UC3, cv::Scalar(10, 20, 30));
    picture(cv::Rect(100, 0, 100, 100)).setTo(kBright); // the right half is a person
    outcome_ = find(photo(picture));
  }
  Outcome outcome_;
};

INSTANTIATE_TEST_SUITE_P(Exports, NoFace, ::testing::ValuesIn(kMaskExports),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(NoFace, isReported) {
  EXPECT_EQ(outcome_.returned, 0);
  EXPECT_EQ(outcome_.count, 0);
  EXPECT_EQ(outcome_.written(), 0U);
  EXPECT_EQ(outcome_.width, 200);
  EXPECT_EQ(outcome_.height, 100);
}

TEST_P(NoFace, isInTheView) {
  const auto view = outcome_.view.inside();
  EXPECT_EQ(pixelAt(view, 1000, 0, 0), cv::Vec4b(30, 20, 10, 255)); // red first
  EXPECT_EQ(pixelAt(view, 1000, 490, 999), cv::Vec4b(30, 20, 10, 255));
  EXPECT_EQ(pixelAt(view, 1000, 999, 999), kPerson);
}

TEST_P(NoFace, isInTheMask) {
  const auto mask = outcome_.mask.inside();
  for (const int row : {0, 100, 191}) {
    EXPECT_EQ(pixelAt(mask, 192, 0, row), kBackground);
    EXPECT_EQ(pixelAt(mask, 192, 95, row), kBackground);
    EXPECT_EQ(pixelAt(mask, 192, 97, row), kPerson);
    EXPECT_EQ(pixelAt(mask, 192, 191, row), kPerson);
  }
}

TEST_P(NoFace, hasNoCloseUp) {
  EXPECT_TRUE(outcome_.cropMask.isUntouched());
  EXPECT_TRUE(outcome_.cropBox.isUntouched());
}

TEST_P(EveryMaskExport, showsAGreyPhotographInFourChannelsToo) {
  useModels({});
  const Outcome outcome = find(photo(cv::Mat(50, 50, CV_8UC1, cv::Scalar(77))));
  EXPECT_EQ(pixelAt(outcome.view.inside(), 1000, 500, 500), cv::Vec4b(77, 77, 77, 255));
}

TEST_P(EveryMaskExport, takesTheViewFromThePhotographBeforeItIsScaled) {
  useModels({});
  const auto path = photo(texturedPicture({300, 200}));
  EXPECT_EQ(find(path).view, find(path, scaledTo(20)).view);
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
  const Outcome outcome = find(path, scaledTo(500));
  const Outcome plain = detect(GetParam().detector == DetectorKind::cascade ? kHaarTr02 : kDunTr02,
                               path, scaledTo(500));
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
    return detect(slotExport, photo(picture), scaledTo(maxSide));
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
    const Outcome outcome = detect(kDunMask02, photo(personFrom(0)), inSlot(slot++));
    EXPECT_EQ(box(outcome), closeUp) << face;
    EXPECT_FALSE(outcome.cropMask.isUntouched()) << face;
  }
}

TEST_F(NetworkMasks, giveNoCloseUpOfAFaceThatSticksOut) {
  useFace(-16, 64, 48, 128);
  const Outcome outcome = find(kDunMask02, personFrom(30));
  EXPECT_EQ(box(outcome), of256(0, 0, 0, 0));
  EXPECT_TRUE(outcome.cropMask.isUntouched());
}

TEST_F(NetworkMasks, measureAFaceThatSticksOutWithoutACloseUp) {
  useFace(-16, 64, 48, 128);
  const cv::Mat picture = personFrom(30);
  EXPECT_EQ(records(find(kDunMask02, picture)), records(find(kDunMask01, picture)));
}

TEST_F(NetworkMasks, giveNoCloseUpOfAFaceWithoutHeight) {
  useFace(64, 128, 192, 128);
  const Outcome outcome = find(kDunMask02, personFrom(0));
  EXPECT_EQ(box(outcome), of256(0, 0, 0, 0));
  EXPECT_FALSE(outcome.mask.isUntouched());
}

TEST_F(NetworkMasks, haveNoRecordsWhereTheFitFails) {
  useFace(64, 128, 192, 128); // no height: nothing to fit
  const Outcome outcome = find(kDunMask02, personFrom(0));
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(outcome.count, 0);
  EXPECT_EQ(outcome.written(), 0U);
}

TEST_F(NetworkMasks, haveACloseUpAlsoWhereTheFitFails) {
  // In a picture one pixel wide every fit fails, also of a box that has a close-up.
  useModels({{1.F, 0.F, 0.25F, 1.F, 0.75F}});
  const Outcome outcome = find(kDunMask02, cv::Mat(200, 1, CV_8UC3, kBright));
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(outcome.count, 0);
  EXPECT_EQ(box(outcome), (std::vector<double>{0, 0, 1, 1}));
  EXPECT_FALSE(outcome.cropMask.isUntouched());
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

// Painted faces, so that the cascade finds them, on ground that is a person, too. Above row `top` the
// ground is darker: background to the segmenter, and no other hue to the colour measure.
cv::Mat facesOnAPersonFrom(int top, cv::Size size, const std::vector<cv::Rect>& squares) {
  cv::Mat picture = pictureWithMarks(size, squares);
  const cv::Mat above = picture(cv::Rect(0, 0, size.width, top));
  above.convertTo(above, -1, 0.5);
  return picture;
}

MadeModels modelsForThatGround() {
  MadeModels models;
  models.person.bias = 2.27F; // the channels add up to -2.03 on the ground and to -2.51 above it
  return models;
}

// The head's centre of the cascade's faces. What the network's exports give for such faces is told
// by the tests above; here the network is made to see the very boxes that the cascade finds.
class HaarMask : public MaskExportsBase, public ::testing::Test {
protected:
  Outcome findByCascade(const cv::Mat& picture) const {
    useModels({}, modelsForThatGround());
    return detect(kHaarMask02, photo(picture));
  }
  Outcome findByNetwork(const SlotExport& slotExport, const Outcome& byCascade) const {
    useModels(rowsOf(byCascade), modelsForThatGround());
    return detect(slotExport, directory_ / "photo.png", inSlot(++slot_));
  }

private:
  static std::vector<DetectionRow> rowsOf(const Outcome& outcome) {
    // From the middle of the pixel at each edge, so that no rounding moves it.
    const auto middle = [](double edge, int side) { return static_cast<float>(edge + 0.5 / side); };
    std::vector<DetectionRow> rows;
    for (std::size_t at = 1; at < static_cast<std::size_t>(outcome.count); at += 10) {
      const double* const box = &outcome.results[at];
      rows.push_back({1.F, middle(box[0], outcome.width), middle(box[1], outcome.height),
                      middle(box[2], outcome.width), middle(box[3], outcome.height)});
    }
    return rows;
  }
  mutable int slot_ = 1; // each network in a slot of its own
};

constexpr std::size_t kHeadsCentre = 10;
constexpr std::size_t kSecondHeadsCentre = 20;

TEST_F(HaarMask, measuresAnOnlyFaceInItsCloseUp) {
  const Outcome outcome = findByCascade(facesOnAPersonFrom(60, {400, 400}, {{140, 200, 120, 120}}));
  ASSERT_EQ(outcome.returned, 1);
  EXPECT_EQ(records(outcome), records(findByNetwork(kDunMask02, outcome)));
  const double byWholeMask = findByNetwork(kDunMask01, outcome).results[kHeadsCentre];
  const double byColour = findByNetwork(kDunTr02, outcome).results[kHeadsCentre];
  EXPECT_NE(outcome.results[kHeadsCentre], byWholeMask);
  EXPECT_NE(outcome.results[kHeadsCentre], byColour);
}

TEST_F(HaarMask, measuresTwoFacesByTheMask) {
  const Outcome outcome =
      findByCascade(facesOnAPersonFrom(112, {448, 320}, {{60, 120, 96, 96}, {260, 120, 96, 96}}));
  ASSERT_EQ(outcome.returned, 2);
  EXPECT_EQ(records(outcome), records(findByNetwork(kDunMask01, outcome)));
  const Outcome byColour = findByNetwork(kDunTr02, outcome);
  EXPECT_NE(outcome.results[kHeadsCentre], byColour.results[kHeadsCentre]);
  EXPECT_NE(outcome.results[kSecondHeadsCentre], byColour.results[kSecondHeadsCentre]);
}

class UnreadArgument : public MaskExportsBase, public ::testing::Test {
protected:
  /// Whether a call with these options gives what a call without them gives.
  void expectNoDifference(const CallOptions& options) const {
    useModels({});
    const auto path = photo(pictureWithFace());
    const Outcome plain = detect(kHaarMask02, path);
    ASSERT_EQ(plain.returned, 1);
    EXPECT_FALSE(plain.cropMask.isUntouched());
    EXPECT_TRUE(sameOutputs(detect(kHaarMask02, path, options), plain));
  }
};

TEST_F(UnreadArgument, ofTheCascadesMaskExportIsTheModelKind) {
  for (const int kind : {0, kTensorflow, -1, 2147483647}) {
    SCOPED_TRACE(kind);
    expectNoDifference(ofKind(kind));
  }
}

TEST_F(UnreadArgument, ofTheCascadesMaskExportIsTheReservedOne) {
  for (const int reserved : {1, -1, 2147483647}) {
    SCOPED_TRACE(reserved);
    CallOptions options;
    options.reserved = reserved;
    expectNoDifference(options);
  }
}

} // namespace
} // namespace qorocv::testing
