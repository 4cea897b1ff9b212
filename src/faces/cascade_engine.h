// Cascade detection with the results of cv::CascadeClassifier, several times as fast.
#pragma once

#include "faces/cascade_model.h"
#include "faces/instruction_set.h"
#include "faces/placed_stumps.h"

#include <opencv2/core/mat.hpp>

#include <memory>
#include <vector>

namespace qorocv {

/// A compiled cascade, ready to be used by several threads at a time. Pictures have 8 bits and one
/// channel, of any size and stride. What is found depends on nothing but the picture: not on the
/// number of OpenCV's threads, which share the work, nor on the instruction set, which has to be
/// available.
class CascadeEngine {
public:
  explicit CascadeEngine(CascadeModel model);

  /// What OpenCV 4.6 finds on one thread with detectMultiScale(picture, faces, 1.1, 3, 0,
  /// cv::Size(), cv::Size()): the same boxes in the same order.
  std::vector<cv::Rect> detect(const cv::Mat& picture, InstructionSet set) const;

  /// The boxes of all windows that pass the cascade, before they are grouped; some may reach over
  /// the picture's border by a pixel. OpenCV gives these, clipped, for no neighbours instead of 3.
  std::vector<cv::Rect> candidates(const cv::Mat& picture, InstructionSet set) const;

private:
  CascadeModel model_;
  std::vector<PlacedStump> inPatch_; // for windows that were copied, which is the same everywhere
};

/// The engine for the cascade of a file; null where compileCascade knows none,
/// and where no kernels were compiled.
std::shared_ptr<const CascadeEngine> makeCascadeEngine(const cv::FileNode& cascade);

} // namespace qorocv
