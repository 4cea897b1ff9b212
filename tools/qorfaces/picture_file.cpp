#include "picture_file.h"

#include <opencv2/imgcodecs.hpp>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace qorfaces {

cv::Mat readPicture(const std::string& path) {
  std::ifstream file(std::filesystem::u8path(path), std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  return bytes.empty() ? cv::Mat() : cv::imdecode(bytes, cv::IMREAD_COLOR);
}

void writePicture(const std::string& path, const cv::Mat& picture) {
  const std::filesystem::path target = std::filesystem::u8path(path);
  std::vector<uchar> bytes;
  bool good = cv::imencode(target.extension().string(), picture, bytes);
  if (good) {
    std::ofstream file(target, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    good = file.good();
  }
  if (!good) {
    throw std::runtime_error("cannot write " + path);
  }
}

} // namespace qorfaces
