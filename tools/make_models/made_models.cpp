#include "made_models.h"

#include "model_contents.h"

#include <fstream>
#include <stdexcept>
#include <string>

namespace qorocv::testing {
namespace {

void writeFile(const std::filesystem::path& path, const std::string& content) {
  // A link to a real model may stand there: it is replaced, and what it leads to stays as it is.
  std::filesystem::remove(path);
  std::ofstream file(path, std::ios::binary);
  file << content;
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write " + path.string());
  }
}

} // namespace

void writeMadeModels(const std::filesystem::path& directory, const MadeModels& models) {
  std::filesystem::create_directories(directory);
  const RowLayer caffeRows = rowLayer(models.caffeRows);
  writeFile(directory / kMadeCaffeText, caffeText(caffeRows));
  writeFile(directory / kMadeCaffeWeights, caffeWeights(caffeRows));
  writeFile(directory / kMadeTensorflowText, tensorflowText());
  writeFile(directory / kMadeTensorflowWeights, tensorflowWeights(rowLayer(models.tensorflowRows)));
  writeFile(directory / kMadeLandmarks, landmarkModel(models.meanShape));
  writeFile(directory / kMadeCascade, cascadeModel());
  writeFile(directory / kMadeSegmentation, segmentationModel(models.background, models.person));
}

} // namespace qorocv::testing
