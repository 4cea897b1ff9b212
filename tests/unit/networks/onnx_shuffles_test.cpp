// Shuffles along four axes give what they gave along five, and nothing else is touched.
#include "make_models/protobuf_writer.h"
#include "networks/network_file.h"
#include "networks/onnx_shuffles.h"
#include "support/shared_files.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>

namespace qorocv {
namespace {

using namespace testing;

using Sizes = std::vector<std::int64_t>;

ProtobufWriter tensor(const char* name, const Sizes& list, ProtobufWriter tensor = {}) {
  std::string bytes(list.size() * 8, '\0');
  std::memcpy(bytes.data(), list.data(), bytes.size());
  return tensor.integer(1, list.size()).integer(2, 7).text(8, name).text(9, bytes);
}

ProtobufWriter node(const char* op, const std::vector<const char*>& inputs, const char* output) {
  ProtobufWriter node;
  for (const char* const input : inputs) {
    node.text(1, input);
  }
  node.text(2, output).text(3, output).text(4, op);
  return node;
}

ProtobufWriter value(const char* name, const std::vector<std::uint64_t>& sizes) {
  ProtobufWriter shape;
  for (const std::uint64_t size : sizes) {
    shape.message(1, ProtobufWriter().integer(1, size));
  }
  return ProtobufWriter().text(1, name).message(
      2, ProtobufWriter().message(1, ProtobufWriter().integer(1, 1).message(2, shape)));
}

/// A network that shuffles its input of 6 channels, 4 rows and 5 columns.
struct ShuffleNetwork {
  Sizes apart{0, 2, 3, 4, 5};
  Sizes axes{0, 2, 1, 3, 4};
  Sizes together{0, 6, 4, 5};
  std::uint64_t batch = 1;
  const char* exchange = "Transpose";
  const char* domain = "";
  bool packed = false;      // the axes
  ProtobufWriter morePerm;  // fields of the axes' attribute
  ProtobufWriter moreApart; // fields of the first shape
  /// Of the graph: fields by their numbers, behind all others.
  std::vector<std::pair<std::uint32_t, ProtobufWriter>> more;

  std::string file() const {
    ProtobufWriter perm = morePerm;
    perm.text(1, "perm").integer(20, 7);
    if (packed) {
      perm.packedIntegers(8, {axes.begin(), axes.end()});
    } else {
      for (const std::int64_t axis : axes) {
        perm.integer(8, static_cast<std::uint64_t>(axis));
      }
    }
    ProtobufWriter graph;
    graph.message(1, node("Reshape", {"x", "apart"}, "groups"))
        .message(1, node(exchange, {"groups"}, "exchanged").message(5, perm).text(7, domain))
        .message(1, node("Reshape", {"exchanged", "together"}, "y"))
        .message(5, tensor("apart", apart, moreApart))
        .message(5, tensor("together", together))
        .message(11, value("x", {batch, 6, 4, 5}))
        .message(12, value("y", {batch, 6, 4, 5}));
    for (const auto& [number, field] : more) {
      graph.message(number, field);
    }
    return ProtobufWriter()
        .integer(1, 7)
        .message(7, graph)
        .message(8, ProtobufWriter().integer(2, 11))
        .bytes();
  }
};

cv::Mat outputOf(const std::string& file, const cv::Mat& input, const char* output) {
  cv::dnn::Net net = cv::dnn::readNetFromONNX(file.data(), file.size());
  net.setInput(input, "x");
  return net.forward(output).clone();
}

bool areEqual(const cv::Mat& a, const cv::Mat& b) {
  return a.size == b.size && std::memcmp(a.data, b.data, a.total() * a.elemSize()) == 0;
}

cv::Mat noise(const std::vector<int>& shape) {
  cv::Mat blob(shape, CV_32F);
  cv::RNG(7).fill(blob, cv::RNG::UNIFORM, -1, 1);
  return blob;
}

/// The network for persons.
std::string personFile() {
  return networks::contentOf(realModels() + "model07.onnx").value();
}

std::size_t timesIn(const std::string& text, const std::string& part) {
  std::size_t times = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++times;
  }
  return times;
}

TEST(OnnxShuffles, takesEveryShuffleOfTheNetworkForPersonsAlongFourAxes) {
  const std::string file = personFile();
  const std::string quicker = withShufflesAlongFourAxes(file);
  EXPECT_EQ(quicker.size(), file.size());
  EXPECT_EQ(timesIn(quicker, "folded"), 12U);
}

TEST(OnnxShuffles, leavesTheNumbersOfTheNetworkForPersonsAsTheyWere) {
  const char* const scores = "save_infer_model/scale_0.tmp_1";
  const std::string file = personFile();
  const cv::Mat input = noise({1, 3, 192, 192});
  EXPECT_TRUE(areEqual(outputOf(withShufflesAlongFourAxes(file), input, scores),
                       outputOf(file, input, scores)));
}

class FoldedShuffle : public ::testing::Test {
protected:
  static void expectFolded(const ShuffleNetwork& network) {
    const std::string file = network.file();
    const std::string quicker = withShufflesAlongFourAxes(file);
    ASSERT_NE(quicker, file);
    const cv::Mat input = noise({static_cast<int>(network.batch), 6, 4, 5});
    EXPECT_TRUE(areEqual(outputOf(quicker, input, "y"), outputOf(file, input, "y")));
  }
  static void expectLeft(const ShuffleNetwork& network) {
    const std::string file = network.file();
    EXPECT_EQ(withShufflesAlongFourAxes(file), file);
  }
};

TEST_F(FoldedShuffle, givesEveryNumberItsOldPlace) {
  expectFolded({});
}

TEST_F(FoldedShuffle, takesBatchesOfEverySize) {
  ShuffleNetwork network;
  network.batch = 3;
  for (const std::int64_t batch : {0, 3, -1}) {
    SCOPED_TRACE(batch);
    network.apart[0] = batch;
    expectFolded(network);
  }
}

TEST_F(FoldedShuffle, takesOtherNumbersOfGroups) {
  ShuffleNetwork network;
  network.apart = {0, 3, 2, 4, 5};
  expectFolded(network);
}

TEST_F(FoldedShuffle, mayBePutTogetherInAnotherWay) {
  ShuffleNetwork network;
  for (const Sizes& together : {Sizes{1, 6, 4, 5}, Sizes{-1, 6, 4, 5}, Sizes{0, 2, 60}}) {
    network.together = together;
    expectFolded(network);
  }
}

TEST_F(FoldedShuffle, isNoOtherOrderOfAxes) {
  ShuffleNetwork network;
  for (const Sizes& axes : {Sizes{0, 1, 2, 3, 4}, Sizes{0, 2, 1, 4, 3}, Sizes{0, 2, 1, 3}}) {
    network.axes = axes;
    expectLeft(network);
  }
}

TEST_F(FoldedShuffle, isNoOtherNumberOfAxes) {
  ShuffleNetwork network;
  for (const Sizes& apart : {Sizes{0, 2, 3, 20}, Sizes{0, 2, 3, 4, 5, 1}}) {
    network.apart = apart;
    expectLeft(network);
  }
}

TEST_F(FoldedShuffle, hasSizesThatAreKnown) {
  ShuffleNetwork network;
  for (const Sizes& apart : {Sizes{1, 2, 3, -1, 5}, Sizes{1, 2, 3, 4, -1}, Sizes{1, 2, 3, 0, 5},
                             Sizes{1, 0, 3, 4, 5}, Sizes{1, 2, 3, 1 << 20, 1 << 20}}) {
    network.apart = apart;
    expectLeft(network);
  }
}

// Four axes more or less would be counted from the wrong end.
TEST_F(FoldedShuffle, isPutTogetherByAllItsSizes) {
  ShuffleNetwork network;
  for (const Sizes& together :
       {Sizes{0, 6, 4, 0}, Sizes{0, 6, 4, -1}, Sizes{5}, Sizes{4, 5}, Sizes{}}) {
    network.together = together;
    expectLeft(network);
  }
}

TEST_F(FoldedShuffle, hasItsSizesInBytesAlone) {
  ShuffleNetwork network;
  network.moreApart.integer(7, 0);
  expectLeft(network);
}

TEST_F(FoldedShuffle, hasItsOrderInWholeNumbersAlone) {
  ShuffleNetwork network;
  network.morePerm.integer(3, 0);
  expectLeft(network);
  network.morePerm = ProtobufWriter().packedNumbers(7, {0, 2, 1, 3, 4});
  expectLeft(network);
}

TEST_F(FoldedShuffle, isOnnxsOwn) {
  ShuffleNetwork network;
  network.exchange = "Transport";
  expectLeft(network);
  network = {};
  network.domain = "another";
  expectLeft(network);
}

TEST_F(FoldedShuffle, isReadByNobodyElse) {
  for (const char* const value : {"groups", "exchanged", "apart"}) {
    SCOPED_TRACE(value);
    ShuffleNetwork network;
    network.more = {{1, node("Relu", {value}, "z")}};
    expectLeft(network);
  }
}

TEST_F(FoldedShuffle, isReadByNobodyOutside) {
  for (const char* const value : {"groups", "exchanged"}) {
    SCOPED_TRACE(value);
    ShuffleNetwork network;
    network.more = {{12, ProtobufWriter().text(1, value)}};
    expectLeft(network);
  }
  ShuffleNetwork network;
  network.more = {{11, ProtobufWriter().text(1, "apart")}};
  expectLeft(network);
}

TEST_F(FoldedShuffle, hasNamesThatAreGivenOnce) {
  ShuffleNetwork network;
  network.more = {{1, node("Relu", {"x"}, "groups")}};
  expectLeft(network);
  network.more = {{5, tensor("apart", {0, 3, 2, 4, 5})}};
  expectLeft(network);
}

TEST_F(FoldedShuffle, isWrittenAsMostWritersDo) {
  ShuffleNetwork network;
  network.packed = true;
  expectLeft(network);

  // The axis 4 in two bytes instead of one.
  network = {};
  network.axes = {0, 2, 1, 3, 4 + 128};
  std::string file = network.file();
  const std::size_t at = file.find("\x40\x84\x01");
  ASSERT_NE(at, std::string::npos);
  file[at + 2] = '\0';
  EXPECT_EQ(withShufflesAlongFourAxes(file), file);
}

TEST_F(FoldedShuffle, isLookedForInWholeGraphsAlone) {
  const std::string file = ShuffleNetwork().file();
  const std::size_t behindTheGraph = file.size() - 4; // the version of the operations
  for (std::size_t length = 0; length < behindTheGraph; ++length) {
    const std::string part = file.substr(0, length);
    EXPECT_EQ(withShufflesAlongFourAxes(part), part) << length;
  }
  EXPECT_EQ(withShufflesAlongFourAxes("no network"), "no network");
}

class ReadOnnx : public ::testing::Test {
protected:
  std::string write(const std::string& content) const {
    const std::string path = (directory_ / "network.onnx").string();
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  /// What OpenCV says of the file, here and by itself.
  static void expectSameComplaint(const std::string& path) {
    EXPECT_EQ(complaintOf([&] { readOnnx(path); }), complaintOf([&] { cv::dnn::readNet(path); }));
    EXPECT_NE(complaintOf([&] { readOnnx(path); }), "");
  }

  testing::TemporaryDirectory directory_;

private:
  template <typename Work> static std::string complaintOf(const Work& work) {
    try {
      work();
    } catch (const cv::Exception& exception) {
      return exception.what();
    }
    return "";
  }
};

TEST_F(ReadOnnx, readsWhatGivesTheSameNumbers) {
  const std::string path = write(personFile());
  const char* const scores = "save_infer_model/scale_0.tmp_1";
  const cv::Mat input = noise({1, 3, 192, 192});
  cv::dnn::Net ours = readOnnx(path);
  cv::dnn::Net openCvs = cv::dnn::readNet(path);
  ours.setInput(input, "x");
  openCvs.setInput(input, "x");
  EXPECT_TRUE(areEqual(ours.forward(scores), openCvs.forward(scores)));
}

TEST_F(ReadOnnx, complainsAsOpenCvOfWhatIsNotThere) {
  expectSameComplaint("no/such/network.onnx");
}

TEST_F(ReadOnnx, complainsAsOpenCvOfDamageBehindAShuffle) {
  std::string file = ShuffleNetwork().file();
  file[file.size() - 2] = '\x07'; // a kind of field that there is not
  ASSERT_NE(withShufflesAlongFourAxes(file), file);
  expectSameComplaint(write(file));
}

} // namespace
} // namespace qorocv
