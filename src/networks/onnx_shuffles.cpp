#include "networks/onnx_shuffles.h"

#include "networks/network_file.h"
#include "networks/onnx_messages.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <set>

namespace qorocv {

using namespace networks;

namespace {

using Sizes = std::vector<std::int64_t>;

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

/// The numbers of a list of 64-bit integers; empty for any other tensor.
Sizes listOf(const ProtobufField* tensor) {
  constexpr std::size_t each = 8;
  if (tensor == nullptr || tensor->numbersOf("data_type") != Sizes{onnx::longIntegers}) {
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

/// Whether a shape takes channels apart into groups: batch, groups, channels, rows, columns.
bool isTakenApart(const Sizes& shape) {
  return shape.size() == 5 &&
         std::all_of(shape.begin() + 1, shape.end(), [](std::int64_t size) { return size > 0; }) &&
         shape[3] <= std::numeric_limits<std::int32_t>::max() / shape[4];
}

/// Whether a shape means the same after five axes as after four: where it takes over the size of an
/// axis, which 0 says, it is that of the batch.
bool isPutTogether(const Sizes& shape) {
  return !shape.empty() && std::count(shape.begin() + 1, shape.end(), 0) == 0;
}

/// What says in a file along which axes a shuffle goes.
struct Shuffle {
  const ProtobufField* shape;
  std::vector<const ProtobufField*> order;
};

/// The shuffle that begins with the node, if one does.
std::optional<Shuffle> shuffleFrom(const ProtobufField& apart, const Graph& graph) {
  if (!isNode(&apart, "Reshape", 2, 0)) {
    return std::nullopt;
  }
  const std::string shapeName = apart.all("input")[1]->text;
  const ProtobufField* const shape = graph.constant(shapeName);
  const ProtobufField* const exchange = graph.onlyReader(apart.textOf("output"));
  if (!isTakenApart(listOf(shape)) || graph.onlyReader(shapeName) != &apart ||
      !isNode(exchange, "Transpose", 1, 1)) {
    return std::nullopt;
  }
  const ProtobufField& order = *exchange->all("attribute").front();
  const ProtobufField* const together = graph.onlyReader(exchange->textOf("output"));
  if (order.textOf("name") != "perm" || order.numbersOf("ints") != Sizes{0, 2, 1, 3, 4} ||
      !isNode(together, "Reshape", 2, 0) ||
      !isPutTogether(listOf(graph.constant(together->all("input")[1]->text)))) {
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

/// Makes four axes of five. What is shorter now leaves place to an empty note, or to one that says
/// nothing to OpenCV, so that no length around it changes. A file that puts the same into other
/// bytes than all writers do stays as it is.
void foldRowsAndColumns(std::string& file, const Shuffle& shuffle) {
  const std::size_t dims = shuffle.shape->only("dims")->place;
  const std::size_t sizes = shuffle.shape->only("raw_data")->place;
  const std::size_t lastAxis = shuffle.order.back()->place;
  if (file[dims] != 5 || file[sizes - 1] != kFiveSizes || shuffle.order.size() != 5 ||
      file[lastAxis - 1] != kInts) {
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
    const ProtobufField model = readProtobuf(file, onnx::kModel);
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
  if (!content) {
    return cv::dnn::readNet(path);
  }
  const std::string quicker = withShufflesAlongFourAxes(*content);
  return quicker == *content ? cv::dnn::readNet(path)
                             : cv::dnn::readNetFromONNX(quicker.data(), quicker.size());
}

} // namespace qorocv
