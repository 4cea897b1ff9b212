// The cascade of a file, whichever of the engines it takes.
#pragma once

#include "faces/cascade_engine.h"

#include <opencv2/objdetect.hpp>

#include <memory>
#include <vector>

namespace qorocv {

/// A frontal-face cascade or none. Copies share what was read.
class FaceCascade {
public:
  /// Empty: none.
  FaceCascade() = default;

  /// A cascade that OpenCV detects with, whatever its kind; empty where that one is.
  explicit FaceCascade(const cv::CascadeClassifier& classifier) : classifier_(classifier) {}

  /// Reads the cascade under the first node of its file: into the engine where it knows the kind,
  /// otherwise into OpenCV. Empty where neither can read it.
  static FaceCascade read(const cv::FileNode& cascade);

  bool empty() const { return !engine_ && classifier_.empty(); }

  /// Boxes of the faces in an 8-bit picture of one channel, in its pixels, in the order in which
  /// OpenCV finds them on one thread. Throws cv::Exception for an empty cascade.
  std::vector<cv::Rect> detect(const cv::Mat& grey) const;

private:
  std::shared_ptr<const CascadeEngine> engine_;
  cv::CascadeClassifier classifier_; // empty beside an engine
};

} // namespace qorocv
