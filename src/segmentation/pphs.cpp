#include "segmentation/pphs.h"

#include "networks/network_check.h"
#include "networks/onnx_shuffles.h"
#include "platform/platform.h"

#include <opencv2/imgproc.hpp>

namespace qorocv {

namespace {

class SetWhileAlive {
public:
  explicit SetWhileAlive(bool& flag) : flag_(flag) { flag_ = true; }
  ~SetWhileAlive() { flag_ = false; }
  SetWhileAlive(const SetWhileAlive&) = delete;
  SetWhileAlive& operator=(const SetWhileAlive&) = delete;

private:
  bool& flag_;
};

} // namespace

PPHS::PPHS(const std::string& path, int backend, int target)
    : modelPath(path), backendId(backend), targetId(target) {
  // Reading runs the layers whose inputs are constants, and layers fold the case of their
  // parameters by the locale.
  const ClassicLocaleOfThread classicLocale;
  const std::size_t dot = modelPath.rfind('.');
  if (dot != std::string::npos && modelPath.substr(dot) == ".onnx") {
    checkOnnx(modelPath);
    net = readOnnx(modelPath);
  } else {
    net = cv::dnn::readNet(modelPath);
  }
  checkLayers(net, {1, 3, inputSize.height, inputSize.width}, modelPath);
  net.setPreferableBackend(backendId);
  net.setPreferableTarget(targetId);
}

cv::Mat PPHS::preprocess(const cv::Mat& image) {
  sourceSize = image.size();
  cv::Mat input = cv::Mat::zeros(inputSize, image.type());
  cv::resize(image, input, inputSize, 0, 0, cv::INTER_LINEAR);
  input.convertTo(input, CV_32F, 1.0 / 255);
  cv::subtract(input, mean, input);
  cv::divide(input, std, input);
  return cv::dnn::blobFromImage(input, 1.0, cv::Size(), cv::Scalar(), false, false, CV_32F);
}

PersonMask PPHS::infer(const cv::Mat& image) {
  const SetWhileAlive whileRunning(busy);
  const ClassicLocaleOfThread classicLocale;
  net.setInput(preprocess(image), inputName, 1.0, cv::Scalar());
  const cv::Mat scores = net.forward(outputName);
  CV_Assert(scores.dims == 4);
  cv::Mat classes; // 1 x 1 x rows x columns
  cv::reduceArgMax(scores, classes, 1, false);
  PersonMask mask = classes.reshape(1, classes.size[2]);
  mask.convertTo(mask, CV_8U, 255.0);
  giveFourChannels(mask);
  return mask;
}

} // namespace qorocv
