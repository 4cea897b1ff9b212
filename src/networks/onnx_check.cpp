// The names and numbers are those of onnx.proto.
#include "networks/network_check.h"
#include "networks/network_file.h"

#include <map>
#include <set>

namespace qorocv {

using namespace networks;

namespace {

using Kind = ProtobufKind;

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

} // namespace

void checkOnnx(const std::string& path) {
  const std::optional<std::string> content = contentOf(path);
  if (content) {
    ofFile(path, [&] {
      const ProtobufField model = readProtobuf(*content, kModel);
      const ProtobufField* const graph = model.only("graph");
      if (graph != nullptr) {
        checkGraph(*graph);
      }
    });
  }
}

} // namespace qorocv
