#include "model_contents.h"
#include "protobuf_writer.h"

#include <cstdint>
#include <string_view>

namespace qorocv::testing {
namespace {

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

} // namespace

std::string tensorflowText() {
  return kTensorflowText;
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

} // namespace qorocv::testing
