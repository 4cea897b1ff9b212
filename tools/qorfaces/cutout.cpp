#include "cutout.h"

#include <opencv2/imgproc.hpp>

#include <qorocv460/qorocv460.h>

namespace qorfaces {

cv::Mat cutOut(const cv::Mat& picture, const std::vector<unsigned char>& mask) {
  cv::Mat pixels(QOROCV460_MASK_SIDE, QOROCV460_MASK_SIDE, CV_8UC4);
  std::copy(mask.begin(), mask.end(), pixels.data);
  cv::Mat alpha;
  cv::extractChannel(pixels, alpha, 0);
  cv::resize(alpha, alpha, picture.size(), 0, 0, cv::INTER_LINEAR);
  cv::Mat channels[4];
  cv::split(picture, channels);
  channels[3] = alpha;
  cv::Mat result;
  cv::merge(channels, 4, result);
  return result;
}

} // namespace qorfaces
