#include "support/bare_pipelines.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace qorocv::testing {

namespace {

BareFaces scaleBare(const cv::Mat& photograph, int maxSide) {
  BareFaces faces;
  faces.picture = photograph;
  faces.width = faces.picture.cols;
  faces.height = faces.picture.rows;
  const int longer = std::max(faces.width, faces.height);
  faces.scale = static_cast<float>(maxSide < 1 ? longer : maxSide) / static_cast<float>(longer);
  cv::resize(faces.picture, faces.picture,
             cv::Size(static_cast<int>(static_cast<float>(faces.width) * faces.scale),
                      static_cast<int>(static_cast<float>(faces.height) * faces.scale)));
  return faces;
}

BareFaces openBare(const std::string& photo, int maxSide) {
  return scaleBare(cv::imread(photo, cv::IMREAD_COLOR), maxSide);
}

void findByCascade(BareDetectors& detectors, BareFaces& faces) {
  cv::Mat grey;
  cv::cvtColor(faces.picture, grey, cv::COLOR_BGR2GRAY);
  detectors.cascade.detectMultiScale(grey, faces.boxes, 1.1, 3);
}

void findByNetwork(BareDetectors& detectors, BareFaces& faces, int modelKind) {
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
}

cv::Mat bareMask(cv::dnn::Net& segmenter, const cv::Mat& picture,
                 std::vector<unsigned char>& pixels) {
  cv::Mat input;
  cv::resize(picture, input, cv::Size(192, 192));
  input.convertTo(input, CV_32F, 1.0 / 255);
  cv::subtract(input, cv::Scalar::all(0.5), input);
  cv::divide(input, cv::Scalar::all(0.5), input);
  segmenter.setInput(cv::dnn::blobFromImage(input), "x");
  cv::Mat classes;
  cv::reduceArgMax(segmenter.forward("save_infer_model/scale_0.tmp_1"), classes, 1);
  cv::Mat mask = classes.reshape(1, 192);
  mask.convertTo(mask, CV_8U, 255);
  cv::cvtColor(mask, mask, cv::COLOR_GRAY2BGRA);
  std::copy(mask.datastart, mask.dataend, pixels.begin());
  return mask;
}

cv::Mat greyAt(const cv::Mat& mask, const cv::Size& size) {
  cv::Mat grey;
  cv::cvtColor(mask, grey, cv::COLOR_RGBA2GRAY);
  cv::resize(grey, grey, size);
  return grey;
}

} // namespace

BareDetectors loadBareCascade(const std::string& landmarkModel, const std::string& cascadeModel) {
  BareDetectors detectors;
  // In the order of slots 1 to 4: reading the landmarks takes a hundredth longer after a cascade.
  detectors.cascade.load(cascadeModel);
  detectors.landmarker = cv::face::FacemarkLBF::create();
  detectors.landmarker->loadModel(landmarkModel);
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
  detectors.segmenter = cv::dnn::readNet(file("model07.onnx"));
  return detectors;
}

BareFaces bareCascade(BareDetectors& detectors, const std::string& photo, int maxSide) {
  BareFaces faces = openBare(photo, maxSide);
  findByCascade(detectors, faces);
  detectors.landmarker->fit(faces.picture, faces.boxes, faces.landmarks);
  return faces;
}

BareFaces bareNetworkBoxes(BareDetectors& detectors, const std::string& photo, int maxSide,
                           int modelKind) {
  BareFaces faces = openBare(photo, maxSide);
  findByNetwork(detectors, faces, modelKind);
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

BareFaces bareMasks(BareDetectors& detectors, const std::string& photo, int maxSide,
                    BareFinder finder, bool closeUp, BarePixels& pixels) {
  const cv::Mat photograph = cv::imread(photo, cv::IMREAD_COLOR);
  cv::Mat view;
  cv::resize(photograph, view, cv::Size(1000, 1000));
  cv::cvtColor(view, view, cv::COLOR_BGR2RGBA);
  BareFaces faces = scaleBare(photograph, maxSide);
  if (finder == BareFinder::cascade) {
    findByCascade(detectors, faces);
  } else {
    findByNetwork(detectors, faces, 1);
  }
  const cv::Mat mask = bareMask(detectors.segmenter, faces.picture, pixels.mask);
  std::copy(view.datastart, view.dataend, pixels.view.begin());
  if (faces.boxes.empty()) {
    return faces;
  }
  const cv::Rect face = faces.boxes.front();
  const cv::Rect crop =
      cv::Rect(face.x - face.width, face.y - face.height, 3 * face.width, 3 * face.height) &
      cv::Rect({}, faces.picture.size());
  const bool closer = closeUp && faces.boxes.size() == 1;
  const cv::Mat cropMask =
      closer ? bareMask(detectors.segmenter, faces.picture(crop), pixels.cropMask) : cv::Mat();
  detectors.landmarker->fit(faces.picture, faces.boxes, faces.landmarks);
  if (closer) {
    greyAt(cropMask, crop.size());
  } else {
    greyAt(mask, faces.picture.size());
  }
  return faces;
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
