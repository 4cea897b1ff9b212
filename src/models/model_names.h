// What the seven model files are called, by the numbers of models/model_registry.h.
#pragma once

#include <array>
#include <cstddef>

namespace qorocv {

constexpr std::size_t kModelCount = 7;

struct ModelFileName {
  /// Of the public name.
  const char* stem;
  const char* extension;
  /// For initModelsAtPath.
  const char* shortName;
};

inline constexpr std::array<ModelFileName, kModelCount> kModelFileNames{{
    {"deploy", "prototxt", "model01.prototxt"},
    {"res10_300x300_ssd_iter_140000_fp16", "caffemodel", "model02.caffemodel"},
    {"opencv_face_detector", "pbtxt", "model03.pbtxt"},
    {"opencv_face_detector_uint8", "pb", "model04.pb"},
    {"lbfmodel", "yaml", "model05.yaml"},
    {"haarcascade_frontalface_alt", "xml", "model06.xml"},
    {"human_segmentation_pphumanseg_2023mar", "onnx", "model07.onnx"},
}};

} // namespace qorocv
