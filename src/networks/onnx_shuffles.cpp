#include "networks/onnx_shuffles.h"

#include "networks/network_file.h"
#include "networks/protobuf_message.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <set>

namespace qorocv {

using namespace networks;

namespace {

using Sizes = std::vector<std::int64_t>;
using Kind = ProtobufKind;

// The names and numbers are those of onnx.proto. Of an attribute all that it can hold: OpenCV takes
// what it knows of them in an order of its own.
const std::vector<ProtobufSchema> kTensor{{1, "dims", Kind::integers},
                                          {2, "data_type", Kind::integers},
                                          {7, "int64_data", Kind::integers},
                                          {8, "name", Kind::text},
                                          {9, "raw_data", Kind::text}};
const std::vector<ProtobufSchema> kAttribute{
    {1, "name", Kind::text},        {2, "f", Kind::floats},       {3, "i", Kind::integers},
    {4, "s", Kind::text},           {5, "t", Kind::message},      {6, "g", Kind::message},
    {7, "floats", Kind::floats},    {8, "ints", Kind::integers},  {9, "strings", Kind::text},
    {10, "tensors", Kind::message}, {11, "graphs", Kind::message}};
const std::vector<ProtobufSchema> kNode{{1, "input", Kind::text},
                                        {2, "output", Kind::text},
                                        {4, "op_type", Kind::text},
                                        {5, "attribute", Kind::message, &kAttribute},
                                        {7, "domain", Kind::text}};
const std::vector<ProtobufSchema> kValueInfo{{1, "name", Kind::text}};
const std::vector<ProtobufSchema> kGraph{{1, "node", Kind::message, &kNode},
                                         {5, "initializer", Kind::message, &kTensor},
                                         {11, "input", Kind::message, &kValueInfo},
                                         {12, "output", Kind::message, &kValueInfo}};
const std::vector<ProtobufSchema> kModel{{7, "graph", Kind::message, &kGraph}};

constexpr std::int64_t kLongIntegers = 7; // the type of a tensor

/// Which nodes read what others give. A graph's own outputs are read from outside as well.
class Graph {
public:
  explicit Graph(const ProtobufField& graph) {
    for (const ProtobufField* const tensor : graph.all("initializer")) {
      constants_.emplace(tensor->textOf("name"), tensor);
      give(tensor->textOf("name"));
    }
    for (const char* const ends : {"input", "output"}) {
      for (const ProtobufField* const value : graph.all(ends)) {
        readers_[value->textOf("name")].push_back(nullptr);
      }
    }
    for (const ProtobufField* const node : graph.all("node")) {
      for (const ProtobufField* const input : node->all("input")) {
        readers_[input->text].push_back(node);
      }
      for (const ProtobufField* const output : node->all("output")) {
        give(output->text);
      }
    }
  }

  /// The node that alone reads the value; null for none and for several.
  const ProtobufField* onlyReader(const std::string& value) const {
    const auto found = readers_.find(value);
    return found != readers_.end() && found->second.size() == 1 ? found->second.front() : nullptr;
  }

  /// An initial value of that name; null for none.
  const ProtobufField* constant(const std::string& value) const {
    const auto found = constants_.find(value);
    return found == constants_.end() ? nullptr : found->second;
  }

private:
  /// Of a value that is given twice nobody knows which one is read.
  void give(const std::string& value) {
    if (!given_.insert(value).second) {
      readers_[value].push_back(nullptr);
    }
  }

  std::map<std::string, const ProtobufField*> constants_;
  std::set<std::string> given_;
  std::map<std::string, std::vector<const ProtobufField*>> readers_;
};

bool isNode(const ProtobufField* node, const char* op, std::size_t inputs, std::size_t attributes) {
  return node != nullptr && node->textOf("op_type") == op && node->textOf("domain").empty() &&
         node->all("input").size() == inputs && node->all("output").size() == 1 &&
         node->all("attribute").size() == attributes;
}

/// The numbers of a list of 64-bit integers in bytes; empty for any other tensor.
Sizes listOf(const ProtobufField* tensor) {
  constexpr std::size_t each = 8;
  if (tensor == nullptr || tensor->numbersOf("data_type") != Sizes{kLongIntegers} ||
      tensor->countOf("int64_data") != 0) { // which OpenCV would take instead
    return {};
  }
  const std::string bytes = tensor->textOf("raw_data");
  Sizes list(bytes.size() / each);
  if (bytes.size() % each != 0 ||
      tensor->numbersOf("dims") != Sizes{static_cast<std::int64_t>(list.size())}) {
    return {};
  }
  for (std::size_t i = 0; i < list.size() * each; ++i) {
    const auto byte = static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i]));
    list[i / each] |= static_cast<std::int64_t>(byte << 8 * (i % each));
  }
  return list;
}

/// How many numbers a shape has behind its first axis, that of the batch; 0 where one of the sizes
/// is not said, and for more than fit into an int.
std::int64_t volumeOfOne(const Sizes& shape) {
  std::int64_t volume = 1;
  for (std::size_t axis = 1; axis < shape.size(); ++axis) {
    if (shape[axis] < 1 || shape[axis] > std::numeric_limits<std::int32_t>::max() / volume) {
      return 0;
    }
    volume *= shape[axis];
  }
  return volume;
}

/// Whether a shape takes channels apart into groups: batch, groups, channels, rows, columns.
bool isTakenApart(const Sizes& shape) {
  return shape.size() == 5 && volumeOfOne(shape) != 0;
}

/// Whether a shape says all sizes again that the other one says: then OpenCV makes the same of it
/// after four axes as after five.
bool isPutTogether(const Sizes& shape, const Sizes& apart) {
  return shape.size() > 1 && volumeOfOne(shape) == volumeOfOne(apart);
}

/// What says in a file along which axes a shuffle goes.
struct Shuffle {
  const ProtobufField* shape;
  std::vector<const ProtobufField*> order;
};

constexpr std::size_t kNameAndFiveAxes = 6; // fields of an attribute

/// The shuffle that begins with the node, if one does.
std::optional<Shuffle> shuffleFrom(const ProtobufField& apart, const Graph& graph) {
  if (!isNode(&apart, "Reshape", 2, 0)) {
    return std::nullopt;
  }
  const std::string shapeName = apart.all("input")[1]->text;
  const ProtobufField* const shape = graph.constant(shapeName);
  const ProtobufField* const exchange = graph.onlyReader(apart.textOf("output"));
  const Sizes sizes = listOf(shape);
  if (!isTakenApart(sizes) || graph.onlyReader(shapeName) != &apart ||
      !isNode(exchange, "Transpose", 1, 1)) {
    return std::nullopt;
  }
  const ProtobufField& order = *exchange->all("attribute").front();
  const ProtobufField* const together = graph.onlyReader(exchange->textOf("output"));
  if (order.textOf("name") != "perm" || order.numbersOf("ints") != Sizes{0, 2, 1, 3, 4} ||
      order.fields.size() != kNameAndFiveAxes || !isNode(together, "Reshape", 2, 0) ||
      !isPutTogether(listOf(graph.constant(together->all("input")[1]->text)), sizes)) {
    return std::nullopt;
  }
  return Shuffle{shape, order.all("ints")};
}

// ---- In bytes: a field begins with 8 x its number + its kind, and 2 is the kind that has a length.

constexpr char kInts = 8 * 8;
constexpr char kDocOfAttribute = 13 * 8 + 2;
constexpr char kDocOfTensor = 12 * 8 + 2;
constexpr char kFiveSizes = 40;
constexpr char kFourSizes = 32;

/// Makes four axes of five. What is shorter now leaves room for a note, which says nothing to
/// OpenCV, so that no length around it changes. A file that puts the same into other bytes than most
/// writers do stays as it is.
void foldRowsAndColumns(std::string& file, const Shuffle& shuffle) {
  const std::size_t dims = shuffle.shape->only("dims")->place;
  const std::size_t sizes = shuffle.shape->only("raw_data")->place;
  const std::size_t lastAxis = shuffle.order.back()->place;
  if (file[dims] != 5 || file[sizes - 1] != kFiveSizes || shuffle.order.size() != 5 ||
      file[lastAxis - 1] != kInts || file[lastAxis] != 4) {
    return;
  }
  const Sizes shape = listOf(shuffle.shape);
  auto pixels = static_cast<std::uint64_t>(shape[3] * shape[4]);
  file[dims] = 4;
  file[sizes - 1] = kFourSizes;
  for (std::size_t i = sizes + 24; i < sizes + kFourSizes; ++i, pixels >>= 8U) {
    file[i] = static_cast<char>(pixels & 0xFFU);
  }
  file.replace(sizes + kFourSizes, 8, {kDocOfTensor, 6, 'f', 'o', 'l', 'd', 'e', 'd'});
  file.replace(lastAxis - 1, 2, {kDocOfAttribute, 0});
}

} // namespace

std::string withShufflesAlongFourAxes(std::string file) {
  try {
    const ProtobufField model = readProtobuf(file, kModel);
    const ProtobufField* const graph = model.only("graph");
    if (graph != nullptr) {
      const Graph readers(*graph);
      for (const ProtobufField* const node : graph->all("node")) {
        if (const std::optional<Shuffle> shuffle = shuffleFrom(*node, readers)) {
          foldRowsAndColumns(file, *shuffle);
        }
      }
    }
  } catch (const BadMessage&) {
    // which OpenCV will say in its own way
  }
  return file;
}

cv::dnn::Net readOnnx(const std::string& path) {
  const std::optional<std::string> content = contentOf(path);
  const std::string quicker = content ? withShufflesAlongFourAxes(*content) : std::string();
  if (content && quicker != *content) {
    try {
      return cv::dnn::readNetFromONNX(quicker.data(), quicker.size());
    } catch (const cv::Exception& exception) {
      if (exception.code != cv::Error::StsUnsupportedFormat) {
        throw;
      }
      // No message of protobuf in a part that nothing here looks at. Of the file itself OpenCV says
      // so with its name.
    }
  }
  return cv::dnn::readNet(path);
}

} // namespace qorocv
