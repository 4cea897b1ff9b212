#pragma once

#include <opencv2/core.hpp>

#include <array>
#include <filesystem>
#include <vector>

namespace qorocv::testing {

// File names of the made models inside their directory.
inline constexpr const char* kMadeCaffeText = "model01.prototxt";
inline constexpr const char* kMadeCaffeWeights = "model02.caffemodel";
inline constexpr const char* kMadeTensorflowText = "model03.pbtxt";
inline constexpr const char* kMadeTensorflowWeights = "model04.pb";
inline constexpr const char* kMadeLandmarks = "model05.yaml";
inline constexpr const char* kMadeCascade = "model06.xml";
inline constexpr const char* kMadeSegmentation = "model07.onnx";

// One number of a detection network's output. The network answers
//   constant + weights[0] * max(plane 0) + weights[1] * max(plane 1) + weights[2] * max(plane 2)
// over the planes of its 1x3x300x300 input. With zero weights the constant comes out bit for bit,
// NaN included. With weights a test sees what was fed in; weights and values that are short
// binary fractions (1/1024, say) stay exact.
struct RowValue {
  // Not explicit, so that a row can be written as plain numbers.
  RowValue(float value, std::array<float, 3> planeWeights = {})
      : constant(value), weights(planeWeights) {}

  float constant;
  std::array<float, 3> weights;
};

// One row of a detection network's output, [image, label, confidence, left, top, right, bottom];
// the box in fractions of the picture's width and height. Nothing is clamped or checked.
struct DetectionRow {
  RowValue confidence;
  RowValue left;
  RowValue top;
  RowValue right;
  RowValue bottom;
  RowValue label = 1.0F;
  RowValue image = 0.0F;
};

// 68 landmarks relative to a face box: (0, 0) is its centre, -1 and 1 are its edges.
using LandmarkShape = std::array<cv::Point2d, 68>;

// A face looking straight ahead, in multiples of 1/64: 0-16 jaw with the chin at 8, 17-26 brows,
// 27-30 nose bridge, 31-35 nostrils, 36-47 eyes, 48-67 lips. Painted marks have this face.
LandmarkShape defaultMeanShape();

// Score of one class at one pixel: bias + sum over the three input channels of weight * value.
struct PixelScore {
  std::array<float, 3> channelWeights{};
  float bias = 0.0F;
};

// What the made models answer. The rows of the two networks differ by default, so that it shows
// which one was loaded. No rows stands for "no face": one row without confidence and with an
// empty box, as a network's output cannot be empty.
struct MadeModels {
  std::vector<DetectionRow> caffeRows{{0.875F, 0.25F, 0.25F, 0.75F, 0.75F}};
  std::vector<DetectionRow> tensorflowRows{{0.75F, 0.125F, 0.25F, 0.625F, 0.875F}};
  // Fitted to a box, landmark i is exactly
  //   (x + width / 2 + shape[i].x * width / 2, y + height / 2 + shape[i].y * height / 2)
  // for shapes in short binary fractions. The points must not all lie on the line x - y = const,
  // where the fitter would divide zero by zero. The fitter does read pixels of the picture, they
  // only have no influence.
  LandmarkShape meanShape = defaultMeanShape();
  // The segmentation network: 1x3x192x192 "x" to 1x2x192x192 "save_infer_model/scale_0.tmp_1",
  // channel 0 background and channel 1 person. By default pixels with a positive sum are person.
  PixelScore background{};
  PixelScore person{{1.0F, 1.0F, 1.0F}, 0.0F};
};

// Writes the seven files, together about 100 KB, into the directory, which is created if missing.
// The cascade is always the same: it finds the marks of made_pictures.h. Throws
// std::runtime_error if a file cannot be written.
void writeMadeModels(const std::filesystem::path& directory, const MadeModels& models = {});

} // namespace qorocv::testing
