#include "networks/network_check.h"
#include "networks/network_file.h"

namespace qorocv {

using namespace networks;

namespace {

using Shapes = std::vector<cv::dnn::MatShape>;

/// How many inputs OpenCV takes of a layer without counting them.
std::size_t leastLayerInputs(const std::string& type) {
  return type == "Const" ? 0 : type == "DetectionOutput" ? 3 : type == "PriorBox" ? 2 : 1;
}

/// How many dimensions OpenCV takes of each of a layer's inputs without counting them.
std::size_t leastDimensions(const std::string& type) {
  return type == "PriorBox" ? 4 : type == "DetectionOutput" ? 2 : type == "BatchNorm" ? 2 : 0;
}

/// Of a layer whose own inputs have them. Asking OpenCV for the layer's shapes would be too late.
void checkDimensions(cv::dnn::Net& net, const cv::dnn::MatShape& input, int id,
                     const cv::dnn::Layer& layer) {
  const std::size_t least = leastDimensions(layer.type);
  if (least == 0) {
    return;
  }
  for (const cv::Ptr<cv::dnn::Layer>& before : net.getLayerInputs(id)) {
    const int idBefore = net.getLayerId(before->name);
    Shapes ins;
    Shapes outs{input};
    if (idBefore > 0) { // no. 0 is the input
      net.getLayerShapes(input, idBefore, ins, outs);
    }
    for (const cv::dnn::MatShape& out : outs) {
      if (out.size() < least) {
        throw BadMessage("layer " + layer.name + " has an input of too few dimensions");
      }
    }
  }
}

/// OpenCV takes a number for each channel from all of a layer's weights.
void checkChannels(const cv::dnn::Layer& layer, const Shapes& inputs) {
  if (layer.type != "BatchNorm") {
    return;
  }
  const auto channels = static_cast<std::size_t>(inputs.at(0).at(1));
  for (std::size_t blob = 0; blob < layer.blobs.size(); ++blob) {
    const std::size_t count = layer.blobs[blob].total();
    const bool isScale = blob == 2 && count == 1; // Caffe's, of all channels
    if (count != channels && !isScale) {
      throw BadMessage("layer " + layer.name + " has other channels than its input");
    }
  }
}

constexpr std::size_t kMostNumbers = std::size_t{1} << 28U; // of all layers, 1 GiB

} // namespace

void checkLayers(cv::dnn::Net& net, const cv::dnn::MatShape& input, const std::string& path) {
  for (const cv::String& name : net.getLayerNames()) {
    const int id = net.getLayerId(name);
    const cv::Ptr<cv::dnn::Layer> layer = net.getLayer(id);
    if (layer->type == "Deconvolution" && layer->blobs.empty()) {
      refuse(path, "layer " + name + " has no weights");
    }
    if (net.getLayerInputs(id).size() < leastLayerInputs(layer->type)) {
      refuse(path, "layer " + name + " has too few inputs");
    }
    ofFile(path, [&] { checkDimensions(net, input, id, *layer); });
  }
  std::vector<int> ids;
  std::vector<Shapes> inputs;
  std::vector<Shapes> outputs;
  net.getLayersShapes(input, ids, inputs, outputs);
  std::size_t numbers = 0;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const cv::Ptr<cv::dnn::Layer> layer = net.getLayer(ids[i]);
    ofFile(path, [&] {
      for (const cv::dnn::MatShape& output : outputs[i]) {
        numbers += volume({output.begin(), output.end()}, "layer " + layer->name);
      }
      checkChannels(*layer, inputs[i]);
    });
    if (numbers > kMostNumbers) {
      refuse(path, "layer " + layer->name + " takes too much memory");
    }
  }
}

} // namespace qorocv
