#include "support/bare_pipelines.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace qorocv::testing {

namespace {

BareFaces openBare(const std::string& photo, int maxSide) {
  BareFaces faces;
  faces.picture = cv::imread(photo, cv::IMREAD_COLOR);
  faces.width = faces.picture.cols;
  faces.height = faces.picture.rows;
  const int longer = std::max(faces.width, faces.height);
  faces.scale = static_cast<float>(maxSide < 1 ? longer : maxSide) / static_cast<float>(longer);
  cv::resize(faces.picture, faces.picture,
             cv::Size(static_cast<int>(static_cast<float>(faces.width) * faces.scale),
                      static_cast<int>(static_cast<float>(faces.height) * faces.scale)));
  return faces;
}

} // namespace

BareDetectors loadBareCascade(const std::string& landmarkModel, const std::string& cascadeModel) {
  BareDetectors detectors;
  detectors.landmarker = cv::face::FacemarkLBF::create();
  detectors.landmarker->loadModel(landmarkModel);
  detectors.cascade.load(cascadeModel);
  return detectors;
}

BareDetectors loadBareNetwork(const std::string& landmarkModel, const std::string& description,
                              const std::string& weights) {
  BareDetectors detectors;
  detectors.landmarker = cv::face::FacemarkLBF::create();
  detectors.landmarker->loadModel(landmarkModel);
  detectors.net = cv::dnn::readNetFromCaffe(description, weights);
  return detectors;
}

BareDetectors loadBare(const std::filesystem::path& models, int modelKind) {
  const auto file = [&](const char* name) { return (models / name).string(); };
  BareDetectors detectors = loadBareCascade(file("model05.yaml"), file("model06.xml"));
  detectors.net =
      modelKind == 1
          ? cv::dnn::readNetFromCaffe(file("model01.prototxt"), file("model02.caffemodel"))
          : cv::dnn::readNetFromTensorflow(file("model04.pb"), file("model03.pbtxt"));
  return detectors;
}

BareFaces bareCascade(BareDetectors& detectors, const std::string& photo, int maxSide) {
  BareFaces faces = openBare(photo, maxSide);
  cv::Mat grey;
  cv::cvtColor(faces.picture, grey, cv::COLOR_BGR2GRAY);
  detectors.cascade.detectMultiScale(grey, faces.boxes, 1.1, 3);
  detectors.landmarker->fit(faces.picture, faces.boxes, faces.landmarks);
  return faces;
}

BareFaces bareNetworkBoxes(BareDetectors& detectors, const std::string& photo, int maxSide,
                           int modelKind) {
  BareFaces faces = openBare(photo, maxSide);
  detectors.net.setInput(cv::dnn::blobFromImage(faces.picture, 2.0, cv::Size(300, 300),
                                                cv::Scalar(104.0, 177.0, 123.0), modelKind != 1,
                                                false, CV_32F),
                         "data");
  const cv::Mat result = detectors.net.forward("detection_out");
  const auto width = static_cast<float>(faces.picture.cols);
  const auto height = static_cast<float>(faces.picture.rows);
  const auto* row = result.ptr<float>();
  for (int i = 0; i < result.size[2]; ++i, row += 7) {
    if (row[2] > 0.7F) {
      const cv::Point leftTop(static_cast<int>(width * row[3]), static_cast<int>(height * row[4]));
      const cv::Point rightBottom(static_cast<int>(width * row[5]),
                                  static_cast<int>(height * row[6]));
      faces.boxes.emplace_back(leftTop, rightBottom);
    }
  }
  return faces;
}

BareFaces bareNetwork(BareDetectors& detectors, const std::string& photo, int maxSide,
                      int modelKind) {
  BareFaces faces = bareNetworkBoxes(detectors, photo, maxSide, modelKind);
  if (!faces.boxes.empty()) {
    detectors.landmarker->fit(faces.picture, faces.boxes, faces.landmarks);
  }
  return faces;
}

void bareHeadCentres(const BareFaces& faces) {
  for (std::size_t k = 0; k < faces.landmarks.size(); ++k) {
    const cv::Rect band(faces.boxes[k].x, 0, faces.boxes[k].width,
                        static_cast<int>(faces.landmarks[k][27].y));
    const cv::Mat copy = faces.picture(band).clone();
    cv::Mat strip;
    cv::resize(copy, strip, cv::Size(12, 100));
    cv::cvtColor(strip, strip, cv::COLOR_BGR2HSV);
    cv::Mat mask;
    cv::inRange(strip, cv::Scalar(0, 0, 0, 0), cv::Scalar(20, 255, 255, 0), mask);
  }
}

std::vector<double> bareRecords(const BareFaces& faces, const std::vector<std::size_t>& landmarks) {
  const auto width = static_cast<float>(faces.width);
  const auto height = static_cast<float>(faces.height);
  if (faces.landmarks.empty()) {
    return {};
  }
  std::vector<double> values{static_cast<double>(faces.landmarks.size())};
  for (std::size_t k = 0; k < std::min<std::size_t>(30, faces.landmarks.size()); ++k) {
    const cv::Rect& box = faces.boxes[k];
    values.push_back(static_cast<float>(box.x) / faces.scale / width);
    values.push_back(static_cast<float>(box.y) / faces.scale / height);
    values.push_back(static_cast<float>(box.x + box.width) / faces.scale / width);
    values.push_back(static_cast<float>(box.y + box.height) / faces.scale / height);
    for (const std::size_t i : landmarks) {
      values.push_back(faces.landmarks[k][i].x / faces.scale / width);
      values.push_back(faces.landmarks[k][i].y / faces.scale / height);
    }
  }
  return values;
}

} // namespace qorocv::testing
