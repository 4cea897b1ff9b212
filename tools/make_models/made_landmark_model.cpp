#include "model_contents.h"

namespace qorocv::testing {

std::string landmarkModel(const LandmarkShape& meanShape) {
  constexpr int kLandmarks = 68;
  constexpr int kStages = 1;
  constexpr int kTrees = 1;
  // Two levels are the least for which a tree compares two pixels; one level reads none.
  constexpr int kDepth = 2;
  constexpr int kNodes = 1 << kDepth;
  constexpr int kFeatures = kLandmarks * kTrees * (1 << (kDepth - 1));

  cv::Mat_<double> shape(kLandmarks, 2);
  for (int i = 0; i < kLandmarks; ++i) {
    shape(i, 0) = meanShape.at(static_cast<std::size_t>(i)).x;
    shape(i, 1) = meanShape.at(static_cast<std::size_t>(i)).y;
  }
  // Each tree compares the pixels a little to the left and to the right of its landmark.
  cv::Mat_<double> tree(kNodes, 4, 0.0);
  tree(1, 0) = -0.125;
  tree(1, 2) = 0.125;

  cv::FileStorage storage(kMadeLandmarks, cv::FileStorage::WRITE_BASE64 | cv::FileStorage::MEMORY |
                                              cv::FileStorage::FORMAT_YAML);
  storage << "stages_n" << kStages << "tree_n" << kTrees << "tree_depth" << kDepth;
  storage << "n_landmarks" << kLandmarks << "regressor_meanshape" << shape;
  for (int landmark = 0; landmark < kLandmarks; ++landmark) {
    storage << cv::format("tree_0_%d_0", landmark) << tree;
    storage << cv::format("thresholds_0_%d_0", landmark) << std::vector<int>(kNodes, 0);
  }
  // Zero weights keep the landmarks at the mean shape, whatever the trees find.
  storage << "weights_0" << cv::Mat::zeros(2 * kLandmarks, kFeatures, CV_64F);
  return storage.releaseAndGetString();
}

LandmarkShape defaultMeanShape() {
  using Points = std::vector<cv::Point2d>;
  const Points jaw{{-42, 0},  {-41, 9}, {-39, 18}, {-35, 27}, {-30, 34}, {-23, 40},
                   {-16, 44}, {-8, 47}, {0, 48},   {8, 47},   {16, 44},  {23, 40},
                   {30, 34},  {35, 27}, {39, 18},  {41, 9},   {42, 0}};
  const Points leftBrow{{-34, -22}, {-29, -27}, {-22, -28}, {-15, -26}, {-9, -22}};
  const Points rightBrow{{9, -22}, {15, -26}, {22, -28}, {29, -27}, {34, -22}};
  const Points noseBridge{{0, -14}, {0, -7}, {0, 0}, {0, 7}};
  const Points nostrils{{-8, 11}, {-4, 13}, {0, 14}, {4, 13}, {8, 11}};
  const Points leftEye{{-28, -12}, {-23, -16}, {-17, -16}, {-12, -12}, {-17, -9}, {-23, -9}};
  const Points rightEye{{12, -12}, {17, -16}, {23, -16}, {28, -12}, {23, -9}, {17, -9}};
  const Points outerLips{{-16, 26}, {-10, 22}, {-4, 20}, {0, 21}, {4, 20},  {10, 22},
                         {16, 26},  {10, 31},  {4, 33},  {0, 34}, {-4, 33}, {-10, 31}};
  const Points innerLips{{-13, 26}, {-4, 24}, {0, 25}, {4, 24},
                         {13, 26},  {4, 29},  {0, 30}, {-4, 29}};

  LandmarkShape shape;
  std::size_t next = 0;
  for (const Points& part :
       {jaw, leftBrow, rightBrow, noseBridge, nostrils, leftEye, rightEye, outerLips, innerLips}) {
    for (const cv::Point2d& point : part) {
      shape.at(next++) = point / 64.0;
    }
  }
  return shape;
}

} // namespace qorocv::testing
