// Every operation in floating point, and its order, is the one that OpenCV does: see lbf_shape.cpp.
//
// The arithmetic stands in plain loops without branches, which the compiler turns into vectors: of
// two doubles for every processor and of four where it has AVX2.
#include "faces/lbf_fitter.h"

#include "faces/lbf_surroundings.h"

#include <algorithm>
#include <array>

namespace qorocv {

namespace {

constexpr std::size_t kPoints = LbfShape::kPoints;

LbfSurroundings fittableSurroundingsOf(const cv::Rect& box, const cv::Size& picture) {
  if (box.width <= 0) {
    CV_Error(cv::Error::StsBadArg, "A face's box has no width.");
  }
  const LbfSurroundings surroundings = lbfSurroundingsOf(box, picture);
  CV_Assert(surroundings.width >= 0 && surroundings.height >= 0);
  return surroundings;
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
Placement placementOf(const cv::Rect& box, const LbfSurroundings& surroundings) {
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
  GreyView(const cv::Mat& picture, const LbfSurroundings& area)
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

/// A face on the way to its landmarks.
template <int kChannels> struct Face {
  LbfSurroundings surroundings;
  /// The surroundings alone.
  GreyView<kChannels> picture;
  Placement placement;
  /// In pixels of the surroundings.
  LbfShape landmarks;
};

/// So many trees of a stage are asked side by side: the way down one tree is a chain of loads that
/// wait for each other, and the compiler makes vectors of their arithmetic. The leaves of two
/// batches, 440 KB for trees of five levels, stay in the second cache while all faces go through.
constexpr std::size_t kTreesPerBatch = 24;

using Doubles = std::array<double, kTreesPerBatch>;
using Integers = std::array<int, kTreesPerBatch>;

/// Consecutive trees of a stage. Behind the last one stands that one again, to fill the batch.
struct Batch {
  std::size_t trees;

  /// Where the lists of the stage begin for a tree.
  std::array<std::size_t, kTreesPerBatch> starts;
  std::array<std::size_t, kTreesPerBatch> landmarks;
};

Batch batchAt(std::size_t firstTree, const LbfModel& model) {
  const auto trees = static_cast<std::size_t>(model.trees());
  Batch batch;
  batch.trees = std::min(kTreesPerBatch, trees - firstTree);
  for (std::size_t i = 0; i < kTreesPerBatch; ++i) {
    const std::size_t tree = std::min(firstTree + i, trees - 1);
    batch.starts[i] = tree * static_cast<std::size_t>(model.leaves);
    batch.landmarks[i] = tree / static_cast<std::size_t>(model.treesPerLandmark);
  }
  return batch;
}

/// Places next to landmarks, as LbfSplit has them, and the landmarks.
struct Places {
  Doubles x;
  Doubles y;
};

template <int kChannels>
Integers brightnessAt(const Places& places, const Places& landmarks, const Face<kChannels>& face,
                      const Similarity& similarity) {
  const auto& [scale, cosine, sine] = similarity;
  Integers columns;
  Integers rows;
  for (std::size_t i = 0; i < kTreesPerBatch; ++i) {
    const double x = scale * (cosine * places.x[i] - sine * places.y[i]);
    const double y = scale * (sine * places.x[i] + cosine * places.y[i]);
    columns[i] = face.picture.columnAt(x * face.placement.halfWidth + landmarks.x[i]);
    rows[i] = face.picture.rowAt(y * face.placement.halfHeight + landmarks.y[i]);
  }
  Integers brightness;
  for (std::size_t i = 0; i < kTreesPerBatch; ++i) {
    brightness[i] = face.picture.at(columns[i], rows[i]);
  }
  return brightness;
}

/// Where the trees end: the numbers of the steps in the stage.
template <typename Number, int kChannels>
Integers leavesOf(const Batch& batch, const LbfModel& model, const LbfStageOf<Number>& stage,
                  const Face<kChannels>& face, const Similarity& similarity) {
  Places landmarks;
  for (std::size_t i = 0; i < kTreesPerBatch; ++i) {
    landmarks.x[i] = face.landmarks.x[batch.landmarks[i]];
    landmarks.y[i] = face.landmarks.y[batch.landmarks[i]];
  }
  Integers nodes;
  nodes.fill(1);
  for (int level = 1; level < model.depth; ++level) {
    Places first;
    Places second;
    Integers thresholds;
    for (std::size_t i = 0; i < kTreesPerBatch; ++i) {
      const std::size_t at = batch.starts[i] + static_cast<std::size_t>(nodes[i]);
      const LbfSplit<Number>& split = stage.splits[at];
      first.x[i] = split.x1;
      first.y[i] = split.y1;
      second.x[i] = split.x2;
      second.y[i] = split.y2;
      thresholds[i] = stage.thresholds[at];
    }
    const Integers brightness = brightnessAt(first, landmarks, face, similarity);
    const Integers other = brightnessAt(second, landmarks, face, similarity);
    for (std::size_t i = 0; i < kTreesPerBatch; ++i) {
      nodes[i] = 2 * nodes[i] + (brightness[i] - other[i] < thresholds[i] ? 0 : 1);
    }
  }
  // The nodes of the last level count on from all others, which are one less than the leaves.
  for (std::size_t i = 0; i < kTreesPerBatch; ++i) {
    nodes[i] += static_cast<int>(batch.starts[i]) - model.leaves;
  }
  return nodes;
}

/// Tells the cache to have a step soon.
template <typename Number> void fetch([[maybe_unused]] const LbfStep<Number>& step) {
#if defined(__GNUC__)
  constexpr std::size_t kLine = 64;
  const auto* const bytes = reinterpret_cast<const char*>(&step);
  for (std::size_t at = 0; at < sizeof(step); at += kLine) {
    __builtin_prefetch(bytes + at);
  }
#endif
}

/// What the leaves of a batch add to the landmarks.
template <typename Number> using BatchSteps = std::array<const LbfStep<Number>*, kTreesPerBatch>;

template <typename Number>
BatchSteps<Number> stepsOf(const Integers& leaves, const LbfStageOf<Number>& stage) {
  BatchSteps<Number> steps;
  for (std::size_t i = 0; i < kTreesPerBatch; ++i) {
    steps[i] = &stage.steps[static_cast<std::size_t>(leaves[i])];
    fetch(*steps[i]); // they are added after the next batch of trees
  }
  return steps;
}

/// Sums are loaded and stored once for so many steps. Every number of trees divides by it.
constexpr std::size_t kStepsAtOnce = 4;
static_assert(kPoints % kStepsAtOnce == 0 && kTreesPerBatch % kStepsAtOnce == 0);

/// Adds the first `count` steps in the order of their trees: in another, sums would round
/// otherwise.
template <typename Number>
void add(const BatchSteps<Number>& steps, std::size_t count, LbfOffsets<double>& sum) {
  for (std::size_t i = 0; i < count; i += kStepsAtOnce) {
    const auto& a = steps[i]->offsets;
    const auto& b = steps[i + 1]->offsets;
    const auto& c = steps[i + 2]->offsets;
    const auto& d = steps[i + 3]->offsets;
    for (std::size_t k = 0; k < kLbfCoordinates; ++k) {
      sum[k] = sum[k] + a[k] + b[k] + c[k] + d[k];
    }
  }
}

LbfShape moved(const LbfShape& shape, const LbfOffsets<double>& offsets,
               const Similarity& similarity) {
  const auto& [scale, cosine, sine] = similarity;
  LbfShape result;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const double x = offsets[i];
    const double y = offsets[kPoints + i];
    result.x[i] = (x * cosine - y * sine) * scale + shape.x[i];
    result.y[i] = (x * sine + y * cosine) * scale + shape.y[i];
  }
  return result;
}

/// How far a face has come in a stage.
template <typename Number> struct Progress {
  LbfShape shape;
  Similarity similarity;
  LbfOffsets<double> sum;
  /// Of the batch before, yet to be added.
  BatchSteps<Number> steps;
  std::size_t count;
};

template <typename Number> Progress<Number> startOf(const LbfShape& shape, const LbfModel& model) {
  return {shape, similarityTo(shape, model.normalMeanShape), {}, {}, 0};
}

/// All faces go through a batch of trees before the next, so that its leaves stay in the cache.
template <typename Number, int kChannels>
void fitStage(const LbfModel& model, const LbfStageOf<Number>& stage,
              std::vector<Face<kChannels>>& faces) {
  std::vector<Progress<Number>> progress;
  progress.reserve(faces.size());
  for (const Face<kChannels>& face : faces) {
    // Not the shape that the pixels were made from: there and back it is rounded, in OpenCV as
    // well.
    progress.push_back(startOf<Number>(fromPixels(face.landmarks, face.placement), model));
  }
  const auto trees = static_cast<std::size_t>(model.trees());
  for (std::size_t tree = 0; tree < trees; tree += kTreesPerBatch) {
    const Batch batch = batchAt(tree, model);
    for (std::size_t i = 0; i < faces.size(); ++i) {
      Progress<Number>& at = progress[i];
      const BatchSteps<Number> steps =
          stepsOf(leavesOf(batch, model, stage, faces[i], at.similarity), stage);
      add(at.steps, at.count, at.sum);
      at.steps = steps;
      at.count = batch.trees;
    }
  }
  for (std::size_t i = 0; i < faces.size(); ++i) {
    Progress<Number>& at = progress[i];
    add(at.steps, at.count, at.sum);
    faces[i].landmarks = toPixels(moved(at.shape, at.sum, at.similarity), faces[i].placement);
  }
}

template <int kChannels>
void fitStages(const LbfModel& model, std::vector<Face<kChannels>>& faces) {
  for (const LbfStage& stage : model.stages) {
    // Not std::visit, whose calls by way of a table the compiler would not take into fitStagesAvx2.
    if (const auto* const inFloats = std::get_if<LbfStageOf<float>>(&stage)) {
      fitStage(model, *inFloats, faces);
    } else {
      fitStage(model, std::get<LbfStageOf<double>>(stage), faces);
    }
  }
}

// Marks a function that is compiled with AVX2, together with all that it calls: that becomes part
// of it, and stays without AVX2 as functions of their own, which other processors run. AVX2 has no
// fused multiply-adds, whose one rounding for two operations would change results.
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
    if (leavesNothingToRead(box, picture.size())) {
      return std::nullopt;
    }
    const LbfSurroundings surroundings = fittableSurroundingsOf(box, picture.size());
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
