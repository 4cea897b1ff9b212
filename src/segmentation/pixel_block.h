// Pixels as hosts take them into textures: four bytes each, row after row without padding.
#pragma once

#include <opencv2/core.hpp>

#include <cstddef>

namespace qorocv {

constexpr int kViewSide = 1000; // pixels of the display copy, both ways
constexpr std::size_t kViewBytes = std::size_t{4} * kViewSide * kViewSide;

constexpr int kMaskSide = 192; // pixels of a person mask, both ways
constexpr std::size_t kMaskBytes = std::size_t{4} * kMaskSide * kMaskSide;

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
