// The names and numbers are those of graph.proto and the files that it takes in.
#include "networks/network_check.h"
#include "networks/network_file.h"

#include <algorithm>
#include <map>
#include <set>

namespace qorocv {

using namespace networks;

namespace {

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

} // namespace

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

} // namespace qorocv
