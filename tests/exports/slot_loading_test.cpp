// When a slot loads its detectors: told by models that change on disk between two calls.
#include "exports/slot_exports_fixture.h"

#include <cstdlib>

namespace qorocv::testing {
namespace {

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

TEST_P(CascadeAfterNetwork, keepsTheNetworksLandmarkerByTheRuleOfItsExportInItsSlot) {
  const auto& [slotExport, slot] = GetParam();
  const auto face = photo(pictureWithFace());
  useModels(modelsWithChinAt(kChinBefore));
  ASSERT_NEAR(chinHeight(detect(kDun01, face, inSlot(slot))), kChinBefore, kChinTolerance);
  useModels(modelsWithChinAt(kChinAfter));
  const bool keeps = slot >= 1 && slot <= 4 && !slotExport.annotates;
  EXPECT_NEAR(chinHeight(detect(slotExport, face, inSlot(slot))), keeps ? kChinBefore : kChinAfter,
              kChinTolerance);
  // Both families share the slot's one landmarker.
  EXPECT_NEAR(chinHeight(detect(kDun01, face, inSlot(slot))), keeps ? kChinBefore : kChinAfter,
              kChinTolerance);
}

class SlotLoading : public SlotExportsBase, public ::testing::Test {
protected:
  std::filesystem::path facePhoto() const { return photo(pictureWithFace()); }
};

TEST_F(SlotLoading, byANetworkExportReplacesTheLandmarkerThatCameWithTheCascade) {
  int slot = 1;
  for (const SlotExport& slotExport :
       {kDun01, kDun01Debug, kDunTr02, kDunMask01, kDunMask02, kDunTile}) {
    useModels(modelsWithChinAt(kChinBefore));
    EXPECT_NEAR(chinHeight(detect(kInTread01, facePhoto(), inSlot(slot))), kChinBefore,
                kChinTolerance);
    useModels(modelsWithChinAt(kChinAfter));
    EXPECT_NEAR(chinHeight(detect(slotExport, facePhoto(), inSlot(slot))), kChinAfter,
                kChinTolerance);
    ++slot;
  }
}

TEST_F(SlotLoading, findsAMissingModelThatIsThereAtTheNextCall) {
  const auto path = photoOfFaces(1);
  int slot = 1;
  for (const SlotExport& slotExport : {kInTread01, kInTreadDebug, kHaarTr02, kDun01, kDun02,
                                       kDunTr02, kHaarMask02, kDunMask01, kDunTile}) {
    const char* needed =
        slotExport.detector == DetectorKind::cascade ? kMadeCascade : kMadeCaffeWeights;
    std::filesystem::remove(directory_ / needed);
    EXPECT_THROW(detect(slotExport, path, inSlot(slot)), cv::Exception) << slotExport.name;
    useModels(modelsSeeing(gridRows(1)));
    EXPECT_EQ(detect(slotExport, path, inSlot(slot)).returned, 1) << slotExport.name;
    ++slot;
  }
}

// A slot whose next load is the combined rule's or the network's: both make a fresh landmarker.
TEST_F(SlotLoading, recoversFromAMissingLandmarkModel) {
  const auto path = photoOfFaces(1);
  int slot = 5;
  for (const SlotExport& slotExport : {kInTread01, kHaarTr02, kHaarMask02, kDun01, kDunMask02}) {
    std::filesystem::remove(directory_ / kMadeLandmarks);
    EXPECT_THROW(detect(slotExport, path, inSlot(slot)), cv::Exception) << slotExport.name;
    useModels(modelsSeeing(gridRows(1)));
    EXPECT_EQ(detect(slotExport, path, inSlot(slot)).count,
              static_cast<int>(1 + slotExport.recordSize))
        << slotExport.name;
    ++slot;
  }
}

TEST_F(SlotLoading, ofAnExportWithoutLandmarksNeedsNoLandmarkModel) {
  const auto path = photoOfFaces(1);
  std::filesystem::remove(directory_ / kMadeLandmarks);
  EXPECT_EQ(detect(kDun02, path).count, 9);
}

TEST_F(SlotLoading, makesALandmarkerForTheFirstExportThatNeedsOne) {
  const auto path = photoOfFaces(1);
  detect(kDun02, path); // loads the network alone
  EXPECT_EQ(detect(kDun01, path).count, 9);
  EXPECT_EQ(detect(kDunTr02, path).count, 11);
}

} // namespace
} // namespace qorocv::testing
