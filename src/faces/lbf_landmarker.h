// OpenCV's FacemarkLBF on an engine of our own: the same landmarks to the last bit, much faster,
// and without a word on standard output.
#pragma once

#include "faces/lbf_model.h"

#include <opencv2/face.hpp>

#include <memory>

namespace qorocv {

/// A landmarker without a model until loadModel. A model file of another layout than our reader
/// knows (lbf_reader.h) makes it one of OpenCV's.
class LbfLandmarker final : public cv::face::Facemark {
public:
  LbfLandmarker();

  /// Throws cv::Exception where the file cannot be read: StsBadArg, as OpenCV does, for a missing
  /// one, and StsParseError for a damaged one. The landmarker then has no model.
  void loadModel(cv::String path) override;

  /// Fits 68 points to each of `boxes`, a list of cv::Rect, in an 8-bit picture; `landmarks` is a
  /// std::vector<LandmarkSet>. False, and `landmarks` as they were, for an empty list and for boxes
  /// that leave nothing to read (lbf_surroundings.h). Throws cv::Exception where OpenCV does, with its
  /// codes.
  bool fit(cv::InputArray picture, cv::InputArray boxes,
           cv::OutputArrayOfArrays landmarks) override;

private:
  std::shared_ptr<const LbfModel> model_;

  /// Fits where there is no model of ours.
  cv::Ptr<cv::face::Facemark> opencv_;
  bool hasOpenCvsModel_ = false;
};

} // namespace qorocv
