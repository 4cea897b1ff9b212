// Pixels as hosts take them into textures: four bytes each, row after row without padding.
#pragma once

#include <opencv2/core.hpp>

#include <cstddef>

namespace qorocv {

constexpr std::size_t kViewBytes = 4 * 1000 * 1000; // of the display copy
constexpr std::size_t kMaskBytes = 4 * 192 * 192;   // of a person mask

/// Turns an 8-bit picture of three channels (BGR) into RGBA and one of one channel into grey BGRA,
/// opaque both; leaves one of any other number as it is.
void giveFourChannels(cv::Mat& picture);

/// The display copy of an 8-bit photograph: 1000 x 1000 pixels of four bytes, stretched.
cv::Mat viewImage(const cv::Mat& photograph);

/// Copies a picture's pixels into a host's buffer of exactly `size` bytes; copies nothing where the
/// picture is empty. Throws cv::Exception where its pixels are no block of that size: a model may
/// answer in a size of its own.
void copyPixels(const cv::Mat& picture, unsigned char* buffer, std::size_t size);

} // namespace qorocv
