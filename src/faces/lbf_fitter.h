// Fits landmarks with an LBF model. The results equal those of OpenCV 4.6's FacemarkLBF::fit to the
// last bit, on every processor.
#pragma once

#include "faces/instruction_set.h"
#include "faces/landmarks.h"
#include "faces/lbf_model.h"

#include <opencv2/core.hpp>

#include <optional>
#include <vector>

namespace qorocv {

/// The 68 points of every box, in the order of the boxes and in pixels of `picture`, which is 8-bit
/// grey, BGR or BGRA. Nothing where a box leaves no pixel to read: half a box wider on each side
/// and clipped to the picture, it is zero pixels wide or high. OpenCV crashes on such a box.
///
/// Throws cv::Exception with OpenCV's codes: StsBadArg for a box of no width, StsAssert for a box
/// whose surroundings lie outside the picture, and StsUnsupportedFormat for other pictures. What
/// counts is the first box that cannot be fitted. The instructions, which must be available, change
/// nothing but the time.
std::optional<std::vector<LandmarkSet>> fitLbf(const LbfModel& model, const cv::Mat& picture,
                                               const std::vector<cv::Rect>& boxes,
                                               InstructionSet instructions = bestInstructionSet());

} // namespace qorocv
