// Pixels as hosts take them into textures: four bytes each, row after row without padding.
#pragma once

#include "qorocv460/qorocv460.h"

#include <opencv2/core.hpp>

#include <cstddef>

namespace qorocv {

/// The display copy of a photograph: QOROCV460_VIEW_SIDE pixels wide and high, red,
/// green, blue, alpha.
using ViewImage = cv::Mat;

/// Who is a person in a picture, stretched to QOROCV460_MASK_SIDE pixels both ways: blue,
/// green, red and alpha are 255 for a person, 0, 0, 0 and 255 for the background.
using PersonMask = cv::Mat;

/// Turns an 8-bit picture of three channels (BGR) into RGBA and one of one channel into grey BGRA,
/// opaque both; leaves one of any other number as it is.
void giveFourChannels(cv::Mat& picture);

/// The display copy of an 8-bit photograph, stretched.
ViewImage viewImage(const cv::Mat& photograph);

/// Copies a picture's pixels into a host's buffer of exactly `size` bytes; copies nothing where the
/// picture is empty. Throws cv::Exception where its pixels are no block of that size: a model may
/// answer in a size of its own.
void copyPixels(const cv::Mat& picture, unsigned char* buffer, std::size_t size);

} // namespace qorocv
