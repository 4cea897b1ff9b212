#include "picture_file.h"

#include "new_file.h"

#include <opencv2/imgcodecs.hpp>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace qorfaces {

namespace {

bool isJpeg(const std::vector<uchar>& bytes) {
  return bytes.size() > 2 && bytes[0] == 0xFF && bytes[1] == 0xD8;
}

} // namespace

std::vector<unsigned char> readFile(const std::string& path) {
  std::ifstream file(std::filesystem::u8path(path), std::ios::binary);
  std::vector<unsigned char> bytes;
  std::vector<unsigned char> block(1U << 16U);
  // By the stream, which says where reading fails: its buffer's iterators throw there instead.
  do {
    file.read(reinterpret_cast<char*>(block.data()), static_cast<std::streamsize>(block.size()));
    bytes.insert(bytes.end(), block.begin(), block.begin() + file.gcount());
  } while (file);
  return file.bad() ? std::vector<unsigned char>() : bytes;
}

cv::Mat decodePicture(std::vector<unsigned char> file, int mode) {
  if (isJpeg(file)) {
    // From memory OpenCV reads nothing of some photographs that lack their end marker, though it
    // does from files. A second one is ignored.
    file.insert(file.end(), {0xFF, 0xD9});
  }
  return file.empty() ? cv::Mat() : cv::imdecode(file, mode);
}

cv::Mat readPicture(const std::string& path) {
  return decodePicture(readFile(path));
}

std::string whyUnreadable(const std::string& path) {
  const std::filesystem::path file = std::filesystem::u8path(path);
  std::error_code error;
  if (!std::filesystem::exists(file, error)) {
    return error ? "cannot be reached: " + error.message() : "there is no such file";
  }
  if (std::filesystem::is_directory(file, error)) {
    return "is a directory: qorfaces scan looks through folders";
  }
  if (!std::filesystem::is_regular_file(file, error)) { // which whoever opens it may wait for
    return "is a pipe or a device, and no file";
  }
  if (!std::ifstream(file)) {
    return "cannot be opened";
  }
  return "cannot be read as a picture: damaged, or of no known format";
}

void writeFile(const std::string& path, const std::vector<unsigned char>& contents) {
  NewFile file(std::filesystem::u8path(path));
  file.write({contents.begin(), contents.end()});
  file.putInPlace();
}

void writePicture(const std::string& path, const cv::Mat& picture) {
  std::vector<uchar> bytes;
  const std::string extension = std::filesystem::u8path(path).extension().string();
  if (!cv::imencode(extension, picture, bytes)) {
    throw CannotWrite(path + " cannot be written: there is no such picture in this format");
  }
  writeFile(path, bytes);
}

} // namespace qorfaces
