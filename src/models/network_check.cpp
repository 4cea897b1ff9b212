#include "models/network_check.h"

#include "models/protobuf_message.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace qorocv {

namespace {

// Nothing where the file cannot be opened: OpenCV says so in its own way.
std::optional<std::string> contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file.good()) {
    return std::nullopt;
  }
  return std::string(std::istreambuf_iterator<char>(file), {});
}

[[noreturn]] void refuse(const std::string& path, const std::string& what) {
  CV_Error(cv::Error::StsParseError, path + ": " + what);
}

/// Runs a check of a file; what is bad in it is refused with the path.
template <class Check> void ofFile(const std::string& path, const Check& check) {
  try {
    check();
  } catch (const BadMessage& bad) {
    refuse(path, bad.what());
  }
}

// ---- Tensors

/// How many numbers a tensor of these sizes has; no dimensions stand for one.
std::size_t volume(const std::vector<std::int64_t>& sizes, const std::string& of) {
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  std::int64_t numbers = 1;
  for (const std::int64_t size : sizes) {
    if (size < 0 || size > most || (numbers *= size) > most) {
      throw BadMessage(of + " has impossible sizes");
    }
  }
  return static_cast<std::size_t>(numbers);
}

/// `bytes` of numbers that have `each`, against the sizes.
void checkBytes(std::size_t bytes, std::size_t each, std::size_t numbers, const std::string& of) {
  if (bytes != numbers * each) {
    throw BadMessage(of + " has " + std::to_string(bytes) + " bytes instead of " +
                     std::to_string(numbers * each));
  }
}

// ---- TensorFlow. Names and numbers of graph.proto and the files that it takes in.

using Kind = ProtobufKind;

const std::vector<ProtobufSchema> kDim{{1, "size", Kind::integers}};
const std::vector<ProtobufSchema> kShape{{2, "dim", Kind::message, &kDim}};
const std::vector<ProtobufSchema> kTensor{
    {1, "dtype", Kind::integers},      {2, "tensor_shape", Kind::message, &kShape},
    {4, "tensor_content", Kind::text}, {5, "float_val", Kind::floats},
    {6, "double_val", Kind::doubles},  {7, "int_val", Kind::integers},
    {13, "half_val", Kind::integers}};
const std::vector<ProtobufSchema> kList{{3, "i", Kind::integers}};
const std::vector<ProtobufSchema> kValue{{1, "list", Kind::message, &kList},
                                         {2, "s", Kind::text},
                                         {3, "i", Kind::integers},
                                         {4, "f", Kind::floats},
                                         {5, "b", Kind::integers},
                                         {6, "type", Kind::integers},
                                         {7, "shape", Kind::message, &kShape},
                                         {8, "tensor", Kind::message, &kTensor},
                                         {9, "placeholder", Kind::text},
                                         {10, "func", Kind::message}};
const std::vector<ProtobufSchema> kAttribute{{1, "key", Kind::text},
                                             {2, "value", Kind::message, &kValue}};
const std::vector<ProtobufSchema> kNode{{1, "name", Kind::text},
                                        {2, "op", Kind::text},
                                        {3, "input", Kind::text},
                                        {5, "attr", Kind::message, &kAttribute}};
const std::vector<ProtobufSchema> kGraph{{1, "node", Kind::message, &kNode}};

struct Node {
  std::string name;
  std::string op;
  std::vector<std::string> inputs; // but for those of control, without numbers of outputs
  std::map<std::string, const ProtobufField*> attributes; // their values
};

void checkOutputNumber(const Node& node, const std::string& input) {
  const std::size_t colon = input.find(':');
  if (colon != std::string::npos &&
      (colon + 1 == input.size() || input.size() > colon + 4 ||
       input.find_first_not_of("0123456789", colon + 1) != std::string::npos)) {
    throw BadMessage("node " + node.name + " has the input " + input);
  }
}

Node nodeOf(const ProtobufField& message) {
  Node node;
  node.name = message.textOf("name");
  node.op = message.textOf("op");
  for (const ProtobufField* const input : message.all("input")) {
    if (input->text.empty() || input->text.front() != '^') {
      checkOutputNumber(node, input->text);
      node.inputs.push_back(input->text.substr(0, input->text.find(':')));
    }
  }
  for (const ProtobufField* const attribute : message.all("attr")) {
    const ProtobufField* const value = attribute->only("value");
    if (value == nullptr) {
      continue;
    }
    if (value->fields.size() > 1 ||
        !node.attributes.emplace(attribute->textOf("key"), value).second) {
      throw BadMessage("node " + node.name + " has several values in one");
    }
  }
  return node;
}

std::vector<Node> nodesOf(const ProtobufField& graph) {
  std::vector<Node> nodes;
  for (const ProtobufField* const message : graph.all("node")) {
    nodes.push_back(nodeOf(*message));
  }
  return nodes;
}

const ProtobufField* attributeOf(const Node& node, const std::string& name) {
  const auto found = node.attributes.find(name);
  return found == node.attributes.end() ? nullptr : found->second;
}

enum DataType {
  anotherType = 0,
  floats = 1,
  doubles = 2,
  integers = 3,
  quantised = 12,
  halves = 19
};

DataType typeOf(const ProtobufField& tensor) {
  static const std::map<std::string, DataType> words{{"DT_FLOAT", floats},
                                                     {"DT_DOUBLE", doubles},
                                                     {"DT_INT32", integers},
                                                     {"DT_QUINT8", quantised},
                                                     {"DT_HALF", halves}};
  const auto word = words.find(tensor.textOf("dtype"));
  if (word != words.end()) {
    return word->second;
  }
  const std::vector<std::int64_t> numbers = tensor.numbersOf("dtype");
  const std::int64_t number = numbers.empty() ? 0 : numbers.back();
  const bool known = std::any_of(words.begin(), words.end(),
                                 [&](const auto& type) { return type.second == number; });
  return known ? static_cast<DataType>(number) : anotherType;
}

std::size_t bytesOf(DataType type) {
  return type == doubles ? 8 : type == halves ? 2 : type == quantised ? 1 : 4;
}

std::vector<std::int64_t> shapeOf(const ProtobufField& tensor) {
  std::vector<std::int64_t> sizes;
  const ProtobufField* const shape = tensor.only("tensor_shape");
  if (shape != nullptr) {
    for (const ProtobufField* const dimension : shape->all("dim")) {
      const std::vector<std::int64_t> size = dimension->numbersOf("size");
      sizes.push_back(size.empty() ? 0 : size.back());
    }
  }
  return sizes;
}

const ProtobufField* tensorOf(const Node& constant) {
  const ProtobufField* const value = attributeOf(constant, "value");
  return value == nullptr ? nullptr : value->only("tensor");
}

void checkTensor(const Node& constant) {
  const ProtobufField* const tensor = tensorOf(constant);
  const DataType type = tensor == nullptr ? anotherType : typeOf(*tensor);
  if (type == anotherType) { // which OpenCV refuses
    return;
  }
  const std::string of = "the tensor of node " + constant.name;
  const std::size_t numbers = volume(shapeOf(*tensor), of);
  const std::size_t bytes = tensor->textOf("tensor_content").size();
  if (bytes != 0) {
    checkBytes(bytes, bytesOf(type), numbers, of);
  } else if (tensor->countOf(type == floats     ? "float_val"
                             : type == doubles  ? "double_val"
                             : type == integers ? "int_val"
                                                : "half_val") > numbers) {
    throw BadMessage(of + " has too many numbers");
  }
}

// How many inputs OpenCV takes of an operation without counting them.
std::size_t leastInputs(const Node& node) {
  static const std::map<std::string, std::size_t> least{{"Const", 0},
                                                        {"Placeholder", 0},
                                                        {"NoOp", 0},
                                                        {"Reshape", 2},
                                                        {"Transpose", 2},
                                                        {"ExpandDims", 2},
                                                        {"ConcatV2", 2},
                                                        {"Concat", 2},
                                                        {"Split", 2},
                                                        {"Slice", 3},
                                                        {"StridedSlice", 4},
                                                        {"Mul", 2},
                                                        {"RealDiv", 2},
                                                        {"Conv2D", 2},
                                                        {"Conv3D", 2},
                                                        {"DepthwiseConv2dNative", 2},
                                                        {"MatMul", 2},
                                                        {"Pad", 2},
                                                        {"MirrorPad", 2},
                                                        {"SpaceToBatchND", 3},
                                                        {"FusedBatchNorm", 5},
                                                        {"FusedBatchNormV3", 5},
                                                        {"Conv2DBackpropInput", 3},
                                                        {"ResizeNearestNeighbor", 2},
                                                        {"ResizeBilinear", 2},
                                                        {"FusedResizeAndPadConv2D", 4},
                                                        {"PriorBox", 2},
                                                        {"CropAndResize", 3},
                                                        {"Mean", 2},
                                                        {"Sum", 2},
                                                        {"Max", 2},
                                                        {"ClipByValue", 3},
                                                        {"ArgMax", 2},
                                                        {"ArgMin", 2},
                                                        {"MaxPoolGrad", 3}};
  const auto found = least.find(node.op);
  return found == least.end() ? 1 : found->second;
}

/// The nodes of both files that operations can take tensors from, by their names.
using Constants = std::map<std::string, const ProtobufField*>;

void checkIntegers(const Node& node, std::size_t input, const Constants& constants,
                   std::size_t least) {
  const auto constant = constants.find(node.inputs[input]);
  if (constant == constants.end()) { // of another operation, or what OpenCV does not find either
    return;
  }
  const ProtobufField& tensor = *constant->second;
  const std::size_t bytes = tensor.textOf("tensor_content").size();
  const std::size_t count = bytes != 0 ? bytes / 4 : tensor.countOf("int_val");
  if (typeOf(tensor) != integers || count < least) {
    throw BadMessage("node " + node.name + " has the input " + node.inputs[input] + " without " +
                     std::to_string(least) + " integers");
  }
}

/// OpenCV takes the axis of these from the list of integers alone.
void checkAxis(const Node& node, std::size_t input, const Constants& constants) {
  const auto constant = constants.find(node.inputs[input]);
  if (constant != constants.end() && constant->second->countOf("int_val") == 0) {
    throw BadMessage("node " + node.name + " has no axis in " + node.inputs[input]);
  }
}

void checkParameters(const Node& node, const Constants& constants) {
  const auto isOneOf = [&](std::initializer_list<const char*> ops) {
    return std::any_of(ops.begin(), ops.end(), [&](const char* op) { return node.op == op; });
  };
  if (isOneOf({"ExpandDims"})) {
    checkAxis(node, 1, constants);
  } else if (isOneOf({"ConcatV2"})) {
    checkAxis(node, node.inputs.size() - 1, constants);
  } else if (isOneOf({"Concat", "Split"})) {
    checkAxis(node, 0, constants);
  } else if (isOneOf({"Reshape", "Transpose", "Pad", "MirrorPad", "Mean", "Sum", "Max", "ArgMax",
                      "ArgMin"})) {
    checkIntegers(node, 1, constants, 1);
  } else if (isOneOf({"ResizeNearestNeighbor", "ResizeBilinear"}) && node.inputs.size() == 2) {
    checkIntegers(node, 1, constants, 2);
  } else if (isOneOf({"CropAndResize"}) && node.inputs.size() > 3) {
    checkIntegers(node, 3, constants, 2);
  } else if (isOneOf({"Conv2DBackpropInput"})) {
    checkIntegers(node, 0, constants, 4);
  } else if (isOneOf({"Slice", "StridedSlice"})) {
    for (std::size_t i = 1; i < node.inputs.size(); ++i) {
      checkIntegers(node, i, constants, 1);
    }
  } else if (isOneOf({"SpaceToBatchND"})) {
    checkIntegers(node, 1, constants, 2);
    checkIntegers(node, 2, constants, 4);
  }
}

void checkAttributes(const Node& node) {
  const ProtobufField* const format = attributeOf(node, "data_format");
  const bool hasDepth = format != nullptr && format->textOf("s") == "NDHWC";
  for (const char* const name : {"strides", "ksize"}) {
    const ProtobufField* const value = attributeOf(node, name);
    const ProtobufField* const list = value == nullptr ? nullptr : value->only("list");
    if (hasDepth && list != nullptr && list->countOf("i") < 5) {
      throw BadMessage("node " + node.name + " has too few " + name);
    }
  }
  const ProtobufField* const squeezed = attributeOf(node, "squeeze_dims");
  if (node.op == "Squeeze" && squeezed != nullptr) {
    const ProtobufField* const list = squeezed->only("list");
    if (list == nullptr || list->countOf("i") == 0) {
      throw BadMessage("node " + node.name + " squeezes no dimension");
    }
  }
}

/// OpenCV puts y and x of pairs of outputs the other way round.
void checkPairs(const Node& node, const Constants& constants) {
  const ProtobufField* const transposed = attributeOf(node, "loc_pred_transposed");
  if (transposed == nullptr || transposed->fields.empty()) {
    return;
  }
  for (const std::string& input : node.inputs) {
    const auto constant = constants.find(input);
    if (constant == constants.end()) {
      continue;
    }
    const std::vector<std::int64_t> sizes = shapeOf(*constant->second);
    if (sizes.empty() || sizes.back() % 2 != 0) {
      throw BadMessage("node " + node.name + " has no pairs of outputs");
    }
  }
}

bool passesOn(const Node& node) {
  return node.op == "Identity" || node.op == "Dropout" || node.op == "PlaceholderWithDefault";
}

/// OpenCV follows these to what they pass on.
void checkThatTheyEnd(const std::vector<Node>& nodes) {
  std::map<std::string, std::string> passed;
  for (const Node& node : nodes) {
    if (passesOn(node)) {
      passed[node.name] = node.inputs.empty() ? std::string() : node.inputs.front();
    }
  }
  for (const auto& [name, input] : passed) {
    std::string at = input;
    for (std::size_t steps = 0; passed.count(at) != 0; ++steps) {
      if (steps > passed.size()) {
        throw BadMessage("node " + name + " leads to itself");
      }
      at = passed[at];
    }
  }
}

void checkNodes(const std::vector<Node>& nodes, const Constants& constants,
                const std::set<std::string>& names) {
  for (const Node& node : nodes) {
    if (node.inputs.size() < leastInputs(node)) {
      throw BadMessage("node " + node.name + " has too few inputs");
    }
    for (const std::string& input : node.inputs) {
      if (names.count(input) == 0) {
        throw BadMessage("node " + node.name + " has the input " + input + ", which is nowhere");
      }
    }
    checkParameters(node, constants);
    checkAttributes(node);
    checkPairs(node, constants);
  }
}

void addNames(const std::vector<Node>& nodes, std::set<std::string>& names, Constants& constants) {
  for (const Node& node : nodes) {
    names.insert(node.name);
    if (node.op == "Const" && tensorOf(node) != nullptr) {
      constants.emplace(node.name, tensorOf(node));
    }
  }
}

// ---- ONNX. Names and numbers of onnx.proto.

namespace onnx {

const std::vector<ProtobufSchema> kTensor{
    {1, "dims", Kind::integers},       {2, "data_type", Kind::integers},
    {4, "float_data", Kind::floats},   {5, "int32_data", Kind::integers},
    {7, "int64_data", Kind::integers}, {8, "name", Kind::text},
    {9, "raw_data", Kind::text},       {10, "double_data", Kind::doubles}};
const std::vector<ProtobufSchema> kAttribute{
    {1, "name", Kind::text}, {3, "i", Kind::integers}, {5, "t", Kind::message, &kTensor}};
const std::vector<ProtobufSchema> kNode{{1, "input", Kind::text},
                                        {2, "output", Kind::text},
                                        {3, "name", Kind::text},
                                        {4, "op_type", Kind::text},
                                        {5, "attribute", Kind::message, &kAttribute}};
const std::vector<ProtobufSchema> kValueInfo{{1, "name", Kind::text}};
const std::vector<ProtobufSchema> kGraph{{1, "node", Kind::message, &kNode},
                                         {5, "initializer", Kind::message, &kTensor},
                                         {11, "input", Kind::message, &kValueInfo}};
const std::vector<ProtobufSchema> kModel{{7, "graph", Kind::message, &kGraph}};

enum DataType {
  floats = 1,
  unsignedBytes = 2,
  bytes = 3,
  integers = 6,
  longIntegers = 7,
  doubles = 11
};

/// OpenCV copies as many numbers as the sizes say.
void checkTensor(const ProtobufField& tensor) {
  const std::string of = "the tensor " + tensor.textOf("name");
  const std::vector<std::int64_t> types = tensor.numbersOf("data_type");
  const std::size_t numbers = volume(tensor.numbersOf("dims"), of);
  const std::size_t raw = tensor.textOf("raw_data").size();
  const auto check = [&](const char* list, std::size_t each) {
    const std::size_t listed = tensor.countOf(list);
    if (listed != 0) {
      checkBytes(listed, 1, numbers, of);
    } else if (raw != 0 || tensor.countOf("float_data") + tensor.countOf("int32_data") +
                                   tensor.countOf("int64_data") + tensor.countOf("double_data") !=
                               0) {
      checkBytes(raw, each, numbers, of);
    }
  };
  switch (types.empty() ? 0 : types.back()) {
  case floats:
    return check("float_data", 4);
  case unsignedBytes:
  case bytes:
    return check("int32_data", 1);
  case integers:
    return check("int32_data", 4);
  case longIntegers:
    return check("int64_data", 8);
  case doubles:
    if (tensor.countOf("double_data") != 0) {
      checkBytes(tensor.countOf("double_data"), 1, numbers, of);
    }
    return;
  default: // which OpenCV refuses
    return;
  }
}

std::size_t leastInputs(const std::string& op) {
  static const std::map<std::string, std::size_t> least{{"Constant", 0},
                                                        {"RandomNormalLike", 0},
                                                        {"Add", 2},
                                                        {"Sub", 2},
                                                        {"Mul", 2},
                                                        {"Div", 2},
                                                        {"Pow", 2},
                                                        {"MatMul", 2},
                                                        {"Gemm", 2},
                                                        {"Conv", 2},
                                                        {"PRelu", 2},
                                                        {"Expand", 2},
                                                        {"Equal", 2},
                                                        {"Gather", 2},
                                                        {"ConvTranspose", 2},
                                                        {"BatchNormalization", 5},
                                                        {"InstanceNormalization", 3},
                                                        {"Resize", 2},
                                                        {"LSTM", 3},
                                                        {"GRU", 3},
                                                        {"QuantizeLinear", 2},
                                                        {"DequantizeLinear", 2}};
  const auto found = least.find(op);
  return found == least.end() ? 1 : found->second;
}

void checkNode(const ProtobufField& node, const std::set<std::string>& names) {
  const std::string op = node.textOf("op_type");
  const std::string of = "node " + node.textOf("name") + " (" + op + ")";
  const std::vector<const ProtobufField*> inputs = node.all("input");
  if (inputs.size() < leastInputs(op) || node.all("output").empty()) {
    throw BadMessage(of + " has too few inputs or outputs");
  }
  for (const ProtobufField* const input : inputs) {
    if (!input->text.empty() && names.count(input->text) == 0) { // an optional one has no name
      throw BadMessage(of + " has the input " + input->text + ", which no node before it gives");
    }
  }
  for (const ProtobufField* const attribute : node.all("attribute")) {
    const ProtobufField* const tensor = attribute->only("t");
    if (tensor != nullptr) {
      checkTensor(*tensor);
    }
    const std::string name = attribute->textOf("name");
    const std::vector<std::int64_t> value = attribute->numbersOf("i");
    if ((name == "group" || name == "num_groups" || name == "blocksize") && !value.empty() &&
        value.back() < 1) {
      throw BadMessage(std::string(of).append(" has no ").append(name));
    }
  }
}

void checkGraph(const ProtobufField& graph) {
  std::set<std::string> names;
  for (const ProtobufField* const tensor : graph.all("initializer")) {
    checkTensor(*tensor);
    names.insert(tensor->textOf("name"));
  }
  for (const ProtobufField* const input : graph.all("input")) {
    names.insert(input->textOf("name"));
  }
  for (const ProtobufField* const node : graph.all("node")) {
    checkNode(*node, names);
    for (const ProtobufField* const output : node->all("output")) {
      names.insert(output->text);
    }
  }
}

} // namespace onnx

// ---- Caffe. Names and numbers of caffe.proto; "layers" are those of its first form.

namespace caffe {

const std::vector<ProtobufSchema> kLayer{{1, "name", Kind::text}, {7, "blobs", Kind::message}};
const std::vector<ProtobufSchema> kFirstLayer{{4, "name", Kind::text}, {6, "blobs", Kind::message}};
const std::vector<ProtobufSchema> kNetwork{{2, "layers", Kind::message, &kFirstLayer},
                                           {100, "layer", Kind::message, &kLayer}};

std::vector<const ProtobufField*> layersOf(const ProtobufField& network) {
  std::vector<const ProtobufField*> layers = network.all("layer");
  const std::vector<const ProtobufField*> first = network.all("layers");
  layers.insert(layers.end(), first.begin(), first.end());
  return layers;
}

/// What a layer's parameters say under this name, wherever in them.
void checkDivisor(const ProtobufField& message, const char* name, const std::string& of) {
  for (const ProtobufField& field : message.fields) {
    if (field.name == name && (field.numbers.empty() || field.numbers.back() < 1 ||
                               field.numbers.back() > std::numeric_limits<std::int32_t>::max())) {
      throw BadMessage(of + " has the " + name + " " + field.text);
    }
    checkDivisor(field, name, of);
  }
}

/// Where a layer has no statistics of its own to go by, OpenCV sets two of its blobs to what they
/// are without any.
bool setsBlobs(const ProtobufField& layer) {
  const ProtobufField* const parameters = layer.only("batch_norm_param");
  const std::string global = parameters == nullptr ? "" : parameters->textOf("use_global_stats");
  return !global.empty() && global != "true" && global != "t" && global != "1";
}

/// Takes the layers' blobs out of `blobs`, which has the number of each layer's by its name: OpenCV
/// gives them to the first layer of a name only.
void checkLayer(const ProtobufField& layer, std::map<std::string, std::size_t>& blobs) {
  const std::string name = layer.textOf("name");
  for (const char* const divisor : {"group", "num_output"}) {
    checkDivisor(layer, divisor, "layer " + name);
  }
  const std::size_t own = blobs[name];
  blobs[name] = 0;
  if (setsBlobs(layer) && own < 2) {
    throw BadMessage("layer " + name + " has no statistics");
  }
}

std::map<std::string, std::size_t> blobsOf(const std::string& weights) {
  std::map<std::string, std::size_t> blobs;
  const ProtobufField network = readProtobuf(weights, kNetwork);
  for (const ProtobufField* const layer : layersOf(network)) {
    blobs.emplace(layer->textOf("name"), 0).first->second += layer->all("blobs").size();
  }
  return blobs;
}

} // namespace caffe

// ---- Layers

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

void checkCaffe(const std::string& description, const std::string& weights) {
  const std::optional<std::string> text = contentOf(description);
  const std::optional<std::string> bytes = contentOf(weights);
  if (!text || !bytes) {
    return;
  }
  std::map<std::string, std::size_t> blobs;
  ofFile(weights, [&] { blobs = caffe::blobsOf(*bytes); });
  ofFile(description, [&] {
    const ProtobufField network = readProtobufText(*text);
    for (const ProtobufField* const layer : caffe::layersOf(network)) {
      caffe::checkLayer(*layer, blobs);
    }
  });
}

void checkTensorflow(const std::string& weights, const std::string& graph) {
  const std::optional<std::string> bytes = contentOf(weights);
  const std::optional<std::string> text = contentOf(graph);
  if (!bytes || !text) {
    return;
  }
  ProtobufField binary;
  ProtobufField letters;
  std::vector<Node> ofWeights;
  std::vector<Node> ofGraph;
  ofFile(weights, [&] {
    binary = readProtobuf(*bytes, kGraph);
    ofWeights = nodesOf(binary);
    std::for_each(ofWeights.begin(), ofWeights.end(), checkTensor);
    checkThatTheyEnd(ofWeights);
  });
  ofFile(graph, [&] {
    letters = readProtobufText(*text);
    ofGraph = nodesOf(letters);
    std::for_each(ofGraph.begin(), ofGraph.end(), checkTensor);
    checkThatTheyEnd(ofGraph);
  });
  // Without a text graph the weights are one.
  ofFile(ofGraph.empty() ? weights : graph, [&] {
    std::set<std::string> names;
    Constants constants;
    addNames(ofWeights, names, constants);
    addNames(ofGraph, names, constants);
    checkNodes(ofGraph.empty() ? ofWeights : ofGraph, constants, names);
  });
}

void checkOnnx(const std::string& path) {
  const std::optional<std::string> bytes = contentOf(path);
  if (bytes) {
    ofFile(path, [&] {
      const ProtobufField model = readProtobuf(*bytes, onnx::kModel);
      const ProtobufField* const graph = model.only("graph");
      if (graph != nullptr) {
        onnx::checkGraph(*graph);
      }
    });
  }
}

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
