#pragma once

#include <opencv2/core.hpp>

#include <filesystem>
#include <vector>

namespace qorocv::testing {

// All pictures are 8-bit BGR, and the same on every run.

// The even dark ground that marks are painted on. No face is found on it.
cv::Mat plainPicture(cv::Size size);

// A mild texture: a ramp with some noise. No face is found on it.
cv::Mat texturedPicture(cv::Size size);

// A plain picture with a face painted into each square. The painted face has the landmarks of
// defaultMeanShape() for its square: the square's middle two thirds are face, the rest stays dark
// and belongs to the mark. The made cascade finds one box per mark, close to the square; it needs
// a side of at least 36 pixels.
cv::Mat pictureWithMarks(cv::Size size, const std::vector<cv::Rect>& squares);

// The first `count` (0 to 35) squares of a 7x5 grid of 64-pixel cells, row by row; each square has
// side 48 and lies in the middle of its cell.
std::vector<cv::Rect> gridSquares(int count);

// A 448x320 picture with marks in gridSquares(count).
cv::Mat pictureWithGrid(int count);

// A 640x480 picture with a single mark in the square (200, 120, 240, 240).
cv::Mat pictureWithFace();

// Writes a picture, as lossless PNG, and returns the path. Throws std::runtime_error if it cannot
// be written.
std::filesystem::path writePicture(const std::filesystem::path& path, const cv::Mat& picture);

} // namespace qorocv::testing
