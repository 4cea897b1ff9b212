// Any numbers for boxes, landmarks, sizes and tiles: what models and hosts may say.
#include "call/photograph.h"
#include "call/tile.h"
#include "fuzz_input.h"
#include "heads/face_region_measure.h"
#include "heads/head_centre.h"
#include "heads/mask_measures.h"

#include <cmath>

using namespace qorocv;
using namespace qorocv::fuzzing;

namespace {

cv::Rect takeRect(FuzzInput& input) {
  // Half of them near a picture, where there is more to go wrong.
  if (input.take<std::uint8_t>() % 2 == 0) {
    return {input.take<std::int8_t>(), input.take<std::int8_t>(), input.take<std::int8_t>(),
            input.take<std::int8_t>()};
  }
  return {input.take<int>(), input.take<int>(), input.take<int>(), input.take<int>()};
}

float takeCoordinate(FuzzInput& input) {
  if (input.take<std::uint8_t>() % 2 == 0) {
    return static_cast<float>(input.take<std::int16_t>()) / 64.0F;
  }
  return input.take<float>();
}

LandmarkSet takeLandmarks(FuzzInput& input) {
  LandmarkSet landmarks(kLandmarkCount);
  landmarks[kNoseBridge] = {0, takeCoordinate(input)};
  landmarks[kChin] = {0, takeCoordinate(input)};
  return landmarks;
}

cv::Mat picture(FuzzInput& input, int type) {
  cv::Mat made(input.takeFrom(1, 120), input.takeFrom(1, 120), type);
  const int step = input.takeFrom(1, 255);
  for (int row = 0; row < made.rows; ++row) {
    uchar* const first = made.ptr<uchar>(row);
    for (std::size_t i = 0; i < static_cast<std::size_t>(made.cols) * made.elemSize(); ++i) {
      first[i] = row < step ? uchar{0} : static_cast<uchar>(i * static_cast<std::size_t>(step));
    }
  }
  return made;
}

// The distance from nose bridge to chin, or a length that is no more than three times that.
void requireLength(float length, float faceLength) {
  require((std::isnan(length) && std::isnan(faceLength)) || length == faceLength ||
              !(length > 3 * faceLength),
          "no head above three face lengths");
}

void measure(FuzzInput& input) {
  const LandmarkSet landmarks = takeLandmarks(input);
  const float faceLength = noseToChin(landmarks);
  const cv::Rect face = takeRect(input);
  const cv::Mat photograph = picture(input, CV_8UC3);
  requireLength(faceRegionMeasure(photograph, face, landmarks), faceLength);

  const cv::Mat mask = picture(input, CV_8UC4);
  PictureMask pictureMask(mask, photograph.size());
  requireLength(headTopDistance(face, landmarks, pictureMask), faceLength);

  const FaceCrop crop = faceCrop(face, photograph.size());
  require((crop & cv::Rect({}, photograph.size())) == crop, "a close-up in the picture");
  cv::Rect anyCrop = takeRect(input);
  anyCrop.width = std::abs(anyCrop.width % 2000);
  anyCrop.height = std::abs(anyCrop.height % 2000);
  for (const cv::Rect& one : {crop, anyCrop}) {
    try {
      const float length = headTopDistanceInCrop(face, landmarks, mask, one);
      const float fallback = static_cast<float>(one.y) + faceLength;
      if (!(length == fallback)) {
        requireLength(length, faceLength);
      }
    } catch (const cv::Exception&) {
      const float noseBridge = landmarks[kNoseBridge].y;
      const bool isAboveTheEnd =
          noseBridge > -1e9F &&
          noseBridge < static_cast<float>(one.y) + static_cast<float>(one.height);
      require(one != crop || crop.empty() || !isAboveTheEnd,
              "no exception for a face in its close-up");
    }
  }
  headCentre(landmarks, takeCoordinate(input));
}

void placeTile(FuzzInput& input) {
  const int length = 1 + (input.take<int>() & 0xFFFF);
  const bool small = input.take<std::uint8_t>() % 2 == 0;
  const int index = small ? input.takeFrom(1, 12) : input.take<int>();
  const int count = small ? input.takeFrom(1, 12) : input.take<int>();
  const TileSpan span = tileSpan(length, index, count);
  require(span.start >= 0, "no tile left of the picture");
  require(count < 1 || span.end <= length, "no tile right of the picture");
  if (index >= 1 && index <= count && count <= length) {
    require(span.start < span.end, "no tile without pixels");
  }
}

void scale(FuzzInput& input) {
  cv::Mat scaled = picture(input, CV_8UC3);
  const cv::Size before = scaled.size();
  const bool small = input.take<std::uint8_t>() % 2 == 0;
  const int maxSide = small ? input.take<std::int16_t>() % 4096 : -std::abs(input.take<int>() / 2);
  try {
    const float factor = scaleToMaxSide(scaled, maxSide);
    require(factor > 0, "a scale above 0");
    require(std::max(scaled.cols, scaled.rows) <=
                std::max(maxSide, maxSide < 1 ? std::max(before.width, before.height) : 0),
            "no side above the longest");
  } catch (const cv::Exception&) {
    require(maxSide >= 1, "no exception at the picture's own size"); // a side of no pixel
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  switch (input.takeFrom(0, 2)) {
  case 0:
    measure(input);
    break;
  case 1:
    placeTile(input);
    break;
  default:
    scale(input);
  }
  return 0;
}
