#include "merge.h"

#include <opencv2/dnn.hpp>

#include <algorithm>

namespace qorfaces {

namespace {

constexpr float kSameWithinTile = 0.3F;  // intersection over union
constexpr double kSameAcrossTiles = 0.5; // intersection over the smaller box
constexpr double kEdge = 0.01;           // of the tile's side: how near to its edge a box is cut

cv::Rect2d boxOf(const Face& face) {
  return {cv::Point2d(face.box.leftTop.x, face.box.leftTop.y),
          cv::Point2d(face.box.rightBottom.x, face.box.rightBottom.y)};
}

std::vector<Face> distinctFaces(const Tile& tile) {
  std::vector<cv::Rect2d> boxes;
  std::vector<float> scores;
  for (const Face& face : tile.faces) {
    scores.push_back(1.0F / static_cast<float>(1 + scores.size())); // the order is all we know
    boxes.push_back(boxOf(face));
  }
  std::vector<int> kept;
  cv::dnn::NMSBoxes(boxes, scores, 0.0F, kSameWithinTile, kept);
  std::vector<Face> faces;
  faces.reserve(kept.size());
  for (const int index : kept) {
    faces.push_back(tile.faces[static_cast<std::size_t>(index)]);
  }
  return faces;
}

// Whether an edge of the tile that lies within the photograph cuts the face.
bool isCut(const Face& face, const Tile& tile) {
  const double marginX = kEdge * (tile.rightBottom.x - tile.leftTop.x);
  const double marginY = kEdge * (tile.rightBottom.y - tile.leftTop.y);
  return (tile.leftTop.x > 0 && face.box.leftTop.x < tile.leftTop.x + marginX) ||
         (tile.leftTop.y > 0 && face.box.leftTop.y < tile.leftTop.y + marginY) ||
         (tile.rightBottom.x < 1 && face.box.rightBottom.x > tile.rightBottom.x - marginX) ||
         (tile.rightBottom.y < 1 && face.box.rightBottom.y > tile.rightBottom.y - marginY);
}

bool isSameFace(const Face& a, const Face& b) {
  const cv::Rect2d first = boxOf(a);
  const cv::Rect2d second = boxOf(b);
  return (first & second).area() > kSameAcrossTiles * std::min(first.area(), second.area());
}

} // namespace

std::vector<Face> mergeTiles(const std::vector<Tile>& tiles) {
  std::vector<Face> whole;
  std::vector<Face> cut;
  for (const Tile& tile : tiles) {
    for (Face& face : distinctFaces(tile)) {
      (isCut(face, tile) ? cut : whole).push_back(std::move(face));
    }
  }
  std::vector<Face> merged;
  for (const std::vector<Face>* const faces : {&whole, &cut}) {
    for (const Face& face : *faces) {
      const bool known = std::any_of(merged.begin(), merged.end(),
                                     [&](const Face& other) { return isSameFace(face, other); });
      if (!known) {
        merged.push_back(face);
      }
    }
  }
  return merged;
}

} // namespace qorfaces
