#include "call/photograph.h"

#include "arithmetic/processor_arithmetic.h"
#include "call/ordinary_jpeg.h"
#include "platform/platform.h"
#include "qorocv460/qorocv460.h"

#include <opencv2/core/utility.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <clocale>
#include <iostream>

namespace qorocv {

namespace {

// The search answers a file that it cannot find with this one code, and a host needs no exception
// to learn that a path leads nowhere.
std::string findPhotograph(const std::string& localPath) {
  if (isNamedPipe(localPath)) {
    return {};
  }
  try {
    return cv::samples::findFile(localPath, true, false);
  } catch (const cv::Exception& error) {
    if (error.code != cv::Error::StsError) {
      throw;
    }
    return {};
  }
}

} // namespace

void adoptUserLocale() {
  std::setlocale(LC_ALL, "");
}

cv::Mat readPhotograph(const std::string& localPath) {
  // OpenCV's first loop of the process lies behind this line.
  useSystemThreads();
  const std::string file = findPhotograph(localPath);
  cv::Mat picture = readOrdinaryJpeg(file);
  if (picture.empty() && !file.empty()) {
    picture = cv::imread(file, cv::IMREAD_COLOR);
  }
  if (picture.empty()) {
    std::cout << "Could not open or find the image" << std::endl;
  }
  return picture;
}

Opened openPhotograph(const HostCall& call, const char* outputPath) {
  if (!isComplete(call)) {
    return {{}, QOROCV460_REJECTED, {}};
  }
  adoptUserLocale();
  const std::string imagePath = utf8ToLocalePath(call.imagePath);
  const std::string copyPath = utf8ToLocalePath(outputPath);
  return {readPhotograph(imagePath), QOROCV460_UNREADABLE, copyPath};
}

void reportSize(const cv::Mat& photograph, int* width, int* height) {
  *width = photograph.cols;
  *height = photograph.rows;
}

float scaleToMaxSide(cv::Mat& picture, int maxSide) {
  const int longerSide = std::max(picture.cols, picture.rows);
  const int target = maxSide < 1 ? longerSide : maxSide;
  const float scale = static_cast<float>(target) / static_cast<float>(longerSide);
  const cv::Size size(truncateToInt(static_cast<float>(picture.cols) * scale),
                      truncateToInt(static_cast<float>(picture.rows) * scale));
  cv::resize(picture, picture, size, 0, 0, cv::INTER_LINEAR);
  return scale;
}

} // namespace qorocv
