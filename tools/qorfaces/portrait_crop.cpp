#include "portrait_crop.h"

#include <opencv2/imgproc.hpp>

#include <charconv>
#include <cmath>

namespace qorfaces {

namespace {

constexpr double kLongestAspect = 10;

std::optional<int> wholeNumber(const std::string& text) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end && number > 0 ? std::optional(number)
                                                                 : std::nullopt;
}

// The part that the photograph has, continued by its outermost pixels to the whole crop.
cv::Mat padded(const cv::Mat& photograph, const cv::Rect& crop, const cv::Rect& there) {
  cv::Mat whole;
  cv::copyMakeBorder(photograph(there), whole, there.y - crop.y, crop.br().y - there.br().y,
                     there.x - crop.x, crop.br().x - there.br().x,
                     cv::BORDER_REPLICATE | cv::BORDER_ISOLATED);
  return whole;
}

int scaled(int side, double factor) {
  return std::max(1, static_cast<int>(std::lround(side * factor)));
}

} // namespace

std::optional<double> aspectOf(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) {
    return std::nullopt;
  }
  const auto across = wholeNumber(text.substr(0, colon));
  const auto down = wholeNumber(text.substr(colon + 1));
  if (!across || !down) {
    return std::nullopt;
  }
  const double aspect = static_cast<double>(*across) / *down;
  const bool sane = aspect <= kLongestAspect && aspect >= 1 / kLongestAspect;
  return sane ? std::optional(aspect) : std::nullopt;
}

bool isDoubtful(const Head& head, double noseBridge) {
  constexpr double lowest = 0.6;
  constexpr double highest = 2.2;
  const double top = 2 * head.centre.y - head.chin;
  const double faceLength = head.chin - noseBridge;
  // Written so that what is no number is doubtful, too.
  return !(noseBridge - top >= lowest * faceLength && noseBridge - top <= highest * faceLength);
}

std::optional<cv::Rect> cropAround(const Head& head, const PortraitShape& shape) {
  const double headHeight = 2 * (head.chin - head.centre.y);
  const double height = headHeight / shape.head;
  const double width = height * shape.aspect;
  // Written so that what is no number is refused, too.
  const bool sane = headHeight >= 2 && height <= kLongestCrop && width <= kLongestCrop &&
                    std::abs(head.centre.x) <= kLongestCrop * 10.0 &&
                    std::abs(head.centre.y) <= kLongestCrop * 10.0;
  if (!sane) {
    return std::nullopt;
  }
  const auto whole = [](double value) { return static_cast<int>(std::lround(value)); };
  return cv::Rect(whole(head.centre.x - width / 2), whole(head.centre.y - height / 2),
                  std::max(1, whole(width)), whole(height));
}

bool leaves(const cv::Rect& crop, const cv::Size& photograph) {
  return (crop & cv::Rect({}, photograph)) != crop;
}

cv::Mat cutPortrait(const cv::Mat& photograph, const cv::Rect& crop, const PortraitShape& shape) {
  const cv::Rect there = crop & cv::Rect({}, photograph.size());
  if (there.empty()) {
    return {};
  }
  cv::Mat portrait =
      shape.edge == CropEdge::pad ? padded(photograph, crop, there) : photograph(there).clone();
  if (!shape.cropHeight) {
    return portrait;
  }
  // A clipped one keeps the scale of the whole, and the head its size.
  const double factor = static_cast<double>(*shape.cropHeight) / crop.height;
  const cv::Size size =
      portrait.size() == crop.size()
          ? cv::Size(scaled(*shape.cropHeight, shape.aspect), *shape.cropHeight)
          : cv::Size(scaled(portrait.cols, factor), scaled(portrait.rows, factor));
  cv::Mat result;
  cv::resize(portrait, result, size, 0, 0, factor < 1 ? cv::INTER_AREA : cv::INTER_CUBIC);
  return result;
}

} // namespace qorfaces
