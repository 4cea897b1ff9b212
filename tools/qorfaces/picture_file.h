// Pictures from and to files named in UTF-8, on every system.
#pragma once

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <string>
#include <vector>

namespace qorfaces {

/// All bytes of a file; none where it cannot be read.
std::vector<unsigned char> readFile(const std::string& path);

/// The picture in a file's bytes upright, 8-bit BGR, with what can be read of a damaged one, at the
/// size that the mode of cv::imdecode says; empty where there is none.
cv::Mat decodePicture(std::vector<unsigned char> file, int mode = cv::IMREAD_COLOR);

/// The picture upright, 8-bit BGR, with what can be read of a damaged one; empty where there is
/// none.
cv::Mat readPicture(const std::string& path);

/// What is wrong with a file that the library could not read as a picture.
std::string whyUnreadable(const std::string& path);

/// Whoever has the file open meanwhile reads the one from before. Throws CannotWrite, which says why,
/// and leaves that one.
void writeFile(const std::string& path, const std::vector<unsigned char>& contents);

/// The same; the extension chooses the format.
void writePicture(const std::string& path, const cv::Mat& picture);

} // namespace qorfaces
