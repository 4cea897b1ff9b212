// The files of networks are full of sizes and names that OpenCV believes: it reads as many numbers
// as a tensor's shape says, whatever there are, takes an operation's second input where there is
// one only, and divides by a number of groups. In a damaged file these end the process. Each check
// throws cv::Exception, StsParseError with the path and the place, for a file in which one of them
// leads OpenCV astray, and is silent on all others: on files that OpenCV itself refuses, too, and
// where there is no file.
#pragma once

#include <opencv2/dnn.hpp>

#include <string>

namespace qorocv {

/// The two files of a Caffe network: description and weights.
void checkCaffe(const std::string& description, const std::string& weights);

/// The two files of a TensorFlow network: weights and text graph.
void checkTensorflow(const std::string& weights, const std::string& graph);

/// An ONNX network.
void checkOnnx(const std::string& path);

/// A network that OpenCV has read from a file, before it runs with an input of this shape: layers
/// that would take more numbers than their weights have, or more memory than networks for faces and
/// persons do. Throws as the checks of files do, and what OpenCV throws of the layers.
void checkLayers(cv::dnn::Net& net, const cv::dnn::MatShape& input, const std::string& path);

} // namespace qorocv
