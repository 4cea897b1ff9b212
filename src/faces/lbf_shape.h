// The 68 landmarks of a face as the LBF fitter reckons with them.
#pragma once

#include "faces/landmarks.h"

#include <array>
#include <cstddef>

namespace qorocv {

struct LbfShape {
  static constexpr std::size_t kPoints = kLandmarkCount;

  std::array<double, kPoints> x;
  std::array<double, kPoints> y;
};

/// A shape about its centre, divided by its size.
struct LbfNormalShape {
  LbfShape points;
  double size;
};

LbfNormalShape normalised(const LbfShape& shape);

/// A turn and a scale. (x, y) becomes scale * (cosine * x - sine * y, sine * x + cosine * y).
struct Similarity {
  double scale;
  double cosine;
  double sine;
};

/// What carries `from` to the turn and the size of `shape`, in the sense of least squares.
Similarity similarityTo(const LbfShape& shape, const LbfNormalShape& from);

} // namespace qorocv
