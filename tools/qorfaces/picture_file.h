// Pictures from and to files named in UTF-8, on every system.
#pragma once

#include <opencv2/core.hpp>

#include <string>

namespace qorfaces {

/// The picture upright, 8-bit BGR, with what can be read of a damaged one; empty where there is
/// none.
cv::Mat readPicture(const std::string& path);

/// What is wrong with a file that the library could not read as a picture.
std::string whyUnreadable(const std::string& path);

/// The extension chooses the format. Throws std::runtime_error where the file cannot be written.
void writePicture(const std::string& path, const cv::Mat& picture);

} // namespace qorfaces
