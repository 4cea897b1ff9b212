// The seven model files: where each one lies.
#pragma once

#include <array>
#include <cstddef>
#include <ostream>
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

constexpr std::size_t kModelCount = 7;

/// One path per model file, in the narrow form that OpenCV's file functions take. A bare file name
/// is relative to the process's current directory.
class ModelRegistry {
public:
  /// Holds the bare public file names.
  ModelRegistry();

  const std::string& path(Model model) const { return paths_[static_cast<std::size_t>(model)]; }

  /// The path for a reader. It leads to no file where a named pipe has the model's name: a reader
  /// would wait for whoever writes into it.
  std::string readablePath(Model model) const;

  /// Places models 01 to 06 beside the library under their public names, counts those that cannot
  /// be opened for reading (0 to 6) and writes the report file. Model 07 keeps its path. Where the
  /// report file cannot be created the process ends, with a message on standard error and exit
  /// code 1.
  int placeBesideLibrary();

  /// Places all seven models at `directory`, which is set before the short names as it is: it ends
  /// in a separator. Returns the models that cannot be opened as decimal digits, model 01 the
  /// rightmost; 0 when all can be.
  int placeAt(const std::string& directory);

private:
  void writeReport(std::ostream& report, const void* modulePathBuffer) const;

  std::array<std::string, kModelCount> paths_;
};

/// The process's one registry. Not locked: hosts set it before they start detection threads.
ModelRegistry& modelRegistry();

} // namespace qorocv
