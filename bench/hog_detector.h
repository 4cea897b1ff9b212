// dlib's frontal face detector, behind a door of its own: its headers take a compiler half a minute.
#pragma once

#include <opencv2/core/mat.hpp>

#include <cstddef>
#include <memory>

namespace qorocv::bench {

class HogDetector {
public:
  HogDetector();
  ~HogDetector();

  /// The number of faces in an 8-bit picture of one channel, at its own size.
  std::size_t detect(const cv::Mat& grey);

private:
  struct Detector;
  std::unique_ptr<Detector> detector_;
};

} // namespace qorocv::bench
