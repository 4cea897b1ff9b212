// Any words for the options of portraits, and any numbers for a head: where portraits are cut.
#include "crop_options.h"
#include "fuzz_input.h"
#include "parse.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <vector>

using namespace qorfaces;
using namespace qorocv::fuzzing;

namespace {

constexpr double kMostPixels = 4e6; // of a portrait: beyond it lies only more of the same

/// The digits that begin a text, as a number of at least 1; 0 where there are none, or too many.
double takeDigits(std::string& text) {
  double number = 0;
  std::size_t i = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    number = number * 10 + (text[i] - '0');
  }
  text.erase(0, i);
  return number <= 2147483647 ? number : 0;
}

/// 0 where the text is no shape.
double aspectIn(std::string text) {
  const double across = takeDigits(text);
  const bool isTwo = !text.empty() && text.front() == ':';
  text.erase(0, 1);
  const double down = takeDigits(text);
  const bool isShape =
      isTwo && text.empty() && across > 0 && down > 0 && across <= down * 10 && down <= across * 10;
  return isShape ? across / down : 0;
}

std::string takeWord(FuzzInput& input) {
  std::string word;
  for (int letters = input.takeFrom(0, 12); letters > 0; --letters) {
    const char letter = input.take<char>();
    word += letter == '\0' ? '0' : letter; // no argument can hold it
  }
  return word;
}

std::vector<std::string> takeWords(FuzzInput& input) {
  constexpr const char* options[] = {"--crop", "--head", "--crop-height", "--crop-edge"};
  std::vector<std::string> words;
  for (int count = input.takeFrom(0, 5); count > 0; --count) {
    const int option = input.takeFrom(0, 4);
    if (option < 4) {
      words.emplace_back(options[option]);
    }
    words.push_back(takeWord(input));
  }
  return words;
}

/// Nothing where the words are refused, or ask for no portraits.
std::optional<PortraitShape> takeShape(FuzzInput& input) {
  CLI::App app;
  CropWords words;
  const CLI::Option* const crop = describeCrop(app, words);
  try {
    parse(app, takeWords(input));
    const auto shape = shapeOf(words);
    require(shape.has_value() == (crop->count() > 0), "portraits where they are asked for");
    require(!shape || shape->aspect == aspectIn(words.aspect), "the shape that was asked for");
    return shape;
  } catch (const CLI::ParseError&) {
    return std::nullopt;
  }
}

void requireSane(const PortraitShape& shape) {
  require(shape.aspect >= 0.1 && shape.aspect <= 10, "no shape above ten times as long as wide");
  require(shape.head >= 0.05 && shape.head <= 1, "a share of the height");
  const int height = shape.cropHeight.value_or(1);
  require(height >= 1 && height <= 10000 && height * shape.aspect <= 65500, "what a file holds");
}

double takeCoordinate(FuzzInput& input) {
  // Most of them near a picture, where there is more to go wrong.
  return input.takeFrom(0, 3) > 0 ? input.take<std::int16_t>() / 64.0 : input.take<double>();
}

Head takeHead(FuzzInput& input) {
  Head head{};
  head.centre.x = takeCoordinate(input);
  head.centre.y = takeCoordinate(input);
  head.chin = takeCoordinate(input);
  return head;
}

cv::Mat takePicture(FuzzInput& input) {
  const int width = input.takeFrom(1, 200);
  const int height = input.takeFrom(1, 200);
  cv::Mat picture(height, width, CV_8UC3);
  cv::RNG random(input.take<std::uint8_t>());
  random.fill(picture, cv::RNG::UNIFORM, 0, 256);
  return picture;
}

bool isNear(double a, double b, double distance) {
  return std::abs(a - b) <= distance;
}

void requireAround(const cv::Rect& crop, const Head& head, const PortraitShape& shape) {
  const double height = 2 * (head.chin - head.centre.y) / shape.head;
  require(isNear(crop.height, height, 0.5), "the head's share of the height");
  require(isNear(crop.width, height * shape.aspect, 0.5) || crop.width == 1, "the shape");
  require(isNear(crop.x + crop.width / 2.0, head.centre.x, 1) &&
              isNear(crop.y + crop.height / 2.0, head.centre.y, 1),
          "the head's centre in the middle");
  require(crop.width >= 1 && crop.width <= kLongestCrop && crop.height >= 2 &&
              crop.height <= kLongestCrop,
          "sides that pictures have");
}

// A portrait at the photograph's own pixels, which begins at `begin` of the photograph.
void requireItsPixels(const cv::Mat& portrait, const cv::Mat& photograph, const cv::Point& begin) {
  for (int y = 0; y < portrait.rows; ++y) {
    for (int x = 0; x < portrait.cols; ++x) {
      const int column = std::min(std::max(begin.x + x, 0), photograph.cols - 1);
      const int row = std::min(std::max(begin.y + y, 0), photograph.rows - 1);
      require(portrait.at<cv::Vec3b>(y, x) == photograph.at<cv::Vec3b>(row, column),
              "the photograph's pixels, the outermost going on");
    }
  }
}

void requireCut(const cv::Mat& photograph, const cv::Rect& crop, const PortraitShape& shape) {
  const cv::Point begin(std::max(crop.x, 0), std::max(crop.y, 0));
  const cv::Size there(std::min(crop.x + crop.width, photograph.cols) - begin.x,
                       std::min(crop.y + crop.height, photograph.rows) - begin.y);
  require(leaves(crop, photograph.size()) == (there != crop.size()), "whether a part is missing");
  const double height = shape.cropHeight.value_or(crop.height);
  if (height * height * (shape.aspect + 1) > kMostPixels || crop.area() > kMostPixels) {
    return;
  }
  const cv::Mat portrait = cutPortrait(photograph, crop, shape);
  if (there.width <= 0 || there.height <= 0) {
    require(portrait.empty(), "no portrait without a pixel of the photograph");
    return;
  }
  const bool isWhole = shape.edge == CropEdge::pad || there == crop.size();
  const cv::Size size = isWhole ? crop.size() : there;
  require(portrait.type() == photograph.type(), "the photograph's type");
  if (!shape.cropHeight) {
    require(portrait.size() == size, "the crop's size");
    requireItsPixels(portrait, photograph, isWhole ? crop.tl() : begin);
  } else if (isWhole) {
    require(portrait.rows == *shape.cropHeight, "as high as asked");
    require(isNear(portrait.cols, height * shape.aspect, 0.5) || portrait.cols == 1,
            "of the shape that was asked for");
  } else {
    const double scale = height / crop.height;
    require((isNear(portrait.cols, size.width * scale, 0.5) || portrait.cols == 1) &&
                (isNear(portrait.rows, size.height * scale, 0.5) || portrait.rows == 1),
            "the scale of the whole");
  }
}

void requireDoubt(const Head& head, double noseBridge) {
  const double faceLength = head.chin - noseBridge;
  const double share = (noseBridge - (2 * head.centre.y - head.chin)) / faceLength;
  if (faceLength > 0 && isNear(share, 1.4, 0.79)) {
    require(!isDoubtful(head, noseBridge), "no doubt of a top where tops are");
  } else if (!(faceLength > 0 && isNear(share, 1.4, 0.81))) {
    require(isDoubtful(head, noseBridge), "a doubt of a top where none is");
  }
}

void cut(const PortraitShape& shape, const Head& head, double noseBridge,
         const cv::Mat& photograph) {
  const auto crop = cropAround(head, shape);
  if (!crop) {
    const double height = 2 * (head.chin - head.centre.y);
    const double longer = height / shape.head * std::max(shape.aspect, 1.0);
    const bool isOfPictures = std::abs(head.centre.x) <= kLongestCrop &&
                              std::abs(head.centre.y) <= kLongestCrop && height >= 2 &&
                              longer <= kLongestCrop;
    require(!isOfPictures, "a portrait of every head");
    return;
  }
  requireAround(*crop, head, shape);
  requireDoubt(head, noseBridge);
  requireCut(photograph, *crop, shape);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const cv::Mat photograph = takePicture(input);
  const Head head = takeHead(input);
  const double noseBridge = takeCoordinate(input);
  const auto shape = takeShape(input);
  if (shape) {
    requireSane(*shape);
  }
  cut(shape.value_or(PortraitShape()), head, noseBridge, photograph);
  const std::string text = input.rest();
  require(aspectOf(text).value_or(0) == aspectIn(text), "a shape is one, and nothing else");
  return 0;
}
