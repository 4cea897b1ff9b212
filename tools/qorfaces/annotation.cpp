#include "annotation.h"

#include "picture_file.h"

#include <opencv2/imgproc.hpp>

#include <stdexcept>

namespace qorfaces {

namespace {

struct Cross {
  int size; // pixels
  int thickness;
};

constexpr Cross kPortraitCross{20, 3};
constexpr Cross kGroupCross{8, 1};

cv::Point pixelOf(const Point& point, const cv::Mat& picture) {
  return {cvRound(point.x * picture.cols), cvRound(point.y * picture.rows)};
}

void markHeadCentre(cv::Mat& picture, const Face& face, const Cross& cross) {
  if (face.headCentre) {
    cv::drawMarker(picture, pixelOf(*face.headCentre, picture), cv::Scalar(0, 255, 255),
                   cv::MARKER_CROSS, cross.size, cross.thickness, cv::LINE_AA);
  }
}

} // namespace

void markHeadCentres(const std::string& copy, const std::vector<Face>& faces) {
  cv::Mat picture = readPicture(copy);
  if (picture.empty()) {
    return;
  }
  for (const Face& face : faces) {
    markHeadCentre(picture, face, kPortraitCross);
  }
  writePicture(copy, picture);
}

void annotateGroup(const std::string& photo, const std::string& copy,
                   const std::vector<Face>& faces) {
  cv::Mat picture = readPicture(photo);
  if (picture.empty()) {
    throw std::runtime_error("the photograph cannot be read again to draw on it");
  }
  for (const Face& face : faces) {
    cv::rectangle(picture, pixelOf(face.box.leftTop, picture),
                  pixelOf(face.box.rightBottom, picture), cv::Scalar(0, 255, 0), 2);
    markHeadCentre(picture, face, kGroupCross);
  }
  writePicture(copy, picture);
}

} // namespace qorfaces
