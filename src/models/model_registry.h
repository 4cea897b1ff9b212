// The seven model files: where each one lies.
#pragma once

#include "models/model_names.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>

namespace qorocv {

/// The model files in the order of their numbers, 01 to 07.
enum class Model : std::size_t {
  caffeDescription,   // 01, Caffe face network, text
  caffeWeights,       // 02, Caffe face network, weights
  tensorflowGraph,    // 03, TensorFlow face network, text graph
  tensorflowWeights,  // 04, TensorFlow face network, weights
  landmarks,          // 05, LBF landmark model
  cascade,            // 06, frontal-face Haar cascade
  personSegmentation, // 07, ONNX person segmentation network
};

/// Models 01 to 06: hosts that place the models beside the library bring the segmentation model by
/// placeAt, or leave it to the current directory.
constexpr std::size_t kModelsBesideLibrary = kModelCount - 1;

/// One path per model file, in the narrow form that OpenCV's file functions take. A bare file name
/// is relative to the process's current directory.
class ModelRegistry {
public:
  /// Holds the bare public file names.
  ModelRegistry();

  const std::string& path(Model model) const { return paths_[static_cast<std::size_t>(model)]; }

  /// Places models 01 to 06 under their public names beside the file `library`, and leaves their
  /// paths as they are where it is empty. Model 07 keeps its path. Returns how many of the six
  /// cannot be opened for reading.
  int placeBeside(const std::filesystem::path& library);

  /// Places all seven models at `directory`, which is set before the short names as it is: it ends
  /// in a separator. Returns the models that cannot be opened as decimal digits, model 01 the
  /// rightmost; 0 when all can be.
  int placeAt(const std::string& directory);

private:
  std::array<std::string, kModelCount> paths_;
};

/// The process's one registry. Not locked: hosts set it before they start detection threads.
ModelRegistry& modelRegistry();

} // namespace qorocv
