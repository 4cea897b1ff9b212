// A host that calls neither of the two functions that say where the models lie: they are looked for
// under their public names in the process's current directory.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/public_model_names.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

namespace qorocv::testing {
namespace {

class ModelsUnset : public ::testing::Test {
protected:
  void SetUp() override {
    face_ = writePicture(directory_ / "face.png", pictureWithFace());
    std::filesystem::current_path(directory_.path());
  }
  void TearDown() override { std::filesystem::current_path("/"); }

  TemporaryDirectory directory_;
  std::filesystem::path face_;
};

class SlotExportWithModelsUnset : public ModelsUnset,
                                  public ::testing::WithParamInterface<SlotExport> {};

INSTANTIATE_TEST_SUITE_P(Exports, SlotExportWithModelsUnset, ::testing::ValuesIn(kSlotExports),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(SlotExportWithModelsUnset, throwsWhereTheCurrentDirectoryHasNone) {
  EXPECT_THROW(detect(GetParam(), face_), cv::Exception);
}

TEST_P(SlotExportWithModelsUnset, findsTheFaceWithThoseOfTheCurrentDirectory) {
  writePublicMadeModels(directory_.path());
  EXPECT_EQ(detect(GetParam(), face_).returned, 1);
}

TEST_F(ModelsUnset, makesTheSharedPairsExportsThrow) {
  EXPECT_THROW(detect(findQORFaces, face_), cv::Exception);
  EXPECT_THROW(detect(processImage, face_), cv::Exception);
}

TEST_F(ModelsUnset, makesInitDetectorThrow) {
  EXPECT_THROW(initDetector(), cv::Exception);
}

TEST_F(ModelsUnset, leavesTheSharedPairsExportsThoseOfTheCurrentDirectory) {
  writePublicMadeModels(directory_.path());
  EXPECT_EQ(detect(findQORFaces, face_).returned, 1);
  EXPECT_EQ(detect(processImage, face_).returned, 1);
}

} // namespace
} // namespace qorocv::testing
