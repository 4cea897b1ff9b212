// The real models and photographs that lie beside a checkout, where there are any.
#pragma once

#include "qorocv460/qorocv460.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace qorocv::testing {

/// A photograph beside the checkout.
inline std::filesystem::path realPhoto(const char* name) {
  return std::filesystem::path(QOROCV460_SHARED_DIR) / "photos" / name;
}

inline bool haveRealFiles() {
  return std::filesystem::exists(std::filesystem::path(QOROCV460_SHARED_DIR) / "models" /
                                 "lbfmodel.yaml") &&
         std::filesystem::exists(realPhoto("couple.jpg"));
}

/// Makes `directory` a directory of the real models under their short names. Windows gives links to
/// administrators only.
inline void linkRealModels(const std::filesystem::path& directory) {
  constexpr const char* names[][2] = {
      {"deploy.prototxt", "model01.prototxt"},
      {"res10_300x300_ssd_iter_140000_fp16.caffemodel", "model02.caffemodel"},
      {"opencv_face_detector.pbtxt", "model03.pbtxt"},
      {"opencv_face_detector_uint8.pb", "model04.pb"},
      {"lbfmodel.yaml", "model05.yaml"},
      {"haarcascade_frontalface_alt.xml", "model06.xml"},
      {"human_segmentation_pphumanseg_2023mar.onnx", "model07.onnx"},
  };
  for (const auto& name : names) {
    const auto model = std::filesystem::path(QOROCV460_SHARED_DIR) / "models" / name[0];
#ifdef _WIN32
    std::filesystem::copy_file(model, directory / name[1]);
#else
    std::filesystem::create_symlink(model, directory / name[1]);
#endif
  }
}

/// Tests with the real models; skipped where there are none.
class RealModelsTest : public ::testing::Test {
protected:
  void SetUp() override {
    if (!haveRealFiles()) {
      GTEST_SKIP() << "no real models and photographs beside the checkout";
    }
    linkRealModels(models_.path());
    ASSERT_EQ(initModelsAtPath(models_.asPrefix().c_str()), 0);
  }

  TemporaryDirectory models_;
};

} // namespace qorocv::testing
