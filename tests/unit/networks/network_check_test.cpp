// What in a network's files leads OpenCV astray, and what does not.
#include "make_models/made_models.h"
#include "make_models/protobuf_writer.h"
#include "networks/network_check.h"
#include "qorocv460/qorocv460.h"
#include "support/shared_files.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>

namespace qorocv {
namespace {

using namespace testing;

class NetworkCheck : public ::testing::Test {
protected:
  void SetUp() override { writeMadeModels(directory_.path()); }

  std::string path(const char* model) const { return (directory_ / model).string(); }
  std::string contentOf(const char* model) const {
    std::ifstream file(path(model), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void write(const char* model, const std::string& content) const {
    std::ofstream(path(model), std::ios::binary) << content;
  }
  /// Replaces the first `part` of a model.
  void replace(const char* model, const std::string& part, const std::string& replacement) const {
    std::string content = contentOf(model);
    const std::size_t at = content.find(part);
    ASSERT_NE(at, std::string::npos) << part;
    write(model, content.replace(at, part.size(), replacement));
  }

  void checkTf() const { checkTensorflow(path(kMadeTensorflowWeights), path(kMadeTensorflowText)); }
  void checkCaffePair() const { checkCaffe(path(kMadeCaffeText), path(kMadeCaffeWeights)); }
  void checkPerson() const { checkOnnx(path(kMadeSegmentation)); }

  TemporaryDirectory directory_;
};

/// What a check says; it throws StsParseError or nothing.
std::string complaintOf(const std::function<void()>& check) {
  try {
    check();
  } catch (const cv::Exception& exception) {
    EXPECT_EQ(exception.code, cv::Error::StsParseError);
    return exception.err;
  }
  return "";
}

TEST_F(NetworkCheck, passesGoodNetworks) {
  EXPECT_EQ(complaintOf([&] { checkTf(); }), "");
  EXPECT_EQ(complaintOf([&] { checkCaffePair(); }), "");
  EXPECT_EQ(complaintOf([&] { checkPerson(); }), "");
  const std::string real = QOROCV460_MODELS_DIR;
  EXPECT_EQ(complaintOf([&] { checkTensorflow(real + "model04.pb", real + "model03.pbtxt"); }), "");
  EXPECT_EQ(
      complaintOf([&] { checkCaffe(real + "model01.prototxt", real + "model02.caffemodel"); }), "");
  EXPECT_EQ(complaintOf([&] { checkOnnx(real + "model07.onnx"); }), "");
}

TEST_F(NetworkCheck, leavesMissingFilesToOpenCv) {
  EXPECT_EQ(complaintOf([] { checkTensorflow("nowhere.pb", "nowhere.pbtxt"); }), "");
  EXPECT_EQ(complaintOf([] { checkCaffe("nowhere.prototxt", "nowhere.caffemodel"); }), "");
  EXPECT_EQ(complaintOf([] { checkOnnx("nowhere.onnx"); }), "");
}

TEST_F(NetworkCheck, namesTheFileAndThePlace) {
  write(kMadeTensorflowText, "node {\n name: \"data\"\n");
  EXPECT_EQ(complaintOf([&] { checkTf(); }),
            path(kMadeTensorflowText) + ": line 3: a message that does not end");
  replace(kMadeSegmentation, "scores", "scores\x7f");
  EXPECT_EQ(complaintOf([&] { checkPerson(); }).find(path(kMadeSegmentation) + ": byte "), 0U);
}

// ---- TensorFlow

TEST_F(NetworkCheck, refusesAnAxisThatIsNoInteger) {
  // What follows "last_axis" in its tensor: int_val, packed, one byte, 3.
  replace(kMadeTensorflowWeights, std::string("\x3a\x01\x03", 3), std::string("\x6a\x01\x03", 3));
  EXPECT_NE(complaintOf([&] { checkTf(); }).find("node detection_out has no axis in last_axis"),
            std::string::npos);
}

TEST_F(NetworkCheck, refusesAnOperationWithTooFewInputs) {
  for (const char* const input : {"  input: \"rows_shape\"\n", "  input: \"last_axis\"\n",
                                  "  input: \"row_weights\"\n", "  input: \"plane_maximum\"\n"}) {
    writeMadeModels(directory_.path());
    replace(kMadeTensorflowText, input, "");
    EXPECT_NE(complaintOf([&] { checkTf(); }).find("too few inputs"), std::string::npos) << input;
  }
}

TEST_F(NetworkCheck, refusesAnInputThatIsNowhere) {
  replace(kMadeTensorflowText, "input: \"rows\"", "input: \"rowz\"");
  EXPECT_NE(complaintOf([&] { checkTf(); }).find("rowz, which is nowhere"), std::string::npos);
  writeMadeModels(directory_.path());
  replace(kMadeTensorflowText, "input: \"rows\"", "input: \"rows:-1\"");
  EXPECT_NE(complaintOf([&] { checkTf(); }).find("has the input rows:-1"), std::string::npos);
}

/// A graph of one constant.
std::string graphOf(const ProtobufWriter& tensor) {
  return ProtobufWriter()
      .message(1, ProtobufWriter()
                      .text(1, "weights")
                      .text(2, "Const")
                      .message(5, ProtobufWriter()
                                      .text(1, "value")
                                      .message(2, ProtobufWriter().message(8, tensor))))
      .bytes();
}

TEST_F(NetworkCheck, refusesATensorOfOtherSizes) {
  const auto dim = [](std::uint64_t size) { return ProtobufWriter().integer(1, size); };
  const std::string numbers(24, '\1'); // six
  const auto complaint = [&](const ProtobufWriter& shape) {
    write(kMadeTensorflowWeights,
          graphOf(ProtobufWriter().integer(1, 1).message(2, shape).text(4, numbers)));
    write(kMadeTensorflowText, "");
    return complaintOf([&] { checkTf(); });
  };
  EXPECT_EQ(complaint(ProtobufWriter().message(2, dim(2)).message(2, dim(3))), "");
  EXPECT_NE(complaint(ProtobufWriter().message(2, dim(2)).message(2, dim(4)))
                .find("the tensor of node weights has 24 bytes instead of 32"),
            std::string::npos);
  for (const std::uint64_t size : {std::uint64_t{0} - 1, std::uint64_t{1} << 40U}) {
    EXPECT_NE(complaint(ProtobufWriter().message(2, dim(size))).find("impossible sizes"),
              std::string::npos);
  }
  EXPECT_NE(complaint(ProtobufWriter()
                          .message(2, dim(0x7fffffff))
                          .message(2, dim(0x7fffffff))
                          .message(2, dim(0x7fffffff)))
                .find("impossible sizes"),
            std::string::npos);
}

TEST_F(NetworkCheck, refusesMoreNumbersThanATensorHas) {
  struct Values {
    std::uint64_t type;
    std::uint32_t field; // of such values, one behind the other
    std::size_t bytes;   // of each
  };
  const ProtobufWriter three = ProtobufWriter().message(2, ProtobufWriter().integer(1, 3));
  for (const Values& values :
       {Values{1, 5, 4}, Values{2, 6, 8}, Values{3, 7, 1}, Values{19, 13, 1}}) {
    const auto complaint = [&](std::size_t count) {
      write(kMadeTensorflowWeights,
            graphOf(ProtobufWriter()
                        .integer(1, values.type)
                        .message(2, three)
                        .text(values.field, std::string(count * values.bytes, '\1'))));
      write(kMadeTensorflowText, "");
      return complaintOf([&] { checkTf(); });
    };
    EXPECT_EQ(complaint(3), "") << values.type;
    EXPECT_NE(complaint(4).find("the tensor of node weights has too many numbers"),
              std::string::npos)
        << values.type;
  }
}

TEST_F(NetworkCheck, looksAtTheWeightsWhereTheyAreTheGraph) {
  write(kMadeTensorflowText, "# nothing");
  EXPECT_EQ(complaintOf([&] { checkTf(); }), "");
  const ProtobufWriter node = ProtobufWriter().text(1, "r").text(2, "Relu").text(3, "nobody");
  write(kMadeTensorflowWeights, ProtobufWriter().message(1, node).bytes());
  EXPECT_EQ(complaintOf([&] { checkTf(); }),
            path(kMadeTensorflowWeights) + ": node r has the input nobody, which is nowhere");
}

TEST_F(NetworkCheck, leavesInputsOfControlAlone) {
  replace(kMadeTensorflowText, "  input: \"rows\"\n", "  input: \"rows\"\n  input: \"^nobody\"\n");
  EXPECT_EQ(complaintOf([&] { checkTf(); }), "");
}

TEST_F(NetworkCheck, refusesNodesThatPassOnThemselves) {
  write(kMadeTensorflowText, "node { name: \"a\" op: \"Identity\" input: \"b\" }\n"
                             "node { name: \"b\" op: \"Identity\" input: \"a\" }\n");
  EXPECT_NE(complaintOf([&] { checkTf(); }).find("leads to itself"), std::string::npos);
}

TEST_F(NetworkCheck, refusesWhatOpenCvTakesWithoutCounting) {
  const std::string graph = contentOf(kMadeTensorflowText);
  const auto complaint = [&](const std::string& node) {
    write(kMadeTensorflowText, graph + node);
    return complaintOf([&] { checkTf(); });
  };
  EXPECT_NE(complaint("node { name: \"s\" op: \"Squeeze\" input: \"rows\""
                      " attr { key: \"squeeze_dims\" value { list { } } } }")
                .find("squeezes no dimension"),
            std::string::npos);
  EXPECT_NE(complaint("node { name: \"p\" op: \"MaxPool3D\" input: \"rows\""
                      " attr { key: \"data_format\" value { s: \"NDHWC\" } }"
                      " attr { key: \"strides\" value { list { i: 1 i: 1 i: 1 i: 1 } } } }")
                .find("too few strides"),
            std::string::npos);
  EXPECT_NE(complaint("node { name: \"m\" op: \"MatMul\" input: \"rows\" input: \"row_biases\""
                      " attr { key: \"loc_pred_transposed\" value { b: true } } }")
                .find("no pairs of outputs"),
            std::string::npos);
  EXPECT_NE(complaint("node { name: \"r\" op: \"Reshape\" input: \"rows\" input: \"row_biases\" }")
                .find("without 1 integers"),
            std::string::npos);
}

// ---- ONNX

TEST_F(NetworkCheck, refusesAnOnnxTensorOfOtherSizes) {
  // The sizes of the weights: packed, four bytes.
  replace(kMadeSegmentation, std::string("\x0a\x04\x02\x03\x01\x01", 6),
          std::string("\x0a\x04\x02\x43\x01\x01", 6));
  EXPECT_NE(complaintOf([&] { checkPerson(); }).find("the tensor weights has"), std::string::npos);
}

TEST_F(NetworkCheck, refusesAnOnnxInputThatNoNodeGives) {
  replace(kMadeSegmentation, "weights", "weightz"); // of the node, which comes first
  EXPECT_NE(complaintOf([&] { checkPerson(); }).find("the input weightz, which no node before it"),
            std::string::npos);
}

/// A model of one node.
std::string onnxOf(const ProtobufWriter& node) {
  return ProtobufWriter()
      .message(7, ProtobufWriter().message(1, node).message(11, ProtobufWriter().text(1, "x")))
      .bytes();
}

TEST_F(NetworkCheck, refusesAnOnnxNodeThatOpenCvWouldTakeForAnother) {
  const auto complaint = [&](const ProtobufWriter& node) {
    write(kMadeSegmentation, onnxOf(node));
    return complaintOf([&] { checkPerson(); });
  };
  const auto node = [](const char* op) {
    return ProtobufWriter().text(1, "x").text(2, "y").text(4, op);
  };
  EXPECT_EQ(complaint(node("Relu")), "");
  EXPECT_NE(complaint(node("Conv")).find("too few inputs"), std::string::npos);
  EXPECT_NE(complaint(ProtobufWriter().text(1, "x").text(4, "Relu")).find("too few inputs"),
            std::string::npos);
  EXPECT_NE(complaint(ProtobufWriter().text(2, "y").text(4, "Transpose")).find("too few inputs"),
            std::string::npos);
  EXPECT_NE(complaint(node("MaxPool").message(5, ProtobufWriter().text(1, "group").integer(3, 0)))
                .find("has no group"),
            std::string::npos);
}

// ---- Caffe

TEST_F(NetworkCheck, refusesACaffeLayerThatOpenCvWouldDivideBy) {
  replace(kMadeCaffeText, "num_output: 7", "num_output: 0");
  EXPECT_NE(complaintOf([&] { checkCaffePair(); }).find("layer row_values has the num_output 0"),
            std::string::npos);
  write(kMadeCaffeText, "layer { name: \"c\" convolution_param { group: 0 } }");
  EXPECT_NE(complaintOf([&] { checkCaffePair(); }).find("layer c has the group 0"),
            std::string::npos);
}

TEST_F(NetworkCheck, refusesACaffeLayerWithoutItsStatistics) {
  const std::string layer = "layer { name: \"b\" batch_norm_param { use_global_stats: false } }\n";
  write(kMadeCaffeText, layer);
  EXPECT_NE(complaintOf([&] { checkCaffePair(); }).find("layer b has no statistics"),
            std::string::npos);
  const ProtobufWriter blob;
  const auto writeBlobs = [&](int count) {
    ProtobufWriter weights;
    weights.text(1, "b");
    for (int i = 0; i < count; ++i) {
      weights.message(7, blob);
    }
    write(kMadeCaffeWeights, ProtobufWriter().message(100, weights).bytes());
  };
  writeBlobs(1);
  EXPECT_NE(complaintOf([&] { checkCaffePair(); }).find("layer b has no statistics"),
            std::string::npos);
  writeBlobs(2);
  EXPECT_EQ(complaintOf([&] { checkCaffePair(); }), "");
  write(kMadeCaffeText, layer + layer); // the second one is left without
  EXPECT_NE(complaintOf([&] { checkCaffePair(); }).find("layer b has no statistics"),
            std::string::npos);
}

TEST_F(NetworkCheck, refusesCaffeWeightsThatLeadOutOfTheFile) {
  const std::string content = contentOf(kMadeCaffeWeights);
  write(kMadeCaffeWeights, content.substr(0, content.size() - 1));
  EXPECT_EQ(complaintOf([&] { checkCaffePair(); }).find(path(kMadeCaffeWeights) + ": byte "), 0U);
}

// ---- Layers

cv::dnn::Net netOf(const std::string& type, cv::dnn::LayerParams& parameters) {
  cv::dnn::Net net;
  parameters.name = "layer";
  parameters.type = type;
  net.addLayerToPrev("layer", type, parameters);
  return net;
}

TEST(LayerCheck, refusesWeightsForOtherChannels) {
  for (const int channels : {2, 3, 4}) {
    cv::dnn::LayerParams parameters;
    for (int blob = 0; blob < 2; ++blob) {
      parameters.blobs.emplace_back(1, channels, CV_32F, cv::Scalar(1));
    }
    cv::dnn::Net net = netOf("BatchNorm", parameters);
    const std::string complaint = complaintOf([&] { checkLayers(net, {1, 3, 4, 4}, "model"); });
    EXPECT_EQ(complaint.empty(), channels == 3) << complaint;
  }
}

TEST(LayerCheck, refusesADeconvolutionWithoutWeights) {
  cv::dnn::LayerParams parameters;
  parameters.set("num_output", 3);
  parameters.set("kernel_size", 1);
  cv::dnn::Net net = netOf("Deconvolution", parameters);
  EXPECT_EQ(complaintOf([&] {
              checkLayers(net, {1, 3, 4, 4}, "model");
            }),
            "model: layer layer has no weights");
}

TEST(LayerCheck, passesAConstantWhichHasNoInput) {
  cv::dnn::Net net;
  cv::dnn::LayerParams constant;
  constant.blobs.emplace_back(std::vector<int>{1, 2, 4, 4}, CV_32F, cv::Scalar(1));
  const int first = net.addLayer("constant", "Const", constant);
  cv::dnn::LayerParams parameters;
  parameters.set("axis", 1);
  const int joined = net.addLayer("joined", "Concat", parameters);
  net.connect(0, 0, joined, 0);
  net.connect(first, 0, joined, 1);
  EXPECT_NO_THROW(checkLayers(net, {1, 3, 4, 4}, "model"));
}

TEST(LayerCheck, refusesALayerWithoutInputs) {
  for (const char* const type : {"BatchNorm", "Pooling", "PriorBox", "DetectionOutput", "ReLU"}) {
    cv::dnn::LayerParams parameters;
    parameters.set("kernel_size", 1);
    parameters.set("min_size", 1);
    parameters.set("variance", 0.1);
    for (const char* const name :
         {"num_classes", "share_location", "background_label_id", "keep_top_k"}) {
      parameters.set(name, 1);
    }
    parameters.set("code_type", "CORNER");
    parameters.set("nms_threshold", 0.5);
    parameters.blobs.assign(2, cv::Mat(1, 3, CV_32F, cv::Scalar(1)));
    cv::dnn::Net net;
    net.addLayer("alone", type, parameters);
    EXPECT_EQ(complaintOf([&] {
                checkLayers(net, {1, 3, 4, 4}, "model");
              }),
              "model: layer alone has too few inputs")
        << type;
  }
}

TEST(LayerCheck, refusesAnInputOfTooFewDimensions) {
  cv::dnn::LayerParams none;
  cv::dnn::LayerParams parameters;
  parameters.set("min_size", 1);
  parameters.set("variance", 0.1);
  for (const char* const before : {"Flatten", "ReLU"}) {
    cv::dnn::Net net;
    const int first = net.addLayerToPrev("before", before, none);
    const int prior = net.addLayer("prior", "PriorBox", parameters);
    net.connect(first, 0, prior, 0);
    net.connect(0, 0, prior, 1);
    const std::string complaint = complaintOf([&] { checkLayers(net, {1, 3, 4, 4}, "model"); });
    EXPECT_EQ(complaint.empty(), before == std::string("ReLU")) << complaint;
  }
}

TEST(LayerCheck, refusesMoreMemoryThanThereIs) {
  cv::dnn::LayerParams parameters;
  const int rows[] = {0, 0, 0, 0, 1 << 13, 1 << 13, 1 << 13, 1 << 13};
  parameters.set("paddings", cv::dnn::DictValue::arrayInt(rows, 8));
  cv::dnn::Net net = netOf("Padding", parameters);
  EXPECT_EQ(complaintOf([&] {
              checkLayers(net, {1, 3, 4, 4}, "model");
            }),
            "model: layer layer takes too much memory");
}

} // namespace
} // namespace qorocv
