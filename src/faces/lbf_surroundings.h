// What an LBF fitter sees of a picture.
#pragma once

#include <opencv2/core/types.hpp>

namespace qorocv {

/// A face's box and half a box more on each side, clipped to the picture. In whole pixels, kept as
/// doubles because they enter such arithmetic. Width and height are those to the last pixel, not to
/// one past it; they are negative where the surroundings lie outside the picture.
struct LbfSurroundings {
  double left;
  double top;
  double width;
  double height;
};

/// By the arithmetic of OpenCV 4.6's FacemarkLBF.
LbfSurroundings lbfSurroundingsOf(const cv::Rect& box, const cv::Size& picture);

/// True for a box whose surroundings are zero pixels wide or high: OpenCV's fitter reads through
/// such an empty crop and brings the process down. False also where it throws before it gets that
/// far: for a box of no width, and for surroundings outside the picture.
bool leavesNothingToRead(const cv::Rect& box, const cv::Size& picture);

} // namespace qorocv
