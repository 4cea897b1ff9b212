#include "hog_detector.h"

#include <dlib/image_processing/frontal_face_detector.h>
#include <dlib/opencv/cv_image.h>

namespace qorocv::bench {

struct HogDetector::Detector {
  dlib::frontal_face_detector detect = dlib::get_frontal_face_detector();
};

HogDetector::HogDetector() : detector_(std::make_unique<Detector>()) {}

HogDetector::~HogDetector() = default;

std::size_t HogDetector::detect(const cv::Mat& grey) {
  return detector_->detect(dlib::cv_image<unsigned char>(grey)).size();
}

} // namespace qorocv::bench
