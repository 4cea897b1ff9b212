#include "segmentation/pixel_block.h"

#include <opencv2/imgproc.hpp>

#include <cstring>

namespace qorocv {

void giveFourChannels(cv::Mat& picture) {
  if (picture.channels() == 3) {
    cv::cvtColor(picture, picture, cv::COLOR_BGR2RGBA);
  } else if (picture.channels() == 1) {
    cv::cvtColor(picture, picture, cv::COLOR_GRAY2BGRA);
  }
}

ViewImage viewImage(const cv::Mat& photograph) {
  ViewImage view;
  cv::resize(photograph, view, cv::Size(QOROCV460_VIEW_SIDE, QOROCV460_VIEW_SIDE), 0, 0,
             cv::INTER_LINEAR);
  giveFourChannels(view);
  return view;
}

void copyPixels(const cv::Mat& picture, unsigned char* buffer, std::size_t size) {
  if (picture.empty()) {
    return;
  }
  CV_Assert(picture.isContinuous() && picture.total() * picture.elemSize() == size);
  std::memcpy(buffer, picture.data, size);
}

} // namespace qorocv
