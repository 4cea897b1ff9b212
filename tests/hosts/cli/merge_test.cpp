// Merging the faces of tiles, on boxes laid out by hand.
#include "merge.h"

#include <gtest/gtest.h>

namespace qorfaces {
namespace {

Face face(double left, double top, double right, double bottom) {
  return {{{left, top}, {right, bottom}}, {}, {}, {}, false, {}};
}

std::vector<double> leftEdges(const std::vector<Face>& faces) {
  std::vector<double> edges;
  for (const Face& each : faces) {
    edges.push_back(each.box.leftTop.x);
  }
  return edges;
}

using Edges = std::vector<double>;

// The left and the right two thirds of a photograph.
Tile leftTile(const std::vector<Face>& faces) {
  return {{0, 0}, {0.66, 1}, faces};
}
Tile rightTile(const std::vector<Face>& faces) {
  return {{0.34, 0}, {1, 1}, faces};
}

TEST(MergeTiles, keepsDifferentFaces) {
  EXPECT_EQ(leftEdges(mergeTiles({leftTile({face(0.1, 0.1, 0.2, 0.3), face(0.4, 0.1, 0.5, 0.3)}),
                                  rightTile({face(0.7, 0.1, 0.8, 0.3)})})),
            (Edges{0.1, 0.4, 0.7}));
  EXPECT_TRUE(mergeTiles({}).empty());
  EXPECT_TRUE(mergeTiles({leftTile({})}).empty());
}

TEST(MergeTiles, takesAFaceInBothTilesFromTheFirst) {
  EXPECT_EQ(leftEdges(mergeTiles(
                {leftTile({face(0.40, 0.1, 0.50, 0.3)}), rightTile({face(0.41, 0.1, 0.51, 0.3)})})),
            (Edges{0.40}));
}

TEST(MergeTiles, prefersTheWholeFaceToTheOneThatATilesEdgeCuts) {
  const Face cut = face(0.58, 0.1, 0.66, 0.3); // the left tile ends at 0.66
  const Face whole = face(0.57, 0.1, 0.72, 0.3);
  EXPECT_EQ(leftEdges(mergeTiles({leftTile({cut}), rightTile({whole})})), (Edges{0.57}));
  EXPECT_EQ(leftEdges(mergeTiles({leftTile({cut}), rightTile({})})), (Edges{0.58}));
}

TEST(MergeTiles, takesThePhotographsEdgeForNoCut) {
  const Face atEdge = face(-0.01, 0.1, 0.1, 0.3);
  const Face smaller = face(0.02, 0.1, 0.1, 0.3);
  EXPECT_EQ(leftEdges(mergeTiles({leftTile({atEdge}), {{0, 0}, {1, 1}, {smaller}}})),
            (Edges{-0.01}));
}

TEST(MergeTiles, takesASmallBoxWithinALargeOneForTheSameFace) {
  EXPECT_EQ(leftEdges(mergeTiles(
                {leftTile({face(0.4, 0.1, 0.6, 0.5)}), rightTile({face(0.45, 0.2, 0.5, 0.3)})})),
            (Edges{0.4}));
}

TEST(MergeTiles, keepsNeighboursThatOverlapByLessThanHalf) {
  EXPECT_EQ(leftEdges(mergeTiles(
                {leftTile({face(0.40, 0.1, 0.50, 0.3)}), rightTile({face(0.46, 0.1, 0.56, 0.3)})})),
            (Edges{0.40, 0.46}));
  EXPECT_EQ(leftEdges(mergeTiles(
                {leftTile({face(0.40, 0.1, 0.50, 0.3)}), rightTile({face(0.44, 0.1, 0.54, 0.3)})})),
            (Edges{0.40}));
}

TEST(MergeTiles, dropsTheLessSureOfTwoBoxesThatOverlapWithinATile) {
  // Intersection over union is 7 / 13.
  EXPECT_EQ(
      leftEdges(mergeTiles({leftTile({face(0.13, 0.1, 0.23, 0.3), face(0.10, 0.1, 0.20, 0.3)})})),
      (Edges{0.13}));
}

} // namespace
} // namespace qorfaces
