// The person segmentation model: which pixels of a picture belong to a person.
#pragma once

#include "segmentation/pixel_block.h"

#include <opencv2/core.hpp>
#include <opencv2/dnn.hpp>

#include <string>

namespace qorocv {

/// A loaded network and how it wants its pictures. Not safe for two threads at once: `net`,
/// `sourceSize` and `busy` change with every picture.
///
/// The network takes "x", 1 x 3 x 192 x 192, and answers with "save_infer_model/scale_0.tmp_1",
/// 1 x K x 192 x 192: a score per class and pixel. Class 1 is the person.
class PPHS {
public:
  /// Reads the network; the format follows from the file's name. Backend and target are those of
  /// cv::dnn. Throws cv::Exception where the file cannot be read.
  PPHS(const std::string& path, int backend, int target);

  /// The picture as the network takes it: stretched to 192 x 192, every channel from -1 (0) to 1
  /// (255), in the order in which the picture holds them. Notes the picture's size.
  cv::Mat preprocess(const cv::Mat& image);

  /// The person mask of an 8-bit BGR picture, stretched as the picture was: 192 x 192 pixels of
  /// four bytes, continuous, (255, 255, 255, 255) for a person and (0, 0, 0, 255) for the
  /// background, which also has the ties. Throws cv::Exception where the network fails.
  PersonMask infer(const cv::Mat& image);

  cv::dnn::Net net;
  std::string modelPath;
  cv::Scalar mean{0.5, 0.5, 0.5, 0}; // subtracted from values of 0 to 1
  cv::Scalar std{0.5, 0.5, 0.5, 0};  // what is left is divided by it
  cv::Size inputSize{QOROCV460_MASK_SIDE, QOROCV460_MASK_SIDE};
  cv::Size sourceSize; // of the latest picture
  std::string inputName = "x";
  std::string outputName = "save_infer_model/scale_0.tmp_1";
  int backendId;
  int targetId;
  bool busy = false; // while infer runs
};

} // namespace qorocv
