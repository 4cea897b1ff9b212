#include "faces/haar_detector.h"

#include <opencv2/imgproc.hpp>

namespace qorocv {

std::vector<cv::Rect> detectFacesHaar(const FaceCascade& cascade, const cv::Mat& picture) {
  cv::Mat grey;
  cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY, 0);
  return cascade.detect(grey);
}

} // namespace qorocv
