#include "json.h"

#include "face_json.h"

#include <nlohmann/json.hpp>

namespace qorfaces {

namespace {

using Json = nlohmann::ordered_json;

class JsonOutput : public Output {
public:
  std::string analysed(const std::string& photo, const Analysis& analysis) override {
    Json faces = Json::array();
    for (const Face& face : analysis.faces) {
      faces.push_back(toJson(face));
    }
    for (std::size_t i = 0; i < analysis.portraits.size(); ++i) {
      addPortrait(faces[i], analysis.portraits[i]);
    }
    photos_.push_back({{"photo", photo},
                       {"width", analysis.width},
                       {"height", analysis.height},
                       {"damaged", analysis.damaged},
                       {"found", analysis.found},
                       {"faces", faces}});
    return {};
  }

  std::string failed(const std::string& photo, const std::string& error) override {
    photos_.push_back({{"photo", photo}, {"error", error}});
    return {};
  }

  std::string end() override {
    // Names of files need not be text.
    return photos_.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
  }

private:
  Json photos_ = Json::array();
};

} // namespace

std::unique_ptr<Output> jsonOutput() {
  return std::make_unique<JsonOutput>();
}

} // namespace qorfaces
