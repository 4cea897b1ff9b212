#include "picture_file.h"

#include <opencv2/imgcodecs.hpp>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace qorfaces {

namespace {

std::vector<uchar> contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool isJpeg(const std::vector<uchar>& bytes) {
  return bytes.size() > 2 && bytes[0] == 0xFF && bytes[1] == 0xD8;
}

} // namespace

cv::Mat readPicture(const std::string& path) {
  std::vector<uchar> bytes = contents(std::filesystem::u8path(path));
  if (isJpeg(bytes)) {
    // From memory OpenCV reads nothing of some photographs that lack their end marker, though it
    // does from files. A second one is ignored.
    bytes.insert(bytes.end(), {0xFF, 0xD9});
  }
  return bytes.empty() ? cv::Mat() : cv::imdecode(bytes, cv::IMREAD_COLOR);
}

std::string whyUnreadable(const std::string& path) {
  const std::filesystem::path file = std::filesystem::u8path(path);
  std::error_code error;
  if (!std::filesystem::exists(file, error)) {
    return "there is no such file";
  }
  if (std::filesystem::is_directory(file, error)) {
    return "is a directory";
  }
  if (!std::ifstream(file)) {
    return "cannot be opened";
  }
  return "cannot be read as a picture: damaged, or of no known format";
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
