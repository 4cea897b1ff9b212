// The names and numbers are those of caffe.proto; "layers" are those of its first form.
#include "networks/network_check.h"
#include "networks/network_file.h"

#include <limits>
#include <map>

namespace qorocv {

using namespace networks;

namespace {

using Kind = ProtobufKind;

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

} // namespace

void checkCaffe(const std::string& description, const std::string& weights) {
  const std::optional<std::string> text = contentOf(description);
  const std::optional<std::string> bytes = contentOf(weights);
  if (!text || !bytes) {
    return;
  }
  std::map<std::string, std::size_t> blobs;
  ofFile(weights, [&] { blobs = blobsOf(*bytes); });
  ofFile(description, [&] {
    const ProtobufField network = readProtobufText(*text);
    for (const ProtobufField* const layer : layersOf(network)) {
      checkLayer(*layer, blobs);
    }
  });
}

} // namespace qorocv
