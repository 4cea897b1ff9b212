// A picture to try models with.
#pragma once

#include "picture_file.h"

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace qorfaces {

/// A picture without a face, in a temporary file.
class BlankPicture {
public:
  /// Throws std::runtime_error where there is no place for temporary files.
  BlankPicture()
      : path_(std::filesystem::temp_directory_path() /
              ("qorfaces-" + std::to_string(std::random_device()()) + ".png")) {
    writePicture(path(), cv::Mat(64, 64, CV_8UC3, cv::Scalar::all(0)));
  }
  ~BlankPicture() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  BlankPicture(const BlankPicture&) = delete;
  BlankPicture& operator=(const BlankPicture&) = delete;

  std::string path() const { return path_.u8string(); }

private:
  std::filesystem::path path_;
};

} // namespace qorfaces
