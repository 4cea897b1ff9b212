// Our way of reading JPEG files against OpenCV's: any bytes, left to it or read alike.
#include "call/ordinary_jpeg.h"
#include "memory_file.h"

#include <opencv2/imgcodecs.hpp>

using namespace qorocv;
using namespace qorocv::fuzzing;

namespace {

constexpr std::uint32_t kMostPixels = 1U << 20U; // beyond it lies only more of the same

/// Whether any bytes in it may be a frame of more pixels.
bool mayBeLarge(const std::uint8_t* data, std::size_t size) {
  for (std::size_t i = 0; i + 9 <= size; ++i) {
    const std::uint32_t height = data[i + 5] * 256U + data[i + 6];
    const std::uint32_t width = data[i + 7] * 256U + data[i + 8];
    if (data[i] == 0xFF && (data[i + 1] & 0xF0U) == 0xC0 && height * width > kMostPixels) {
      return true;
    }
  }
  return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (mayBeLarge(data, size)) {
    return 0;
  }
  static const MemoryFile file;
  file.keep(data, size);
  const cv::Mat picture = readOrdinaryJpeg(file.path());
  if (!picture.empty()) {
    const cv::Mat openCvs = cv::imread(file.path(), cv::IMREAD_COLOR);
    require(picture.size() == openCvs.size() && picture.type() == openCvs.type() &&
                cv::norm(picture, openCvs, cv::NORM_INF) == 0,
            "the picture that OpenCV reads");
  }
  return 0;
}
