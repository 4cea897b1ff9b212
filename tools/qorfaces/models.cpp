#include "models.h"

#include "blank_picture.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace qorfaces {

namespace {

struct NumberedModel {
  int weight; // of its digit in what initModelsAtPath returns
  const char* name;
};

std::vector<NumberedModel> detectorModels(Detector detector) {
  constexpr NumberedModel landmarks{10000, "model05.yaml (landmarks)"};
  switch (detector) {
  case Detector::ssd:
    return {{1, "model01.prototxt (Caffe network)"},
            {10, "model02.caffemodel (its weights)"},
            landmarks};
  case Detector::ssdTf:
    return {
        {100, "model03.pbtxt (TensorFlow network)"}, {1000, "model04.pb (its weights)"}, landmarks};
  case Detector::haar:
    break;
  }
  return {landmarks, {100000, "model06.xml (face cascade)"}};
}

std::vector<NumberedModel> neededModels(const Settings& settings) {
  std::vector<NumberedModel> models = detectorModels(settings.detector);
  if (wantsMask(settings)) {
    models.push_back({1000000, "model07.onnx (person segmentation)"});
  }
  return models;
}

} // namespace

std::string placeModels(const std::string& directory, const Settings& settings) {
  const int missing = qorocv::client::placeModels(directory);
  std::string names;
  for (const NumberedModel& model : neededModels(settings)) {
    if (missing / model.weight % 10 != 0) {
      names += (names.empty() ? "" : ", ") + std::string(model.name);
    }
  }
  if (names.empty()) {
    return names;
  }
  std::error_code ignored; // what cannot be looked at is not there
  return std::filesystem::is_directory(std::filesystem::u8path(directory), ignored)
             ? directory + " lacks " + names +
                   "; scripts/get-models.sh fills a directory with all models"
             : "there is no directory " + directory +
                   "; scripts/get-models.sh fills one with all models, and --models names it";
}

std::optional<qorocv::client::Error> loadModels(const Settings& settings) {
  if (!usesSlot(settings)) {
    return qorocv::client::loadSharedPair();
  }
  // Slots load theirs with their first photograph.
  std::optional<BlankPicture> blank;
  try {
    blank.emplace();
  } catch (const std::runtime_error&) {
    return std::nullopt; // the user's first photograph it is
  }
  const auto errorOf = [](const auto& result) {
    return result ? std::nullopt : std::optional<qorocv::client::Error>(result.error());
  };
  const qorocv::client::Request request = requestOf(settings);
  return wantsMask(settings)
             ? errorOf(qorocv::client::analyseWithMasks(blank->path(), request, slotOf(settings)))
             : errorOf(qorocv::client::analyse(blank->path(), request, slotOf(settings)));
}

} // namespace qorfaces
