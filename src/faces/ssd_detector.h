// Face boxes from a single-shot detector (SSD) network.
#pragma once

#include <opencv2/dnn.hpp>

#include <vector>

namespace qorocv {

/// Pixels of the network's square input.
constexpr int kFaceNetworkSide = 300;

/// Appends the faces that `net` sees in an 8-bit BGR `image` to `faces`, in pixels of the image and
/// in the order of the network's rows. Boxes are not clamped to the image.
///
/// The network takes a blob "data", 1 x 3 x 300 x 300: the whole image squeezed, twice the
/// difference to the mean colour, in blue, green, red order for `modelKind` 1 and with the outer
/// two exchanged for any other. It answers with "detection_out", 1 x 1 x N x 7: per row image,
/// label, confidence, left, top, right, bottom, the last four as fractions of the image. A row
/// counts if its confidence is above 0.7f; its edges are the products with the image's width and
/// height in single precision, truncated, and change places where they are reversed.
///
/// Throws cv::Exception where the network fails or answers in another shape. The handle shares the
/// caller's network, which no other thread may run meanwhile.
void detectFacesSsd(cv::dnn::Net net, const cv::Mat& image, int modelKind,
                    std::vector<cv::Rect>& faces);

} // namespace qorocv
