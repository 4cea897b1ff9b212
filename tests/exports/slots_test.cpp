// The per-slot exports through the C interface, on made models: what holds of all eleven, and then
// what tells them apart.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "qorocv460/qorocv460.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <clocale>
#include <cmath>
#include <fstream>

namespace qorocv::testing {
namespace {

constexpr float kJustAbove = 0.7000001F;

constexpr SlotExport kNetworkExports[] = {kDun01,     kDun01Debug, kDun02,  kDunTr02,
                                          kDunMask01, kDunMask02,  kDunTile};

// Both networks see the same faces unless a test says otherwise.
MadeModels modelsSeeing(const std::vector<DetectionRow>& rows) {
  MadeModels models;
  models.caffeRows = rows;
  models.tensorflowRows = rows;
  return models;
}

// `count` boxes of 32 x 32 pixels on the 448 x 320 grid picture, seven in a row.
std::vector<DetectionRow> gridRows(int count) {
  std::vector<DetectionRow> rows;
  for (int i = 0; i < count; ++i) {
    const float left = static_cast<float>(64 * (i % 7) + 16) / 448.0F;
    const float top = static_cast<float>(64 * (i / 7) + 16) / 320.0F;
    rows.push_back({0.875F, left, top, left + 32.0F / 448.0F, top + 32.0F / 320.0F});
  }
  return rows;
}

class SlotExportsBase {
protected:
  void useModels(const MadeModels& models = {}) const {
    writeMadeModels(directory_.path(), models);
    ASSERT_EQ(initModelsAtPath(directory_.asPrefix().c_str()), 0);
  }
  std::filesystem::path photo(const cv::Mat& picture) const {
    return writePicture(directory_ / "photo.png", picture);
  }
  /// A photograph in which cascade and networks see `count` faces.
  std::filesystem::path photoOfFaces(int count) const {
    useModels(modelsSeeing(gridRows(count)));
    return photo(pictureWithGrid(count));
  }
  std::string copyPath() const { return (directory_ / "copy.png").string(); }

  TemporaryDirectory directory_;
};

class EverySlotExport : public SlotExportsBase, public ::testing::TestWithParam<SlotExport> {
protected:
  Outcome find(const std::filesystem::path& path, const SlotOptions& options = {},
               int capacity = 1) const {
    return detect(GetParam(), path, options, capacity);
  }
  std::size_t recordSize() const { return GetParam().recordSize; }
};

INSTANTIATE_TEST_SUITE_P(Exports, EverySlotExport, ::testing::ValuesIn(kSlotExports),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(EverySlotExport, rejectsNullArraysAndNoCapacityWithoutTouchingAnything) {
  const std::string path = photoOfFaces(1).string();
  SlotOptions options;
  options.outputPath = copyPath();
  const Outcome noResults = call([&](HostVariables host) {
    host.results = nullptr;
    return GetParam().call(path.c_str(), host, options);
  });
  const Outcome noCount = call([&](HostVariables host) {
    host.count = nullptr;
    return GetParam().call(path.c_str(), host, options);
  });
  for (const Outcome& outcome : {noResults, noCount}) {
    EXPECT_EQ(outcome.returned, 0);
    EXPECT_EQ(outcome.printed, "");
    expectNothingTouched(outcome, 1);
  }
  for (const int capacity : {0, -1}) {
    const Outcome outcome = find(path, options, capacity);
    EXPECT_EQ(outcome.returned, 0);
    expectNothingTouched(outcome, capacity);
  }
  EXPECT_FALSE(std::filesystem::exists(copyPath()));
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST_P(EverySlotExport, saysOnceThatAPhotographCannotBeReadAndTouchesNothing) {
  const TemporaryDirectory noModels; // none is looked for either
  initModelsAtPath(noModels.asPrefix().c_str());
  SlotOptions options;
  options.outputPath = copyPath();
  const Outcome outcome = find("no-such-picture.jpg", options);
  EXPECT_EQ(outcome.returned, -1);
  EXPECT_EQ(outcome.printed, kUnreadableMessage);
  expectNothingTouched(outcome, 1);
  EXPECT_FALSE(std::filesystem::exists(copyPath()));
}

TEST_P(EverySlotExport, reportsOneFaceAndTheSizeBeforeScaling) {
  const Outcome outcome = find(photoOfFaces(1), {1, 896});
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(outcome.width, 448);
  EXPECT_EQ(outcome.height, 320);
  EXPECT_EQ(outcome.results[0], 1.0);
  EXPECT_EQ(outcome.count, static_cast<int>(1 + recordSize()));
  EXPECT_EQ(outcome.written(), 1 + recordSize());
  EXPECT_LT(outcome.results[1], outcome.results[3]);
  EXPECT_LT(outcome.results[2], outcome.results[4]);
}

TEST_P(EverySlotExport, findsNothingOnAPlainPicture) {
  useModels(modelsSeeing({}));
  const Outcome outcome = find(photo(plainPicture({200, 100})));
  EXPECT_EQ(outcome.returned, 0);
  EXPECT_EQ(outcome.count, 0);
  EXPECT_EQ(outcome.written(), 0U);
  EXPECT_EQ(outcome.width, 200);
  EXPECT_EQ(outcome.height, 100);
}

TEST_P(EverySlotExport, writesThirtyRecordsOfMoreFacesWhateverTheCapacity) {
  int slot = 1;
  for (const int faces : {31, 35}) {
    const auto path = photoOfFaces(faces);
    for (const int capacity : {1, 5000}) {
      const Outcome outcome = find(path, {slot}, capacity);
      EXPECT_EQ(outcome.returned, faces);
      EXPECT_EQ(outcome.results[0], static_cast<double>(faces));
      EXPECT_EQ(outcome.count, static_cast<int>(1 + 30 * recordSize()));
      EXPECT_EQ(outcome.written(), 1 + 30 * recordSize());
    }
    ++slot; // a fresh one, for the networks keep their rows
  }
}

TEST_P(EverySlotExport, treatsEveryOtherSlotNumberAsSlotOne) {
  const auto path = photoOfFaces(2);
  const Outcome one = find(path, {1});
  ASSERT_EQ(one.returned, 2);
  std::filesystem::remove_all(directory_ / "model05.yaml"); // slot 1 needs no file any more
  std::filesystem::remove_all(directory_ / "model06.xml");
  std::filesystem::remove_all(directory_ / "model02.caffemodel");
  for (const int number : {0, 10, -1, 2147483647}) {
    EXPECT_EQ(find(path, {number}).results, one.results) << number;
  }
  EXPECT_THROW(find(path, {2}), cv::Exception);
}

TEST_P(EverySlotExport, loadsASlotOnItsFirstCallOnly) {
  const auto path = photoOfFaces(1);
  const Outcome first = find(path, {3});
  initModelsAtPath("/no/such/directory/");
  EXPECT_EQ(find(path, {3}).results, first.results);
  EXPECT_THROW(find(path, {4}), cv::Exception);
}

TEST_P(EverySlotExport, givesTheSameFromEverySlot) {
  const auto path = photoOfFaces(3);
  const Outcome one = find(path, {1});
  for (int slot = 2; slot <= 9; ++slot) {
    EXPECT_EQ(find(path, {slot}).results, one.results) << slot;
  }
}

TEST_P(EverySlotExport, normalisesWithTheSizeThatStandsInTheHostsVariables) {
  const std::string path = photoOfFaces(1).string();
  const Outcome apart = find(path);
  int side = 0;
  const Outcome together = call([&](HostVariables host) {
    host.width = &side;
    host.height = &side;
    host.tileWidth = &side; // what the tile export divides by
    host.tileHeight = &side;
    return GetParam().call(path.c_str(), host, {});
  });
  EXPECT_EQ(side, 320);
  EXPECT_EQ(together.results[2], apart.results[2]);
  EXPECT_NEAR(together.results[1], apart.results[1] * 448 / 320, 1e-6);
}

class HeadCentreExport : public EverySlotExport {};

INSTANTIATE_TEST_SUITE_P(Exports, HeadCentreExport,
                         ::testing::Values(kHaarTr02, kDunTr02, kHaarMask02, kDunMask01, kDunMask02,
                                           kDunTile),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(HeadCentreExport, repeatsTheNoseBridgeBitForBit) {
  const Outcome outcome = find(photoOfFaces(5), {1, 333});
  ASSERT_EQ(outcome.count, 51);
  for (std::size_t face = 0; face < 5; ++face) {
    EXPECT_EQ(outcome.results[1 + 10 * face + 8], outcome.results[1 + 10 * face + 4]) << face;
  }
}

TEST_P(HeadCentreExport, sharesItsFirstEightValuesWithTheExportWithoutHeadCentre) {
  const auto path = photoOfFaces(2);
  const Outcome outcome = find(path);
  const Outcome plain =
      detect(GetParam().detector == DetectorKind::cascade ? kInTread01 : kDun01, path);
  for (std::size_t face = 0; face < 2; ++face) {
    for (std::size_t i = 0; i < 8; ++i) {
      EXPECT_EQ(outcome.results[1 + 10 * face + i], plain.results[1 + 8 * face + i]) << face << i;
    }
  }
}

TEST_P(HeadCentreExport, neverReadsTheReservedArgument) {
  const auto path = photoOfFaces(1);
  const Outcome null = find(path);
  SlotOptions options;
  options.reserved = -1;
  EXPECT_TRUE(sameOutputs(find(path, options), null));
}

class NetworkExport : public EverySlotExport {};

INSTANTIATE_TEST_SUITE_P(Exports, NetworkExport, ::testing::ValuesIn(kNetworkExports),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(NetworkExport, keepsTheKindOfNetworkThatASlotsFirstCallLoaded) {
  MadeModels models;
  models.caffeRows = {{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}};
  models.tensorflowRows = {{0.875F, 0.125F, 0.25F, 0.75F, 0.75F}};
  useModels(models);
  const auto path = photo(pictureWithFace());
  EXPECT_EQ(find(path, {1, 0, 1}).results[1], 0.25);
  EXPECT_EQ(find(path, {1, 0, 2}).results[1], 0.25);
  EXPECT_EQ(find(path, {2, 0, 2}).results[1], 0.125);
  EXPECT_EQ(find(path, {2, 0, 1}).results[1], 0.125);
}

class DebugExport : public EverySlotExport {
protected:
  /// The annotated copy of a photograph.
  cv::Mat copyOf(const std::filesystem::path& path, SlotOptions options = {}) const {
    options.outputPath = copyPath();
    find(path, options);
    return cv::imread(copyPath());
  }
  bool isCascade() const { return GetParam().detector == DetectorKind::cascade; }
};

INSTANTIATE_TEST_SUITE_P(Exports, DebugExport, ::testing::Values(kInTreadDebug, kDun01Debug),
                         [](const auto& instance) { return instance.param.name; });

int pixelsOf(const cv::Mat& picture, const cv::Scalar& colour) {
  cv::Mat mask;
  cv::inRange(picture, colour, colour, mask);
  return cv::countNonZero(mask);
}

const cv::Scalar kGreen(0, 255, 0);
const cv::Scalar kLightBlue(255, 200, 0);
const cv::Scalar kRed(0, 0, 255);

TEST_P(DebugExport, returnsWhatTheExportWithoutAnnotationReturns) {
  const auto path = photoOfFaces(2);
  SlotOptions options;
  options.outputPath = copyPath();
  const Outcome debug = find(path, options);
  const Outcome plain = detect(isCascade() ? kInTread01 : kDun01, path);
  EXPECT_EQ(debug.returned, 2);
  EXPECT_EQ(debug.results, plain.results);
  EXPECT_EQ(debug.count, plain.count);
}

TEST_P(DebugExport, drawsBoxesAndLandmarksOnTheScaledPicture) {
  const cv::Mat copy = copyOf(photoOfFaces(1), {1, 896});
  EXPECT_EQ(copy.size(), cv::Size(896, 640));
  EXPECT_GT(pixelsOf(copy, kGreen), 200);
  EXPECT_GT(pixelsOf(copy, isCascade() ? kLightBlue : kRed), 50);
  EXPECT_EQ(pixelsOf(copy, isCascade() ? kRed : kLightBlue), 0);
}

TEST_P(DebugExport, drawsEveryBoxAndNotOnlyThirty) {
  const cv::Mat copy = copyOf(photoOfFaces(35));
  for (const cv::Rect& square : gridSquares(35)) {
    const cv::Rect cell(square.x - 8, square.y - 8, 64, 64);
    EXPECT_GT(pixelsOf(copy(cell), kGreen), 50) << square;
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
  SlotOptions options;
  options.outputPath = "a";
  EXPECT_EQ(find(path, options).returned, 1);
  EXPECT_FALSE(std::filesystem::exists("a"));
  std::filesystem::current_path("/");
}

TEST_P(DebugExport, ignoresACopyThatCannotBeWritten) {
  SlotOptions options;
  options.outputPath = (directory_ / "no/such/copy.png").string();
  EXPECT_EQ(find(photoOfFaces(1), options).returned, 1);
}

TEST_P(DebugExport, hasItsRecordsInPlaceWhenTheCopyFailsAndItsCountOnlyWithTheCascade) {
  const std::string path = photoOfFaces(1).string();
  SlotOptions options;
  options.outputPath = (directory_ / "copy.nosuchformat").string();
  const Outcome outcome = call([&](const HostVariables& host) {
    EXPECT_THROW(GetParam().call(path.c_str(), host, options), cv::Exception);
    return 0;
  });
  EXPECT_EQ(outcome.written(), 9U);
  EXPECT_EQ(outcome.count, isCascade() ? 9 : 1);
}

// Models that see one face and put its chin at `chinHeight`, 1 being the bottom edge of the box.
MadeModels modelsWithChinAt(double chinHeight) {
  MadeModels models = modelsSeeing({{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}});
  models.meanShape[8] = {0.0, chinHeight};
  return models;
}

// Where the chin of the only face lies in its box: this tells which landmarker was at work.
double chinHeight(const Outcome& outcome) {
  EXPECT_EQ(outcome.returned, 1);
  const double middle = (outcome.results[2] + outcome.results[4]) / 2;
  return (outcome.results[8] - middle) / (outcome.results[4] - middle);
}

constexpr double kChinBefore = 0.5;
constexpr double kChinAfter = 0.75;
constexpr double kChinTolerance = 1e-5;

struct LazyCase {
  SlotExport slotExport;
  int slot;
};

void PrintTo(const LazyCase& lazyCase, std::ostream* out) {
  *out << lazyCase.slotExport.name << " in slot " << lazyCase.slot;
}

// A network call loads the slot; then the landmark model changes on disk, and a cascade call
// follows.
class CascadeAfterNetwork : public SlotExportsBase, public ::testing::TestWithParam<LazyCase> {};

std::vector<LazyCase> everyCascadeExportInEverySlot() {
  std::vector<LazyCase> cases;
  for (const SlotExport& slotExport : {kInTread01, kInTreadDebug, kHaarTr02, kHaarMask02}) {
    for (const int slot : {1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 10, -1}) {
      cases.push_back({slotExport, slot});
    }
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Exports, CascadeAfterNetwork,
                         ::testing::ValuesIn(everyCascadeExportInEverySlot()),
                         [](const auto& instance) {
                           const int slot = instance.param.slot;
                           return std::string(instance.param.slotExport.name) + "_slot" +
                                  (slot < 0 ? "Minus" : "") + std::to_string(std::abs(slot));
                         });

TEST_P(CascadeAfterNetwork, keepsTheLandmarkerInSlotsOneToFourAndReplacesItElsewhere) {
  const auto& [slotExport, slot] = GetParam();
  const auto face = photo(pictureWithFace());
  useModels(modelsWithChinAt(kChinBefore));
  ASSERT_NEAR(chinHeight(detect(kDun01, face, {slot})), kChinBefore, kChinTolerance);
  useModels(modelsWithChinAt(kChinAfter));
  const bool keeps = slot >= 1 && slot <= 4 && !slotExport.annotates;
  EXPECT_NEAR(chinHeight(detect(slotExport, face, {slot})), keeps ? kChinBefore : kChinAfter,
              kChinTolerance);
  // Both families share the slot's one landmarker.
  EXPECT_NEAR(chinHeight(detect(kDun01, face, {slot})), keeps ? kChinBefore : kChinAfter,
              kChinTolerance);
}

class Slots : public SlotExportsBase, public ::testing::Test {
protected:
  std::filesystem::path facePhoto() const { return photo(pictureWithFace()); }
};

TEST_F(Slots, networkExportsReplaceTheLandmarkerThatCameWithTheCascade) {
  int slot = 1;
  for (const SlotExport& slotExport :
       {kDun01, kDun01Debug, kDunTr02, kDunMask01, kDunMask02, kDunTile}) {
    useModels(modelsWithChinAt(kChinBefore));
    EXPECT_NEAR(chinHeight(detect(kInTread01, facePhoto(), {slot})), kChinBefore, kChinTolerance);
    useModels(modelsWithChinAt(kChinAfter));
    EXPECT_NEAR(chinHeight(detect(slotExport, facePhoto(), {slot})), kChinAfter, kChinTolerance);
    ++slot;
  }
}

TEST_F(Slots, giveTheNetworkTheColoursInTheOrderOfTheCallsKind) {
  // The box's left edge is the first plane of the network's input, over 1024.
  useModels(modelsSeeing({{1.F, {0.F, {1 / 1024.F, 0, 0}}, 0.F, 1.F, 1.F}}));
  const auto path = photo(cv::Mat(1024, 1024, CV_8UC3, cv::Scalar(130, 180, 140)));
  EXPECT_EQ(detect(kDun02, path, {1, 0, 1}).results[1], 52.0 / 1024);
  EXPECT_EQ(detect(kDun02, path, {1, 0, 2}).results[1], 72.0 / 1024); // the same network
}

TEST_F(Slots, recoverWhenAMissingModelIsThereAtTheNextCall) {
  const auto path = photoOfFaces(1);
  int slot = 1;
  for (const SlotExport& slotExport : {kInTread01, kInTreadDebug, kHaarTr02, kDun01, kDun02,
                                       kDunTr02, kHaarMask02, kDunMask01, kDunTile}) {
    const char* needed =
        slotExport.detector == DetectorKind::cascade ? "model06.xml" : "model02.caffemodel";
    std::filesystem::remove(directory_ / needed);
    EXPECT_THROW(detect(slotExport, path, {slot}), cv::Exception) << slotExport.name;
    useModels(modelsSeeing(gridRows(1)));
    EXPECT_EQ(detect(slotExport, path, {slot}).returned, 1) << slotExport.name;
    ++slot;
  }
}

TEST_F(Slots, recoverFromAMissingLandmarkModelByTheCombinedAndTheNetworkRule) {
  const auto path = photoOfFaces(1);
  int slot = 5;
  for (const SlotExport& slotExport : {kInTread01, kHaarTr02, kHaarMask02, kDun01, kDunMask02}) {
    std::filesystem::remove(directory_ / "model05.yaml");
    EXPECT_THROW(detect(slotExport, path, {slot}), cv::Exception) << slotExport.name;
    useModels(modelsSeeing(gridRows(1)));
    EXPECT_EQ(detect(slotExport, path, {slot}).count, static_cast<int>(1 + slotExport.recordSize))
        << slotExport.name;
    ++slot;
  }
}

TEST_F(Slots, haveBoxesWithoutALandmarkModelAndALandmarkerWhenTheyNeedOne) {
  const auto path = photoOfFaces(1);
  std::filesystem::remove(directory_ / "model05.yaml");
  EXPECT_EQ(detect(kDun02, path, {6}).count, 9);
  useModels(modelsSeeing(gridRows(1)));
  EXPECT_EQ(detect(kDun01, path, {6}).count, 9);
  EXPECT_EQ(detect(kDunTr02, path, {6}).count, 11);
}

// The box-derived export and its rounding.
TEST_F(Slots, takeTheMiddleAndTheBottomOfTheBoxForPoints) {
  useModels(modelsSeeing({{1.F, 10.0F / 256, 20.0F / 256, 41.0F / 256, 61.0F / 256}}));
  const Outcome outcome = detect(kDun02, photo(plainPicture({256, 256})));
  ASSERT_EQ(outcome.count, 9);
  const double expected[] = {10, 20, 41, 61, 25, 40, 25, 61}; // half of 31 and of 41, truncated
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(outcome.results[1 + i], expected[i] / 256) << i;
  }
}

TEST_F(Slots, reportBoxesBeyondThePicture) {
  useModels(modelsSeeing({{1.F, -0.25F, -0.125F, 1.25F, 1.125F}}));
  for (const SlotExport& slotExport : kNetworkExports) {
    const Outcome outcome = detect(slotExport, photo(plainPicture({256, 256})));
    EXPECT_EQ(outcome.returned, 1) << slotExport.name;
    EXPECT_EQ(outcome.results[1], -0.25) << slotExport.name;
    EXPECT_EQ(outcome.results[2], -0.125) << slotExport.name;
    EXPECT_EQ(outcome.results[3], 1.25) << slotExport.name;
    EXPECT_EQ(outcome.results[4], 1.125) << slotExport.name;
  }
}

TEST_F(Slots, dropARowAtTheThresholdAndKeepTheNext) {
  useModels(modelsSeeing({{0.7F, 0.F, 0.F, 0.5F, 0.5F},
                          {kJustAbove, 0.25F, 0.25F, 0.75F, 0.75F},
                          {std::nanf(""), 0.F, 0.F, 0.5F, 0.5F}}));
  for (const SlotExport& slotExport : kNetworkExports) {
    const Outcome outcome = detect(slotExport, photo(plainPicture({256, 256})));
    EXPECT_EQ(outcome.returned, 1) << slotExport.name;
    EXPECT_EQ(outcome.results[1], 0.25) << slotExport.name;
  }
}

// A box of no height leaves the fitter nothing to read.
const std::vector<DetectionRow> kFaceAndFlatBox{{1.F, 0.25F, 0.25F, 0.75F, 0.75F},
                                                {1.F, 0.25F, 0.5F, 0.75F, 0.5F}};

TEST_F(Slots, treatABoxThatCannotBeFittedAsAFailedFit) {
  useModels(modelsSeeing(kFaceAndFlatBox));
  for (const SlotExport& slotExport :
       {kDun01, kDun01Debug, kDunTr02, kDunMask01, kDunMask02, kDunTile}) {
    const Outcome outcome = detect(slotExport, photo(plainPicture({256, 256})));
    EXPECT_EQ(outcome.returned, 2) << slotExport.name;
    EXPECT_EQ(outcome.count, 0) << slotExport.name;
    EXPECT_EQ(outcome.written(), 0U) << slotExport.name;
  }
}

TEST_F(Slots, reportABoxThatCannotBeFittedWhereNothingIsFitted) {
  useModels(modelsSeeing(kFaceAndFlatBox));
  const Outcome outcome = detect(kDun02, photo(plainPicture({256, 256})));
  EXPECT_EQ(outcome.returned, 2);
  EXPECT_EQ(outcome.count, 17);
}

TEST_F(Slots, treatEveryFaceInAPictureOnePixelWideOrHighAsAFailedFit) {
  useModels(modelsSeeing({{1.F, 0.F, 0.F, 1.F, 1.F}}));
  for (const cv::Size size : {cv::Size(1, 200), cv::Size(200, 1)}) {
    const Outcome outcome = detect(kDun01, photo(plainPicture(size)));
    EXPECT_EQ(outcome.returned, 1) << size;
    EXPECT_EQ(outcome.count, 0) << size;
  }
}

TEST_F(Slots, throwWhatTheFitterThrows) {
  useModels(modelsSeeing({{1.F, 0.5F, 0.25F, 0.5F, 0.75F}})); // no width
  EXPECT_THROW(detect(kDun01, photo(plainPicture({256, 256}))), cv::Exception);
  useModels(modelsSeeing({{1.F, 3.F, 0.25F, 3.25F, 0.75F}})); // far outside
  EXPECT_THROW(detect(kDun01, photo(plainPicture({256, 256})), {2}), cv::Exception);
}

TEST_F(Slots, drawTheBoxesOfAFailedFitInTheNetworksDebugExport) {
  useModels(modelsSeeing(kFaceAndFlatBox));
  SlotOptions options;
  options.outputPath = copyPath();
  detect(kDun01Debug, photo(plainPicture({256, 256})), options);
  const cv::Mat copy = cv::imread(copyPath());
  EXPECT_GT(pixelsOf(copy, kGreen), 500);
  EXPECT_EQ(pixelsOf(copy, kRed), 0);
}

} // namespace
} // namespace qorocv::testing
