#include "model_contents.h"
#include "protobuf_writer.h"

#include <cstdint>
#include <string_view>

namespace qorocv::testing {
namespace {

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

} // namespace

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

} // namespace qorocv::testing
