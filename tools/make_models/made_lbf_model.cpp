#include "made_lbf_model.h"

#include "made_models.h"

#include <cmath>
#include <random>
#include <vector>

namespace qorocv::testing {

namespace {

class RandomMatrices {
public:
  explicit RandomMatrices(unsigned seed) : random_(seed) {}

  cv::Mat_<double> between(double low, double high, int rows, int columns) {
    std::uniform_real_distribution<double> distribution(low, high);
    cv::Mat_<double> matrix(rows, columns);
    for (double& value : matrix) {
      value = distribution(random_);
    }
    return matrix;
  }

  cv::Mat_<double> upTo(double largest, LbfNumbers numbers, int rows, int columns) {
    cv::Mat_<double> matrix = between(-largest, largest, rows, columns);
    if (numbers == LbfNumbers::ofEveryMagnitude) {
      for (double& value : matrix) {
        value = std::ldexp(value, number(kSmallestExponent, 0));
      }
    } else if (numbers == LbfNumbers::ofSinglePrecision) {
      for (double& value : matrix) {
        value = static_cast<float>(value);
      }
    }
    return matrix;
  }

  int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

private:
  // Takes a number below 1 to zero in one of about twenty cases.
  static constexpr int kSmallestExponent = -1130;

  std::mt19937 random_;
};

// Faces of any other number of landmarks are arbitrary.
cv::Mat_<double> meanShape(int landmarks, RandomMatrices& random) {
  cv::Mat_<double> shape = random.between(-0.01, 0.01, landmarks, 2);
  const LandmarkShape face = defaultMeanShape();
  for (int i = 0; i < landmarks; ++i) {
    const cv::Point2d point = face.at(static_cast<std::size_t>(i) % face.size());
    shape(i, 0) += point.x;
    shape(i, 1) += point.y;
  }
  return shape;
}

// What is added between a huge number and its opposite loses its last bits. So a sum shows in which
// order it was formed, which landmarks, in single precision, would hide otherwise.
void addWhatCancels(cv::Mat_<double>& weights, int leaves) {
  constexpr double kHuge = 1e11;
  for (int column = 0; column < weights.cols; ++column) {
    const int tree = column / leaves;
    if (tree % 2 == 0) {
      weights.col(column) += tree % 4 == 0 ? kHuge : -kHuge;
    }
  }
}

} // namespace

std::string textOf(const MadeLbfModel& model) {
  RandomMatrices random(model.seed);
  const int flags = cv::FileStorage::MEMORY | cv::FileStorage::FORMAT_YAML |
                    (model.inBase64 ? cv::FileStorage::WRITE_BASE64 : cv::FileStorage::WRITE);
  cv::FileStorage storage("model.yaml", flags);
  storage << "stages_n" << model.stages << "tree_n" << model.treesPerLandmark << "tree_depth"
          << model.depth << "n_landmarks" << model.landmarks << "regressor_meanshape"
          << meanShape(model.landmarks, random);
  const int nodes = 1 << model.depth;
  for (int stage = 0; stage < model.stages; ++stage) {
    for (int landmark = 0; landmark < model.landmarks; ++landmark) {
      for (int tree = 0; tree < model.treesPerLandmark; ++tree) {
        std::vector<int> thresholds(static_cast<std::size_t>(nodes));
        for (int& threshold : thresholds) {
          // Some are beyond every difference of two pixels.
          threshold = random.number(0, 9) == 0 ? random.number(-1'000'000, 1'000'000)
                                               : random.number(-60, 60);
        }
        const std::string number = cv::format("%d_%d_%d", stage, landmark, tree);
        storage << "tree_" + number << random.upTo(model.largestSplit, model.numbers, nodes, 4);
        storage << "thresholds_" + number << thresholds;
      }
    }
    const int leaves = nodes / 2;
    cv::Mat_<double> weights = random.upTo(model.largestWeight, model.numbers, 2 * model.landmarks,
                                           model.landmarks * model.treesPerLandmark * leaves);
    if (model.numbers == LbfNumbers::cancelling) {
      addWhatCancels(weights, leaves);
    }
    storage << cv::format("weights_%d", stage) << weights;
  }
  return storage.releaseAndGetString();
}

std::string textWithNoise(const std::string& path, double largestNoise) {
  RandomMatrices random(460);
  const cv::FileStorage model(path, cv::FileStorage::READ);
  cv::FileStorage noisy("model.yaml", cv::FileStorage::MEMORY | cv::FileStorage::FORMAT_YAML |
                                          cv::FileStorage::WRITE_BASE64);
  for (const cv::FileNode& node : model.root()) {
    const std::string name = node.name();
    if (node.isInt()) {
      noisy << name << static_cast<int>(node);
    } else if (node.isMap()) {
      cv::Mat matrix = node.mat();
      if (name.rfind("weights_", 0) == 0) {
        matrix += random.between(-largestNoise, largestNoise, matrix.rows, matrix.cols);
      }
      noisy << name << matrix;
    } else {
      std::vector<int> thresholds;
      node >> thresholds;
      noisy << name << thresholds;
    }
  }
  return noisy.releaseAndGetString();
}

cv::Ptr<cv::face::Facemark> openCvFacemark(const std::string& path) {
  cv::face::FacemarkLBF::Params parameters;
  parameters.verbose = false;
  const auto facemark = cv::face::FacemarkLBF::create(parameters);
  facemark->loadModel(path);
  return facemark;
}

} // namespace qorocv::testing
