// The made models under the names by which the world knows the real ones.
#pragma once

#include "make_models/made_models.h"

#include <filesystem>

namespace qorocv::testing {

struct PublicModelName {
  const char* made;
  const char* published;
};

inline constexpr PublicModelName kPublicModelNames[] = {
    {kMadeCaffeText, "deploy.prototxt"},
    {kMadeCaffeWeights, "res10_300x300_ssd_iter_140000_fp16.caffemodel"},
    {kMadeTensorflowText, "opencv_face_detector.pbtxt"},
    {kMadeTensorflowWeights, "opencv_face_detector_uint8.pb"},
    {kMadeLandmarks, "lbfmodel.yaml"},
    {kMadeCascade, "haarcascade_frontalface_alt.xml"},
    {kMadeSegmentation, "human_segmentation_pphumanseg_2023mar.onnx"},
};

inline void writePublicMadeModels(const std::filesystem::path& directory) {
  writeMadeModels(directory);
  for (const PublicModelName& name : kPublicModelNames) {
    std::filesystem::rename(directory / name.made, directory / name.published);
  }
}

} // namespace qorocv::testing
