#include "model_contents.h"
#include "protobuf_writer.h"

#include <cstdint>
#include <sstream>

namespace qorocv::testing {
namespace {

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

} // namespace

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

} // namespace qorocv::testing
