#include "models/cascade_check.h"

#include "arithmetic/regions.h"

#include <opencv2/core.hpp>

namespace qorocv {

namespace {

// The names and layouts are those of the files that opencv_traincascade writes.

constexpr std::size_t kMostRects = 3;   // of a feature
constexpr std::size_t kRectNumbers = 5; // left, top, width, height, weight
constexpr std::size_t kNodeNumbers = 4; // left child, right child, feature, threshold

int takeInt(cv::FileNodeIterator& numbers) {
  const int number = static_cast<int>(*numbers);
  ++numbers;
  return number;
}

cv::Rect takeRect(const cv::FileNode& node) {
  cv::FileNodeIterator numbers = node.begin();
  const int x = takeInt(numbers);
  const int y = takeInt(numbers);
  const int width = takeInt(numbers);
  return {x, y, width, takeInt(numbers)};
}

// Tilted by 45 degrees, a rectangle stands on its lower corner: it reaches its height to the left
// of x, and its width and height below y.
bool liesTiltedIn(const cv::Size& window, const cv::Rect& rect) {
  return liesIn(window, rect) && rect.height <= rect.x &&
         rect.width <= window.height - rect.y - rect.height;
}

bool isSoundFeature(const cv::FileNode& feature, const cv::Size& window) {
  const bool tilted = static_cast<int>(feature["tilted"]) != 0;
  const cv::FileNode rects = feature["rects"];
  if (rects.size() > kMostRects) {
    return false;
  }
  for (const cv::FileNode& rect : rects) {
    const bool numbersAreThere = rect.isSeq() && rect.size() == kRectNumbers;
    if (!numbersAreThere ||
        !(tilted ? liesTiltedIn(window, takeRect(rect)) : liesIn(window, takeRect(rect)))) {
      return false;
    }
  }
  return true;
}

bool isSoundTree(const cv::FileNode& tree, std::size_t features) {
  const cv::FileNode numbers = tree["internalNodes"];
  const cv::FileNode leaves = tree["leafValues"];
  if (!numbers.isSeq() || !leaves.isSeq() || numbers.size() % kNodeNumbers != 0 ||
      leaves.size() != numbers.size() / kNodeNumbers + 1) {
    return false;
  }
  const int nodes = static_cast<int>(numbers.size() / kNodeNumbers);
  cv::FileNodeIterator number = numbers.begin();
  for (int node = 0; node < nodes; ++node) {
    for (int side = 0; side < 2; ++side) {
      const int child = takeInt(number);
      const bool isLeaf = child <= 0; // leaf -child
      if (isLeaf ? child < -nodes : child <= node || child >= nodes) {
        return false;
      }
    }
    const int feature = takeInt(number);
    if (feature < 0 || static_cast<std::size_t>(feature) >= features) {
      return false;
    }
    number += 1;
  }
  return true;
}

} // namespace

bool isSoundCascade(const cv::FileNode& cascade) {
  if (static_cast<std::string>(cascade["stageType"]) != "BOOST" ||
      static_cast<std::string>(cascade["featureType"]) != "HAAR") {
    return true;
  }
  const cv::Size window(static_cast<int>(cascade["width"]), static_cast<int>(cascade["height"]));
  const cv::FileNode features = cascade["features"];
  for (const cv::FileNode& feature : features) {
    if (!isSoundFeature(feature, window)) {
      return false;
    }
  }
  if (static_cast<int>(cascade["featureParams"]["maxCatCount"]) != 0) { // it would change the nodes
    return false;
  }
  for (const cv::FileNode& stage : cascade["stages"]) {
    const cv::FileNode trees = stage["weakClassifiers"];
    if (!trees.isSeq()) {
      return false;
    }
    for (const cv::FileNode& tree : trees) {
      if (!isSoundTree(tree, features.size())) {
        return false;
      }
    }
  }
  return true;
}

} // namespace qorocv
