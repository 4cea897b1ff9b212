// A fitter that returns fewer sets than it was given boxes. OpenCV's own never does, so that no host can
// make it: here a slot gets one that does, and the exports are called around it.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "models/detector_slots.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

namespace qorocv::testing {
namespace {

using Sets = std::vector<std::vector<cv::Point2f>>;

/// Fits the first of all boxes only: each landmark lies on the box's corner.
class FitterOfOne : public cv::face::Facemark {
public:
  void loadModel(cv::String /*model*/) override {}
  bool fit(cv::InputArray /*image*/, cv::InputArray faces,
           cv::OutputArrayOfArrays landmarks) override {
    const cv::Rect box = faces.getMat().at<cv::Rect>(0);
    auto& sets = *static_cast<Sets*>(landmarks.getObj());
    sets.assign(1, {68, cv::Point2f(box.tl())});
    return true;
  }
};

class FewerLandmarkSets : public ::testing::TestWithParam<SlotExport> {
protected:
  void SetUp() override {
    MadeModels models;
    models.caffeRows = {{0.875F, 0.25F, 0.25F, 0.5F, 0.5F},
                        {0.875F, 0.5F, 0.25F, 0.75F, 0.5F},
                        {0.875F, 0.5F, 0.5F, 0.75F, 0.75F}};
    writeMadeModels(directory_.path(), models);
    ASSERT_EQ(initModelsAtPath(directory_.asPrefix().c_str()), 0);
    const auto photo = writePicture(directory_ / "photo.png", plainPicture({256, 256}));
    ASSERT_EQ(detect(GetParam(), photo).count, 1 + 3 * recordSize()); // the slot is loaded
    selectSlot(1).landmarker = cv::makePtr<FitterOfOne>();
    outcome_ = detect(GetParam(), photo);
  }
  static int recordSize() { return static_cast<int>(GetParam().recordSize); }

  TemporaryDirectory directory_;
  Outcome outcome_;
};

INSTANTIATE_TEST_SUITE_P(Exports, FewerLandmarkSets,
                         ::testing::Values(kDun01, kDun01Debug, kDunTr02, kDunMask01, kDunMask02,
                                           kDunTile),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(FewerLandmarkSets, limitTheRecordsToTheirNumber) {
  EXPECT_EQ(outcome_.results[0], 1.0);
  EXPECT_EQ(outcome_.count, 1 + recordSize());
  EXPECT_EQ(outcome_.written(), static_cast<std::size_t>(1 + recordSize()));
}

TEST_P(FewerLandmarkSets, belongToTheFirstBoxes) {
  EXPECT_EQ(outcome_.results[1], 0.25);
  EXPECT_EQ(outcome_.results[5], 0.25); // the nose bridge, on the box's left edge
}

TEST_P(FewerLandmarkSets, leaveTheReturnValueTheNumberOfAllBoxes) {
  EXPECT_EQ(outcome_.returned, 3);
}

} // namespace
} // namespace qorocv::testing
