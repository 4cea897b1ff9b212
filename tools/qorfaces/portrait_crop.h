// Where a portrait is cut out of a photograph.
#pragma once

#include <opencv2/core.hpp>

#include <optional>
#include <string>

namespace qorfaces {

/// What becomes of a portrait that leaves its photograph.
enum class CropEdge {
  pad,  // keeps its shape: the photograph's outermost pixels go on
  clip, // ends with the photograph
};

/// How portraits are cut.
struct PortraitShape {
  double aspect = 0.8;           // width over height
  double head = 0.6;             // the share of the height that the head takes
  std::optional<int> cropHeight; // pixels that a whole portrait is scaled to; nothing: not scaled
  CropEdge edge = CropEdge::pad;
};

/// Width over height of a shape such as 4:5; nothing where the text is none, or is more than ten
/// times as long as wide.
std::optional<double> aspectOf(const std::string& text);

/// A head in pixels of its photograph. The top is as far above the centre as the chin is below.
struct Head {
  cv::Point2d centre;
  double chin; // its y
};

/// Whether the top of a head, measured, lies where no head's top does: from the nose bridge, whose y
/// is given, it is 0.6 to 2.2 times as far to the top, with hair, as to the chin.
bool isDoubtful(const Head& head, double noseBridge);

/// The pixels around a head, which may leave the photograph: the head's centre in their middle.
/// Nothing where the chin is less than a pixel below the centre, or where a portrait would have
/// more than kLongestCrop pixels to a side.
std::optional<cv::Rect> cropAround(const Head& head, const PortraitShape& shape);

constexpr int kLongestCrop = 30000;

/// Whether a part of the crop is not in the photograph.
bool leaves(const cv::Rect& crop, const cv::Size& photograph);

/// The portrait's pixels, of the photograph's type. Empty where the crop and the photograph have no
/// pixel in common.
cv::Mat cutPortrait(const cv::Mat& photograph, const cv::Rect& crop, const PortraitShape& shape);

} // namespace qorfaces
