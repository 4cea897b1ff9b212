#include "drawing/annotated_picture.h"

#include <opencv2/highgui.hpp>
#include <opencv2/imgproc.hpp>

namespace qorocv {

void drawFaces(cv::Mat& picture, const std::vector<cv::Rect>& boxes,
               const std::vector<LandmarkSet>& landmarkSets, int mode) {
  for (const cv::Rect& box : boxes) {
    cv::rectangle(picture, box, cv::Scalar(0, 255, 0), 3, cv::LINE_8, 0);
  }
  for (const LandmarkSet& landmarks : landmarkSets) {
    drawLandmarks(picture, landmarks, 1.0F, mode);
  }
}

void showAndWait(const cv::Mat& picture) {
  const char* const window = "Display window";
  cv::namedWindow(window, cv::WINDOW_AUTOSIZE);
  cv::imshow(window, picture);
  cv::waitKey(0);
}

} // namespace qorocv
