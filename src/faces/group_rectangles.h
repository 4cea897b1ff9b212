// Many boxes around one face become one.
#pragma once

#include <opencv2/core/types.hpp>

#include <vector>

namespace qorocv {

/// What cv::groupRectangles(boxes, 3, 0.2) makes of the boxes, in number, order and value, without
/// comparing every box with every other: a crowd gives thousands.
std::vector<cv::Rect> groupRectangles(const std::vector<cv::Rect>& boxes);

} // namespace qorocv
