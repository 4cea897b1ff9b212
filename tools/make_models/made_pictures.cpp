#include "made_pictures.h"

#include "made_models.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>

namespace qorocv::testing {
namespace {

const cv::Scalar kGround(48, 40, 36);
const cv::Scalar kSkin(170, 205, 240);
const cv::Scalar kHair(20, 30, 45);
const cv::Scalar kEye(60, 40, 30);
const cv::Scalar kLip(80, 80, 200);

// Drawing takes sixteenths of a pixel, so that small marks keep their shape.
constexpr int kSubpixelBits = 4;

cv::Point drawingPoint(cv::Point2d relative, const cv::Rect& square) {
  const double sixteenths = 1 << kSubpixelBits;
  // Pixel p covers p - 1/2 to p + 1/2 when drawing.
  return {cvRound((square.x + (1.0 + relative.x) * square.width / 2.0 - 0.5) * sixteenths),
          cvRound((square.y + (1.0 + relative.y) * square.height / 2.0 - 0.5) * sixteenths)};
}

std::vector<cv::Point> outline(const cv::Rect& square, std::size_t first, std::size_t last) {
  const LandmarkShape shape = defaultMeanShape();
  std::vector<cv::Point> points;
  for (std::size_t i = first; i <= last; ++i) {
    points.push_back(drawingPoint(shape.at(i), square));
  }
  return points;
}

void fillOutline(cv::Mat& picture, const std::vector<cv::Point>& points, const cv::Scalar& colour) {
  cv::fillPoly(picture, std::vector<std::vector<cv::Point>>{points}, colour, cv::LINE_AA,
               kSubpixelBits);
}

void strokeOutline(cv::Mat& picture, const std::vector<cv::Point>& points, const cv::Scalar& colour,
                   int thickness) {
  cv::polylines(picture, points, false, colour, thickness, cv::LINE_AA, kSubpixelBits);
}

// The jaw line closed by a forehead that mirrors it.
std::vector<cv::Point> headOutline(const cv::Rect& square) {
  const LandmarkShape shape = defaultMeanShape();
  std::vector<cv::Point> points = outline(square, 0, 16);
  for (std::size_t i = 15; i >= 1; --i) {
    points.push_back(drawingPoint({shape[i].x, -shape[i].y}, square));
  }
  return points;
}

void paintMark(cv::Mat& picture, const cv::Rect& square) {
  const int stroke = std::max(1, square.width / 24);
  fillOutline(picture, headOutline(square), kSkin);
  strokeOutline(picture, outline(square, 17, 21), kHair, stroke);
  strokeOutline(picture, outline(square, 22, 26), kHair, stroke);
  strokeOutline(picture, outline(square, 27, 30), kLip, std::max(1, stroke / 4));
  strokeOutline(picture, outline(square, 31, 35), kLip, std::max(1, stroke / 4));
  fillOutline(picture, outline(square, 36, 41), kEye);
  fillOutline(picture, outline(square, 42, 47), kEye);
  fillOutline(picture, outline(square, 48, 59), kLip);
}

} // namespace

cv::Mat plainPicture(cv::Size size) {
  return cv::Mat(size, CV_8UC3, kGround);
}

cv::Mat texturedPicture(cv::Size size) {
  cv::Mat picture = plainPicture(size);
  cv::RNG random(1);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const int ramp = 64 + 128 * x / picture.cols;
      picture.at<cv::Vec3b>(y, x) =
          cv::Vec3b::all(static_cast<unsigned char>(ramp + random.uniform(-12, 13)));
    }
  }
  return picture;
}

cv::Mat pictureWithMarks(cv::Size size, const std::vector<cv::Rect>& squares) {
  cv::Mat picture = plainPicture(size);
  for (const cv::Rect& square : squares) {
    paintMark(picture, square);
  }
  return picture;
}

std::vector<cv::Rect> gridSquares(int count) {
  constexpr int kColumns = 7;
  constexpr int kCell = 64;
  constexpr int kSide = 48;
  constexpr int kMargin = (kCell - kSide) / 2;
  std::vector<cv::Rect> squares;
  squares.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    squares.emplace_back(i % kColumns * kCell + kMargin, i / kColumns * kCell + kMargin, kSide,
                         kSide);
  }
  return squares;
}

cv::Mat pictureWithGrid(int count) {
  return pictureWithMarks({448, 320}, gridSquares(count));
}

cv::Mat pictureWithFace() {
  return pictureWithMarks({640, 480}, {{200, 120, 240, 240}});
}

std::filesystem::path writePicture(const std::filesystem::path& path, const cv::Mat& picture) {
  std::vector<unsigned char> png;
  cv::imencode(".png", picture, png);
  std::ofstream file(path, std::ios::binary);
  file << std::string(png.begin(), png.end());
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write " + path.string());
  }
  return path;
}

} // namespace qorocv::testing
