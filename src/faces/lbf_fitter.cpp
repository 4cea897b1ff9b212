// Every operation in floating point, and its order, is the one that OpenCV does: see lbf_shape.cpp.
//
// The arithmetic stands in plain loops over the 68 landmarks, without branches, which the compiler
// turns into vectors: of two doubles for every processor and of four where it has AVX2.
#include "faces/lbf_fitter.h"

#include <algorithm>
#include <array>

namespace qorocv {

namespace {

constexpr std::size_t kPoints = LbfShape::kPoints;

/// What OpenCV would cut out of the picture for a face: its box and half a box more on each side.
/// Whole numbers, kept as doubles because they enter such arithmetic.
struct Surroundings {
  double left;
  double top;
  double width;
  double height;

  bool isEmpty() const { return width == 0 || height == 0; }
};

struct Span {
  double start;
  /// To the last pixel, not to one past it.
  double length;
};

// Half the length is an integer division.
Span clippedSpan(int start, int length, int pictureLength) {
  const int half = length / 2;
  const double from = std::max(0., static_cast<double>(start) - half);
  const double to = std::min(pictureLength - 1., static_cast<double>(start) + length + half);
  return {from, to - from};
}

Surroundings surroundingsOf(const cv::Rect& box, const cv::Mat& picture) {
  if (box.width <= 0) {
    CV_Error(cv::Error::StsBadArg, "A face's box has no width.");
  }
  const Span columns = clippedSpan(box.x, box.width, picture.cols);
  const Span rows = clippedSpan(box.y, box.height, picture.rows);
  CV_Assert(columns.length >= 0 && rows.length >= 0);
  return {columns.start, rows.start, columns.length, rows.length};
}

/// Where a shape lies: (0, 0) is the centre of the box, 1 is half of it. In pixels of the
/// surroundings.
struct Placement {
  double centreX;
  double centreY;
  double halfWidth;
  double halfHeight;
};

// Here half a box is half a pixel more where the side is odd.
Placement placementOf(const cv::Rect& box, const Surroundings& surroundings) {
  const double halfWidth = box.width / 2.;
  const double halfHeight = box.height / 2.;
  return {box.x - surroundings.left + halfWidth, box.y - surroundings.top + halfHeight, halfWidth,
          halfHeight};
}

LbfShape toPixels(const LbfShape& shape, const Placement& at) {
  LbfShape pixels;
  for (std::size_t i = 0; i < kPoints; ++i) {
    pixels.x[i] = shape.x[i] * at.halfWidth + at.centreX;
    pixels.y[i] = shape.y[i] * at.halfHeight + at.centreY;
  }
  return pixels;
}

LbfShape fromPixels(const LbfShape& pixels, const Placement& at) {
  LbfShape shape;
  for (std::size_t i = 0; i < kPoints; ++i) {
    shape.x[i] = (pixels.x[i] - at.centreX) / at.halfWidth;
    shape.y[i] = (pixels.y[i] - at.centreY) / at.halfHeight;
  }
  return shape;
}

/// The pixels that the trees of one face may see.
template <int kChannels> class GreyView {
public:
  GreyView(const cv::Mat& picture, const Surroundings& area)
      : origin_(picture.ptr(static_cast<int>(area.top)) +
                static_cast<std::ptrdiff_t>(area.left) * kChannels),
        stride_(static_cast<std::ptrdiff_t>(picture.step)), lastX_(area.width - 1),
        lastY_(area.height - 1) {}

  int columnAt(double x) const { return clipped(x, lastX_); }
  int rowAt(double y) const { return clipped(y, lastY_); }

  /// The brightness of a pixel as cv::cvtColor rounds it.
  int at(int column, int row) const {
    const std::uint8_t* const pixel =
        origin_ + row * stride_ + static_cast<std::ptrdiff_t>(column) * kChannels;
    if constexpr (kChannels == 1) {
      return *pixel;
    } else {
      return (pixel[0] * 3735 + pixel[1] * 19235 + pixel[2] * 9798 + 16384) >> 15;
    }
  }

private:
  // What is no number becomes the last one.
  static int clipped(double value, double last) {
    const double below = value < last ? value : last;
    return static_cast<int>(below > 0. ? below : 0.);
  }

  const std::uint8_t* origin_;
  std::ptrdiff_t stride_;
  double lastX_;
  double lastY_;
};

/// What the trees of a stage compare in: the picture, the landmarks in it, and how the face lies.
template <int kChannels> struct Scene {
  const GreyView<kChannels>& picture;
  const LbfShape& landmarks;
  const Placement& placement;
  const Similarity& similarity;
};

using Integers = std::array<int, kPoints>;

/// The brightness at one place next to each landmark.
template <int kChannels>
Integers brightnessAt(const LbfShape& places, const Scene<kChannels>& scene) {
  const auto& [scale, cosine, sine] = scene.similarity;
  Integers columns;
  Integers rows;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const double x = scale * (cosine * places.x[i] - sine * places.y[i]);
    const double y = scale * (sine * places.x[i] + cosine * places.y[i]);
    columns[i] = scene.picture.columnAt(x * scene.placement.halfWidth + scene.landmarks.x[i]);
    rows[i] = scene.picture.rowAt(y * scene.placement.halfHeight + scene.landmarks.y[i]);
  }
  Integers brightness;
  for (std::size_t i = 0; i < kPoints; ++i) {
    brightness[i] = scene.picture.at(columns[i], rows[i]);
  }
  return brightness;
}

/// Trees of a stage, one of each landmark. They are asked side by side: the way down one tree is a
/// chain of loads that wait for each other, and the compiler makes vectors of their arithmetic.
struct TreeOfEach {
  const LbfModel& model;
  const LbfStage& stage;
  /// From 0 to LbfModel::treesPerLandmark - 1.
  int number;

  /// Where what belongs to the trees begins in the lists of the stage.
  std::size_t startOf(std::size_t landmark) const {
    const std::size_t tree = landmark * static_cast<std::size_t>(model.treesPerLandmark) +
                             static_cast<std::size_t>(number);
    return tree * static_cast<std::size_t>(model.leaves);
  }
};

/// Takes every tree from the node that it is at to the next.
template <int kChannels>
void descend(const TreeOfEach& trees, const Scene<kChannels>& scene, Integers& nodes) {
  LbfShape first;
  LbfShape second;
  Integers thresholds;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const std::size_t at = trees.startOf(i) + static_cast<std::size_t>(nodes[i]);
    const LbfSplit& split = trees.stage.splits[at];
    first.x[i] = split.x1;
    first.y[i] = split.y1;
    second.x[i] = split.x2;
    second.y[i] = split.y2;
    thresholds[i] = trees.stage.thresholds[at];
  }
  const Integers brightness = brightnessAt(first, scene);
  const Integers other = brightnessAt(second, scene);
  for (std::size_t i = 0; i < kPoints; ++i) {
    nodes[i] = 2 * nodes[i] + (brightness[i] - other[i] < thresholds[i] ? 0 : 1);
  }
}

/// Where the trees end: numbers of leaves.
template <int kChannels> Integers leavesOf(const TreeOfEach& trees, const Scene<kChannels>& scene) {
  Integers nodes;
  nodes.fill(1);
  for (int level = 1; level < trees.model.depth; ++level) {
    descend(trees, scene, nodes);
  }
  // The nodes of the last level count on from all others, which are one less than the leaves.
  for (int& node : nodes) {
    node -= trees.model.leaves;
  }
  return nodes;
}

using LbfSum = std::array<int, kLbfCoordinates>;

/// Adds the steps of the leaves.
void add(const TreeOfEach& trees, const Integers& leaves, LbfSum& sum) {
  const auto stepOf = [&](std::size_t landmark) -> const LbfStep& {
    const auto leaf = static_cast<std::size_t>(leaves[landmark]);
    return trees.stage.steps[trees.startOf(landmark) + leaf];
  };
  // A few at once in 16 bits, of which a vector holds twice as many.
  static_assert(kLbfStepsIn16Bits == 4 && kPoints % kLbfStepsIn16Bits == 0);
  for (std::size_t i = 0; i < kPoints; i += kLbfStepsIn16Bits) {
    const LbfStep& a = stepOf(i);
    const LbfStep& b = stepOf(i + 1);
    const LbfStep& c = stepOf(i + 2);
    const LbfStep& d = stepOf(i + 3);
    LbfStep few;
    for (std::size_t k = 0; k < kLbfCoordinates; ++k) {
      few[k] = static_cast<std::int16_t>(a[k] + b[k] + c[k] + d[k]);
    }
    for (std::size_t k = 0; k < kLbfCoordinates; ++k) {
      sum[k] += few[k];
    }
  }
}

/// The sum of the steps of all leaves that the trees of a stage end in.
template <int kChannels>
LbfSum sumOfSteps(const LbfModel& model, const LbfStage& stage, const Scene<kChannels>& scene) {
  LbfSum sum{};
  for (int number = 0; number < model.treesPerLandmark; ++number) {
    const TreeOfEach trees{model, stage, number};
    add(trees, leavesOf(trees, scene), sum);
  }
  return sum;
}

LbfShape moved(const LbfShape& shape, const LbfSum& steps, const Similarity& similarity) {
  const auto& [scale, cosine, sine] = similarity;
  LbfShape result;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const double x = steps[i] * kLbfStepUnit;
    const double y = steps[kPoints + i] * kLbfStepUnit;
    result.x[i] = (x * cosine - y * sine) * scale + shape.x[i];
    result.y[i] = (x * sine + y * cosine) * scale + shape.y[i];
  }
  return result;
}

/// A face on the way to its landmarks.
template <int kChannels> struct Face {
  Surroundings surroundings;
  /// The surroundings alone.
  GreyView<kChannels> picture;
  Placement placement;
  /// In pixels of the surroundings.
  LbfShape landmarks;
};

template <int kChannels>
void fitStage(const LbfModel& model, const LbfStage& stage, Face<kChannels>& face) {
  // Not the shape that the pixels were made from: there and back it is rounded, in OpenCV as well.
  const LbfShape shape = fromPixels(face.landmarks, face.placement);
  const Similarity similarity = similarityTo(shape, model.normalMeanShape);
  const Scene<kChannels> scene{face.picture, face.landmarks, face.placement, similarity};
  const LbfSum steps = sumOfSteps(model, stage, scene);
  face.landmarks = toPixels(moved(shape, steps, similarity), face.placement);
}

/// All faces go through a stage before the next, so that its trees and steps stay in the cache.
template <int kChannels>
void fitStages(const LbfModel& model, std::vector<Face<kChannels>>& faces) {
  for (const LbfStage& stage : model.stages) {
    for (Face<kChannels>& face : faces) {
      fitStage(model, stage, face);
    }
  }
}

// Marks a function that is compiled with AVX2, together with all that it calls: that becomes part of
// it, and stays without AVX2 as functions of their own, which other processors run. AVX2 has no fused
// multiply-adds, whose one rounding for two operations would change results.
#if defined(__GNUC__) && defined(__x86_64__)
#define QOROCV_WITH_AVX2 __attribute__((target("avx2"), flatten))
#else
#define QOROCV_WITH_AVX2
#endif

template <int kChannels>
QOROCV_WITH_AVX2 void fitStagesAvx2(const LbfModel& model, std::vector<Face<kChannels>>& faces) {
  fitStages(model, faces);
}

template <int kChannels> LandmarkSet landmarksInPicture(const Face<kChannels>& face) {
  LandmarkSet points;
  points.reserve(LbfShape::kPoints);
  for (std::size_t i = 0; i < kPoints; ++i) {
    points.emplace_back(static_cast<float>(face.landmarks.x[i] + face.surroundings.left),
                        static_cast<float>(face.landmarks.y[i] + face.surroundings.top));
  }
  return points;
}

template <int kChannels>
std::optional<std::vector<LandmarkSet>> fitFaces(const LbfModel& model, const cv::Mat& picture,
                                                 const std::vector<cv::Rect>& boxes,
                                                 InstructionSet instructions) {
  std::vector<Face<kChannels>> faces;
  faces.reserve(boxes.size());
  for (const cv::Rect& box : boxes) {
    const Surroundings surroundings = surroundingsOf(box, picture);
    if (surroundings.isEmpty()) {
      return std::nullopt;
    }
    const Placement placement = placementOf(box, surroundings);
    faces.push_back(
        {surroundings, {picture, surroundings}, placement, toPixels(model.meanShape, placement)});
  }
  switch (instructions) {
  case InstructionSet::plain:
    fitStages(model, faces);
    break;
  case InstructionSet::avx2:
    fitStagesAvx2(model, faces);
    break;
  }
  std::vector<LandmarkSet> landmarks(faces.size());
  std::transform(faces.begin(), faces.end(), landmarks.begin(), landmarksInPicture<kChannels>);
  return landmarks;
}

} // namespace

std::optional<std::vector<LandmarkSet>> fitLbf(const LbfModel& model, const cv::Mat& picture,
                                               const std::vector<cv::Rect>& boxes,
                                               InstructionSet instructions) {
  CV_Assert(isAvailable(instructions));
  switch (picture.type()) {
  case CV_8UC1:
    return fitFaces<1>(model, picture, boxes, instructions);
  case CV_8UC3:
    return fitFaces<3>(model, picture, boxes, instructions);
  case CV_8UC4:
    return fitFaces<4>(model, picture, boxes, instructions);
  default:
    CV_Error(cv::Error::StsUnsupportedFormat, "Landmarks are fitted in 8-bit grey, BGR and BGRA.");
  }
}

} // namespace qorocv
