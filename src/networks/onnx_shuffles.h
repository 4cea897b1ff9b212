// Networks for small machines shuffle the channels of a picture between their groups: they take the
// channels' axis apart into groups and channels of a group, exchange the two, and put them together
// again. With the axes of batch, rows and columns these are five, and OpenCV moves numbers along
// five axes one by one, each with ten divisions: 40 % of the time of the network for persons. Along
// four axes it moves rows.
#pragma once

#include <opencv2/dnn.hpp>

#include <string>

namespace qorocv {

/// The content of an ONNX file with its shuffles along four axes, rows and columns being one, so
/// that each number gets where it got before. Everything else is as it was, byte by byte; so is all
/// of a file without such a shuffle, and of what is no ONNX file. Its length does not change.
std::string withShufflesAlongFourAxes(std::string file);

/// Reads an ONNX file as cv::dnn::readNet(path) does, throwing what it throws, into a network that
/// gives the same numbers in less time where it shuffles. Where OpenCV prints the sizes of a layer
/// that fails, a shuffle's are those of four axes.
cv::dnn::Net readOnnx(const std::string& path);

} // namespace qorocv
