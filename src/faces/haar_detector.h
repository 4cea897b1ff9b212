// Face boxes from a Haar cascade.
#pragma once

#include <opencv2/objdetect.hpp>

#include <vector>

namespace qorocv {

/// Boxes of the faces in an 8-bit BGR `picture`, in its pixels, in the cascade's own order. Throws
/// cv::Exception for an empty cascade. The handle shares the caller's cascade.
std::vector<cv::Rect> detectFacesHaar(cv::CascadeClassifier cascade, const cv::Mat& picture);

} // namespace qorocv
