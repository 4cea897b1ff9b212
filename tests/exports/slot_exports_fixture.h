// What the tests of the per-slot exports share: made models in a directory of their own, and
// photographs in which cascade and networks see the same faces.
#pragma once

#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace qorocv::testing {

inline constexpr SlotExport kNetworkExports[] = {kDun01,     kDun01Debug, kDun02,  kDunTr02,
                                                 kDunMask01, kDunMask02,  kDunTile};

/// Both networks see the same faces.
inline MadeModels modelsSeeing(const std::vector<DetectionRow>& rows) {
  MadeModels models;
  models.caffeRows = rows;
  models.tensorflowRows = rows;
  return models;
}

/// `count` boxes of 32 x 32 pixels on the 448 x 320 grid picture, seven in a row.
inline std::vector<DetectionRow> gridRows(int count) {
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
  std::filesystem::path copyPath() const { return directory_ / "copy.png"; }

  TemporaryDirectory directory_;
};

/// A test of one export, the parameter.
class OneSlotExport : public SlotExportsBase, public ::testing::TestWithParam<SlotExport> {
protected:
  Outcome find(const std::filesystem::path& path, const CallOptions& options = {},
               int capacity = 1) const {
    return detect(GetParam(), path, options, capacity);
  }
  std::size_t recordSize() const { return GetParam().recordSize; }
  bool isCascade() const { return GetParam().detector == DetectorKind::cascade; }
};

/// A test's parameter in its name.
inline std::string nameOf(const ::testing::TestParamInfo<SlotExport>& instance) {
  return instance.param.name;
}

} // namespace qorocv::testing
