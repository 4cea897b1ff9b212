#include "cutout.h"

#include "picture_file.h"

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <qorocv460/qorocv460.h>
#include <stdexcept>

namespace qorfaces {

namespace client = qorocv::client;

namespace {

// The picture (8-bit BGR) with the mask, stretched to it, for its alpha.
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

// The part of a picture that a closer mask covers.
cv::Rect closeUp(const double* cropBox, const cv::Size& picture) {
  const auto pixels = [](double fraction, int side) {
    return static_cast<int>(std::lround(fraction * side));
  };
  const cv::Rect part(pixels(cropBox[0], picture.width), pixels(cropBox[1], picture.height),
                      pixels(cropBox[2], picture.width), pixels(cropBox[3], picture.height));
  return part & cv::Rect({}, picture);
}

cv::Mat cutOutCloseUp(const cv::Mat& picture, const client::MaskedPhoto& masked) {
  if (masked.photo.found != 1) {
    throw std::runtime_error("a closer mask takes exactly one face; there are " +
                             std::to_string(masked.photo.found));
  }
  const cv::Rect part = closeUp(masked.masks.cropBox, picture.size());
  if (part.empty()) {
    throw std::runtime_error("the only face sticks out of the photograph: no closer mask of it");
  }
  return cutOut(picture(part), masked.masks.cropMask);
}

} // namespace

void writeCutOuts(const std::string& photo, const Settings& settings,
                  const client::MaskedPhoto& masked) {
  const cv::Mat picture = readPicture(photo);
  if (picture.empty()) {
    throw std::runtime_error("the photograph cannot be read again to cut out the person");
  }
  if (!settings.mask.empty()) {
    writePicture(settings.mask, cutOut(picture, masked.masks.mask));
  }
  if (!settings.cropMask.empty()) {
    writePicture(settings.cropMask, cutOutCloseUp(picture, masked));
  }
}

} // namespace qorfaces
