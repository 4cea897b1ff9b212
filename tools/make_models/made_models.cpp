#include "made_models.h"

#include "protobuf_writer.h"

#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qorocv::testing {
namespace {

void writeFile(const std::filesystem::path& path, const std::string& content) {
  // A link to a real model may stand there: it is replaced, and what it leads to stays as it is.
  std::filesystem::remove(path);
  std::ofstream file(path, std::ios::binary);
  file << content;
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write " + path.string());
  }
}

// ---- Detection networks

constexpr std::size_t kRowLength = 7;
constexpr std::size_t kPlanes = 3;

std::array<RowValue, kRowLength> valuesOf(const DetectionRow& row) {
  return {row.image, row.label, row.confidence, row.left, row.top, row.right, row.bottom};
}

// The fully connected layer behind a detection network: output o is
// biases[o] + sum over the planes p of weights[o][p] * maximum[p].
struct RowLayer {
  std::size_t rows = 0;
  std::vector<std::array<float, kPlanes>> weights;
  std::vector<float> biases;
};

RowLayer rowLayer(std::vector<DetectionRow> rows) {
  if (rows.empty()) {
    rows.push_back({0.0F, 0.0F, 0.0F, 0.0F, 0.0F});
  }
  RowLayer layer;
  layer.rows = rows.size();
  for (const DetectionRow& row : rows) {
    for (const RowValue& value : valuesOf(row)) {
      layer.weights.push_back(value.weights);
      layer.biases.push_back(value.constant);
    }
  }
  return layer;
}

std::vector<float> outputMajor(const RowLayer& layer) {
  std::vector<float> flat;
  for (const auto& output : layer.weights) {
    flat.insert(flat.end(), output.begin(), output.end());
  }
  return flat;
}

std::vector<float> planeMajor(const RowLayer& layer) {
  std::vector<float> flat;
  for (std::size_t plane = 0; plane < kPlanes; ++plane) {
    for (const auto& output : layer.weights) {
      flat.push_back(output[plane]);
    }
  }
  return flat;
}

// ---- Caffe

std::string caffeText(const RowLayer& layer) {
  std::ostringstream text;
  text << R"(name: "made_detector"
layer {
  name: "data"
  type: "Input"
  top: "data"
  input_param { shape { dim: 1 dim: 3 dim: 300 dim: 300 } }
}
layer {
  name: "plane_maximum"
  type: "Pooling"
  bottom: "data"
  top: "plane_maximum"
  pooling_param { pool: MAX global_pooling: true }
}
layer {
  name: "row_values"
  type: "InnerProduct"
  bottom: "plane_maximum"
  top: "row_values"
  inner_product_param { num_output: )"
       << layer.biases.size() << R"( }
}
layer {
  name: "detection_out"
  type: "Reshape"
  bottom: "row_values"
  top: "detection_out"
  reshape_param { shape { dim: 1 dim: 1 dim: )"
       << layer.rows << R"( dim: 7 } }
}
)";
  return text.str();
}

// Field numbers as in caffe.proto.
namespace caffe {
constexpr std::uint32_t kNetName = 1;
constexpr std::uint32_t kNetLayer = 100;
constexpr std::uint32_t kLayerName = 1;
constexpr std::uint32_t kLayerType = 2;
constexpr std::uint32_t kLayerBlobs = 7;
constexpr std::uint32_t kBlobData = 5;
constexpr std::uint32_t kBlobShape = 7;
constexpr std::uint32_t kShapeDim = 1;
} // namespace caffe

ProtobufWriter caffeBlob(const std::vector<std::uint64_t>& shape, const std::vector<float>& data) {
  ProtobufWriter blob;
  blob.message(caffe::kBlobShape, ProtobufWriter().packedIntegers(caffe::kShapeDim, shape));
  blob.packedNumbers(caffe::kBlobData, data);
  return blob;
}

std::string caffeWeights(const RowLayer& layer) {
  const std::uint64_t outputs = layer.biases.size();
  ProtobufWriter rowValues;
  rowValues.text(caffe::kLayerName, "row_values")
      .text(caffe::kLayerType, "InnerProduct")
      .message(caffe::kLayerBlobs, caffeBlob({outputs, kPlanes}, outputMajor(layer)))
      .message(caffe::kLayerBlobs, caffeBlob({outputs}, layer.biases));
  ProtobufWriter net;
  net.text(caffe::kNetName, "made_detector").message(caffe::kNetLayer, rowValues);
  return net.bytes();
}

// ---- TensorFlow

// The last node turns [1, rows, 7] into [1, rows, 7, 1]: in the importer's channels-first layout
// that is the wanted 1x1x<rows>x7, whereas a reshape straight to four axes would be permuted.
constexpr const char* kTensorflowText = R"(node {
  name: "data"
  op: "Placeholder"
  attr { key: "dtype" value { type: DT_FLOAT } }
  attr {
    key: "shape"
    value { shape { dim { size: 1 } dim { size: 300 } dim { size: 300 } dim { size: 3 } } }
  }
}
node {
  name: "plane_maximum"
  op: "MaxPool"
  input: "data"
  attr { key: "T" value { type: DT_FLOAT } }
  attr { key: "data_format" value { s: "NHWC" } }
  attr { key: "ksize" value { list { i: 1 i: 300 i: 300 i: 1 } } }
  attr { key: "strides" value { list { i: 1 i: 1 i: 1 i: 1 } } }
  attr { key: "padding" value { s: "VALID" } }
}
node {
  name: "plane_vector"
  op: "Flatten"
  input: "plane_maximum"
}
node {
  name: "row_products"
  op: "MatMul"
  input: "plane_vector"
  input: "row_weights"
  attr { key: "T" value { type: DT_FLOAT } }
  attr { key: "transpose_a" value { b: false } }
  attr { key: "transpose_b" value { b: false } }
}
node {
  name: "row_values"
  op: "BiasAdd"
  input: "row_products"
  input: "row_biases"
  attr { key: "T" value { type: DT_FLOAT } }
}
node {
  name: "rows"
  op: "Reshape"
  input: "row_values"
  input: "rows_shape"
}
node {
  name: "detection_out"
  op: "ExpandDims"
  input: "rows"
  input: "last_axis"
}
)";

// Field numbers and types as in TensorFlow's graph.proto, attr_value.proto, tensor.proto,
// tensor_shape.proto and types.proto.
namespace tensorflow {
constexpr std::uint32_t kGraphNode = 1;
constexpr std::uint32_t kNodeName = 1;
constexpr std::uint32_t kNodeOp = 2;
constexpr std::uint32_t kNodeAttr = 5;
constexpr std::uint32_t kMapKey = 1;
constexpr std::uint32_t kMapValue = 2;
constexpr std::uint32_t kAttrType = 6;
constexpr std::uint32_t kAttrTensor = 8;
constexpr std::uint32_t kTensorType = 1;
constexpr std::uint32_t kTensorShape = 2;
constexpr std::uint32_t kTensorFloats = 5;
constexpr std::uint32_t kTensorInts = 7;
constexpr std::uint32_t kShapeDim = 2;
constexpr std::uint32_t kDimSize = 1;
constexpr std::uint64_t kFloat = 1;
constexpr std::uint64_t kInt32 = 3;
} // namespace tensorflow

ProtobufWriter tensorHead(std::uint64_t type, const std::vector<std::uint64_t>& shape) {
  ProtobufWriter dims;
  for (const std::uint64_t size : shape) {
    dims.message(tensorflow::kShapeDim, ProtobufWriter().integer(tensorflow::kDimSize, size));
  }
  ProtobufWriter tensor;
  tensor.integer(tensorflow::kTensorType, type).message(tensorflow::kTensorShape, dims);
  return tensor;
}

ProtobufWriter floatTensor(const std::vector<std::uint64_t>& shape,
                           const std::vector<float>& data) {
  return tensorHead(tensorflow::kFloat, shape).packedNumbers(tensorflow::kTensorFloats, data);
}

ProtobufWriter intTensor(const std::vector<std::uint64_t>& data) {
  return tensorHead(tensorflow::kInt32, {data.size()})
      .packedIntegers(tensorflow::kTensorInts, data);
}

ProtobufWriter attribute(std::string_view name, const ProtobufWriter& value) {
  ProtobufWriter entry;
  entry.text(tensorflow::kMapKey, name).message(tensorflow::kMapValue, value);
  return entry;
}

ProtobufWriter constantNode(std::string_view name, std::uint64_t type,
                            const ProtobufWriter& tensor) {
  ProtobufWriter node;
  node.text(tensorflow::kNodeName, name)
      .text(tensorflow::kNodeOp, "Const")
      .message(tensorflow::kNodeAttr,
               attribute("dtype", ProtobufWriter().integer(tensorflow::kAttrType, type)))
      .message(tensorflow::kNodeAttr,
               attribute("value", ProtobufWriter().message(tensorflow::kAttrTensor, tensor)));
  return node;
}

std::string tensorflowWeights(const RowLayer& layer) {
  using tensorflow::kFloat;
  using tensorflow::kGraphNode;
  using tensorflow::kInt32;
  const std::uint64_t outputs = layer.biases.size();
  ProtobufWriter graph;
  graph
      .message(kGraphNode, constantNode("row_weights", kFloat,
                                        floatTensor({kPlanes, outputs}, planeMajor(layer))))
      .message(kGraphNode, constantNode("row_biases", kFloat, floatTensor({outputs}, layer.biases)))
      .message(kGraphNode,
               constantNode("rows_shape", kInt32, intTensor({1, layer.rows, kRowLength})))
      .message(kGraphNode, constantNode("last_axis", kInt32, intTensor({3})));
  return graph.bytes();
}

// ---- Landmarks

std::string landmarkModel(const LandmarkShape& meanShape) {
  constexpr int kLandmarks = 68;
  constexpr int kStages = 1;
  constexpr int kTrees = 1;
  // Two levels are the least for which a tree compares two pixels; one level reads none.
  constexpr int kDepth = 2;
  constexpr int kNodes = 1 << kDepth;
  constexpr int kFeatures = kLandmarks * kTrees * (1 << (kDepth - 1));

  cv::Mat_<double> shape(kLandmarks, 2);
  for (int i = 0; i < kLandmarks; ++i) {
    shape(i, 0) = meanShape.at(static_cast<std::size_t>(i)).x;
    shape(i, 1) = meanShape.at(static_cast<std::size_t>(i)).y;
  }
  // Each tree compares the pixels a little to the left and to the right of its landmark.
  cv::Mat_<double> tree(kNodes, 4, 0.0);
  tree(1, 0) = -0.125;
  tree(1, 2) = 0.125;

  cv::FileStorage storage(kMadeLandmarks, cv::FileStorage::WRITE | cv::FileStorage::MEMORY |
                                              cv::FileStorage::FORMAT_YAML);
  storage << "stages_n" << kStages << "tree_n" << kTrees << "tree_depth" << kDepth;
  storage << "n_landmarks" << kLandmarks << "regressor_meanshape" << shape;
  for (int landmark = 0; landmark < kLandmarks; ++landmark) {
    storage << cv::format("tree_0_%d_0", landmark) << tree;
    storage << cv::format("thresholds_0_%d_0", landmark) << std::vector<int>(kNodes, 0);
  }
  // Zero weights keep the landmarks at the mean shape, whatever the trees find.
  storage << "weights_0" << cv::Mat::zeros(2 * kLandmarks, kFeatures, CV_64F);
  return storage.releaseAndGetString();
}

// ---- Cascade

// A weak classifier: how much brighter one rectangle is than another of the same size. Both are
// in pixels of the window, the threshold is in the detector's own unit: difference of the sums,
// divided by (window area * standard deviation of the window).
struct Contrast {
  cv::Rect dark;
  cv::Rect bright;
  double threshold;
};

constexpr int kWindow = 24;

// A bright oval on a dark ground, with brows and eyes darker than the cheeks below them. Each
// contrast has a stage of its own, so that all of them have to be there.
std::vector<Contrast> faceContrasts() {
  // Well below what a mark in place reaches, so that several windows around each mark pass:
  // grouping drops what only few windows have seen.
  constexpr double kSides = 0.035;
  constexpr double kTopAndBottom = 0.0225;
  constexpr double kEyes = 0.005;
  return {
      {{0, 7, 3, 10}, {5, 7, 3, 10}, kSides},
      {{21, 7, 3, 10}, {16, 7, 3, 10}, kSides},
      {{7, 0, 10, 2}, {7, 4, 10, 2}, kTopAndBottom},
      {{7, 22, 10, 2}, {7, 18, 10, 2}, kTopAndBottom},
      {{6, 6, 5, 4}, {6, 12, 5, 4}, kEyes},
      {{13, 6, 5, 4}, {13, 12, 5, 4}, kEyes},
  };
}

void writeRectangle(cv::FileStorage& storage, const cv::Rect& area, double weight) {
  storage << "[:" << area.x << area.y << area.width << area.height << weight << "]";
}

void writeFeature(cv::FileStorage& storage, const Contrast& contrast) {
  storage << "{"
          << "rects"
          << "[";
  writeRectangle(storage, contrast.dark, -1.0);
  writeRectangle(storage, contrast.bright, 1.0);
  storage << "]"
          << "tilted" << 0 << "}";
}

void writeStage(cv::FileStorage& storage, int feature, double threshold) {
  storage << "{"
          << "maxWeakCount" << 1 << "stageThreshold" << 0.0;
  storage << "weakClassifiers"
          << "["
          << "{";
  storage << "internalNodes"
          << "[:" << 0 << -1 << feature << threshold << "]";
  storage << "leafValues"
          << "[:" << -1.0 << 1.0 << "]";
  storage << "}"
          << "]"
          << "}";
}

std::string cascadeModel() {
  const std::vector<Contrast> contrasts = faceContrasts();
  cv::FileStorage storage(kMadeCascade, cv::FileStorage::WRITE | cv::FileStorage::MEMORY |
                                            cv::FileStorage::FORMAT_XML);
  storage << "cascade"
          << "{:opencv-cascade-classifier";
  storage << "stageType"
          << "BOOST"
          << "featureType"
          << "HAAR";
  storage << "height" << kWindow << "width" << kWindow;
  storage << "stageParams"
          << "{"
          << "maxWeakCount" << 1 << "}";
  storage << "featureParams"
          << "{"
          << "maxCatCount" << 0 << "}";
  storage << "stageNum" << static_cast<int>(contrasts.size());
  storage << "stages"
          << "[";
  int feature = 0;
  for (const Contrast& contrast : contrasts) {
    writeStage(storage, feature++, contrast.threshold);
  }
  storage << "]"
          << "features"
          << "[";
  for (const Contrast& contrast : contrasts) {
    writeFeature(storage, contrast);
  }
  storage << "]"
          << "}";
  return storage.releaseAndGetString();
}

// ---- ONNX

// Field numbers and types as in onnx.proto.
namespace onnx {
constexpr std::uint32_t kModelIrVersion = 1;
constexpr std::uint32_t kModelProducer = 2;
constexpr std::uint32_t kModelGraph = 7;
constexpr std::uint32_t kModelOpset = 8;
constexpr std::uint32_t kOpsetVersion = 2;
constexpr std::uint32_t kGraphNode = 1;
constexpr std::uint32_t kGraphName = 2;
constexpr std::uint32_t kGraphInitializer = 5;
constexpr std::uint32_t kGraphInput = 11;
constexpr std::uint32_t kGraphOutput = 12;
constexpr std::uint32_t kNodeInput = 1;
constexpr std::uint32_t kNodeOutput = 2;
constexpr std::uint32_t kNodeName = 3;
constexpr std::uint32_t kNodeOpType = 4;
constexpr std::uint32_t kNodeAttribute = 5;
constexpr std::uint32_t kAttributeName = 1;
constexpr std::uint32_t kAttributeInts = 8;
constexpr std::uint32_t kAttributeType = 20;
constexpr std::uint64_t kAttributeTypeInts = 7;
constexpr std::uint32_t kTensorDims = 1;
constexpr std::uint32_t kTensorDataType = 2;
constexpr std::uint32_t kTensorFloats = 4;
constexpr std::uint32_t kTensorName = 8;
constexpr std::uint32_t kValueName = 1;
constexpr std::uint32_t kValueType = 2;
constexpr std::uint32_t kTypeTensor = 1;
constexpr std::uint32_t kTypeElement = 1;
constexpr std::uint32_t kTypeShape = 2;
constexpr std::uint32_t kShapeDim = 1;
constexpr std::uint32_t kDimValue = 1;
constexpr std::uint64_t kFloat = 1;
} // namespace onnx

ProtobufWriter onnxInts(std::string_view name, const std::vector<std::uint64_t>& values) {
  ProtobufWriter attribute;
  attribute.text(onnx::kAttributeName, name)
      .packedIntegers(onnx::kAttributeInts, values)
      .integer(onnx::kAttributeType, onnx::kAttributeTypeInts);
  return attribute;
}

ProtobufWriter onnxTensor(std::string_view name, const std::vector<std::uint64_t>& dims,
                          const std::vector<float>& data) {
  ProtobufWriter tensor;
  tensor.packedIntegers(onnx::kTensorDims, dims)
      .integer(onnx::kTensorDataType, onnx::kFloat)
      .packedNumbers(onnx::kTensorFloats, data)
      .text(onnx::kTensorName, name);
  return tensor;
}

ProtobufWriter onnxValue(std::string_view name, const std::vector<std::uint64_t>& dims) {
  ProtobufWriter shape;
  for (const std::uint64_t size : dims) {
    shape.message(onnx::kShapeDim, ProtobufWriter().integer(onnx::kDimValue, size));
  }
  ProtobufWriter tensor;
  tensor.integer(onnx::kTypeElement, onnx::kFloat).message(onnx::kTypeShape, shape);
  ProtobufWriter value;
  value.text(onnx::kValueName, name)
      .message(onnx::kValueType, ProtobufWriter().message(onnx::kTypeTensor, tensor));
  return value;
}

std::string segmentationModel(const PixelScore& background, const PixelScore& person) {
  constexpr const char* kOutput = "save_infer_model/scale_0.tmp_1";
  std::vector<float> weights(background.channelWeights.begin(), background.channelWeights.end());
  weights.insert(weights.end(), person.channelWeights.begin(), person.channelWeights.end());

  ProtobufWriter convolution;
  convolution.text(onnx::kNodeInput, "x")
      .text(onnx::kNodeInput, "weights")
      .text(onnx::kNodeInput, "biases")
      .text(onnx::kNodeOutput, kOutput)
      .text(onnx::kNodeName, "scores")
      .text(onnx::kNodeOpType, "Conv")
      .message(onnx::kNodeAttribute, onnxInts("kernel_shape", {1, 1}))
      .message(onnx::kNodeAttribute, onnxInts("strides", {1, 1}))
      .message(onnx::kNodeAttribute, onnxInts("pads", {0, 0, 0, 0}));
  ProtobufWriter graph;
  graph.message(onnx::kGraphNode, convolution)
      .text(onnx::kGraphName, "made_segmentation")
      .message(onnx::kGraphInitializer, onnxTensor("weights", {2, 3, 1, 1}, weights))
      .message(onnx::kGraphInitializer, onnxTensor("biases", {2}, {background.bias, person.bias}))
      .message(onnx::kGraphInput, onnxValue("x", {1, 3, 192, 192}))
      .message(onnx::kGraphOutput, onnxValue(kOutput, {1, 2, 192, 192}));
  ProtobufWriter model;
  model.integer(onnx::kModelIrVersion, 3)
      .text(onnx::kModelProducer, "made_models")
      .message(onnx::kModelGraph, graph)
      .message(onnx::kModelOpset, ProtobufWriter().integer(onnx::kOpsetVersion, 9));
  return model.bytes();
}

} // namespace

LandmarkShape defaultMeanShape() {
  using Points = std::vector<cv::Point2d>;
  const Points jaw{{-42, 0},  {-41, 9}, {-39, 18}, {-35, 27}, {-30, 34}, {-23, 40},
                   {-16, 44}, {-8, 47}, {0, 48},   {8, 47},   {16, 44},  {23, 40},
                   {30, 34},  {35, 27}, {39, 18},  {41, 9},   {42, 0}};
  const Points leftBrow{{-34, -22}, {-29, -27}, {-22, -28}, {-15, -26}, {-9, -22}};
  const Points rightBrow{{9, -22}, {15, -26}, {22, -28}, {29, -27}, {34, -22}};
  const Points noseBridge{{0, -14}, {0, -7}, {0, 0}, {0, 7}};
  const Points nostrils{{-8, 11}, {-4, 13}, {0, 14}, {4, 13}, {8, 11}};
  const Points leftEye{{-28, -12}, {-23, -16}, {-17, -16}, {-12, -12}, {-17, -9}, {-23, -9}};
  const Points rightEye{{12, -12}, {17, -16}, {23, -16}, {28, -12}, {23, -9}, {17, -9}};
  const Points outerLips{{-16, 26}, {-10, 22}, {-4, 20}, {0, 21}, {4, 20},  {10, 22},
                         {16, 26},  {10, 31},  {4, 33},  {0, 34}, {-4, 33}, {-10, 31}};
  const Points innerLips{{-13, 26}, {-4, 24}, {0, 25}, {4, 24},
                         {13, 26},  {4, 29},  {0, 30}, {-4, 29}};

  LandmarkShape shape;
  std::size_t next = 0;
  for (const Points& part :
       {jaw, leftBrow, rightBrow, noseBridge, nostrils, leftEye, rightEye, outerLips, innerLips}) {
    for (const cv::Point2d& point : part) {
      shape.at(next++) = point / 64.0;
    }
  }
  return shape;
}

void writeMadeModels(const std::filesystem::path& directory, const MadeModels& models) {
  std::filesystem::create_directories(directory);
  const RowLayer caffeRows = rowLayer(models.caffeRows);
  writeFile(directory / kMadeCaffeText, caffeText(caffeRows));
  writeFile(directory / kMadeCaffeWeights, caffeWeights(caffeRows));
  writeFile(directory / kMadeTensorflowText, kTensorflowText);
  writeFile(directory / kMadeTensorflowWeights, tensorflowWeights(rowLayer(models.tensorflowRows)));
  writeFile(directory / kMadeLandmarks, landmarkModel(models.meanShape));
  writeFile(directory / kMadeCascade, cascadeModel());
  writeFile(directory / kMadeSegmentation, segmentationModel(models.background, models.person));
}

} // namespace qorocv::testing
