#include "faces/lbf_landmarker.h"

#include "faces/lbf_fitter.h"
#include "faces/lbf_surroundings.h"
#include "faces/shared_lbf_model.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qorocv {

namespace {

cv::Ptr<cv::face::Facemark> makeQuietFacemark() {
  cv::face::FacemarkLBF::Params parameters;
  // It would report on standard output what it reads.
  parameters.verbose = false;
  return cv::face::FacemarkLBF::create(parameters);
}

int numberIn(const cv::FileStorage& file, const char* key) {
  return static_cast<int>(file[key]);
}

cv::Mat matrixIn(const cv::FileStorage& file, const std::string& key) {
  const cv::FileNode node = file[key];
  return node.isMap() ? node.mat() : cv::Mat();
}

bool isMatrix(const cv::Mat& matrix, std::int64_t rows, std::int64_t columns) {
  return matrix.type() == CV_64F && matrix.rows >= rows && matrix.cols >= columns;
}

// OpenCV takes the parameters' word for the numbers of trees, splits and weights in a file. Nothing
// is looked at where there are no stages.
bool hasWhatItSays(const cv::FileStorage& file) {
  const std::int64_t landmarks = numberIn(file, "n_landmarks");
  const std::int64_t trees = numberIn(file, "tree_n");
  const int depth = numberIn(file, "tree_depth");
  const int stages = numberIn(file, "stages_n");
  constexpr int deepest = 24; // its splits alone would take 512 MiB
  if (stages < 1) {
    return true;
  }
  if (depth < 1 || depth > deepest || landmarks < 1 || trees < 1) {
    return false;
  }
  const std::int64_t leaves = std::int64_t{1} << (depth - 1);
  if (!isMatrix(matrixIn(file, "regressor_meanshape"), landmarks, 2)) {
    return false;
  }
  for (int stage = 0; stage < stages; ++stage) {
    for (int landmark = 0; landmark < landmarks; ++landmark) {
      for (int tree = 0; tree < trees; ++tree) {
        const std::string number = cv::format("%d_%d_%d", stage, landmark, tree);
        const cv::FileNode thresholds = file["thresholds_" + number];
        if (!isMatrix(matrixIn(file, "tree_" + number), leaves, 4) || !thresholds.isSeq() ||
            thresholds.size() < static_cast<std::size_t>(leaves)) {
          return false;
        }
      }
    }
    if (!isMatrix(matrixIn(file, "weights_" + std::to_string(stage)), 2 * landmarks,
                  landmarks * trees * leaves)) {
      return false;
    }
  }
  return true;
}

// OpenCV's own reader, for files of another layout than ours reads.
void loadByOpenCv(cv::face::Facemark& opencv, const std::string& path) {
  const cv::FileStorage file(path, cv::FileStorage::READ);
  if (file.isOpened() && !hasWhatItSays(file)) {
    CV_Error(cv::Error::StsParseError,
             path + ": not the trees and weights that its parameters tell of");
  }
  opencv.loadModel(path);
}

// As OpenCV fits, but for a box that brings it down, which is a failed fit. The boxes before it are
// fitted all the same: what throws for them must throw.
std::optional<std::vector<LandmarkSet>> fitByOpenCv(cv::face::Facemark& opencv,
                                                    const cv::Mat& picture,
                                                    const std::vector<cv::Rect>& boxes) {
  const auto unreadable = std::find_if(boxes.begin(), boxes.end(), [&](const cv::Rect& box) {
    return leavesNothingToRead(box, picture.size());
  });
  const std::vector<cv::Rect> readable(boxes.begin(), unreadable);
  std::vector<LandmarkSet> landmarks;
  const bool fitted = opencv.fit(picture, readable, landmarks);
  if (!fitted || unreadable != boxes.end()) {
    return std::nullopt;
  }
  return landmarks;
}

} // namespace

LbfLandmarker::LbfLandmarker() : opencv_(makeQuietFacemark()) {}

void LbfLandmarker::loadModel(cv::String path) {
  model_ = sharedLbfModel(path);
  if (!model_) {
    loadByOpenCv(*opencv_, path);
    hasOpenCvsModel_ = true;
  }
}

bool LbfLandmarker::fit(cv::InputArray picture, cv::InputArray boxes,
                        cv::OutputArrayOfArrays landmarks) {
  if (boxes.empty()) {
    return false;
  }
  if (!model_ && !hasOpenCvsModel_) {
    return opencv_->fit(picture, boxes, landmarks); // throws, before it looks at any box
  }
  std::vector<cv::Rect> list;
  boxes.copyTo(list);
  auto faces = model_ ? fitLbf(*model_, picture.getMat(), list)
                      : fitByOpenCv(*opencv_, picture.getMat(), list);
  if (!faces) {
    return false;
  }
  CV_Assert(landmarks.kind() == cv::_InputArray::STD_VECTOR_VECTOR && landmarks.type() == CV_32FC2);
  *static_cast<std::vector<LandmarkSet>*>(landmarks.getObj()) = std::move(*faces);
  return true;
}

} // namespace qorocv
