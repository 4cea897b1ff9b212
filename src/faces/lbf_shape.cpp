// The results are OpenCV's to the last bit, so every operation and its order is the one that
// OpenCV 4.6 does, and comments tell where that is not the one that comes to mind.
#include "faces/lbf_shape.h"

#include <cfloat>
#include <cmath>

namespace qorocv {

namespace {

constexpr std::size_t kPoints = LbfShape::kPoints;

double mean(const std::array<double, kPoints>& values) {
  double sum = 0;
  for (const double value : values) {
    sum += value;
  }
  // Not the quotient, which may round otherwise.
  return sum * (1. / kPoints);
}

// OpenCV takes the size from the covariance of two vectors, all x and all y, rather than of the 68
// points: every point is centred on the mean of its own two coordinates.
double sizeOf(const LbfShape& centred) {
  double xx = 0;
  double xy = 0;
  double yy = 0;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const double middle = (centred.x[i] + centred.y[i]) * 0.5;
    const double x = centred.x[i] - middle;
    const double y = centred.y[i] - middle;
    xx += x * x;
    xy += x * y;
    yy += y * y;
  }
  const double norm = std::sqrt(xx * xx + xy * xy + xy * xy + yy * yy);
  return std::sqrt(norm);
}

} // namespace

LbfNormalShape normalised(const LbfShape& shape) {
  const double centreX = mean(shape.x);
  const double centreY = mean(shape.y);
  LbfNormalShape normal{};
  for (std::size_t i = 0; i < kPoints; ++i) {
    normal.points.x[i] = shape.x[i] - centreX;
    normal.points.y[i] = shape.y[i] - centreY;
  }
  normal.size = sizeOf(normal.points);

  // A matrix is divided by way of the reciprocal, and left alone where that is one.
  const double factor = 1. / normal.size;
  if (std::fabs(factor - 1.) < DBL_EPSILON) {
    return normal;
  }
  for (std::size_t i = 0; i < kPoints; ++i) {
    normal.points.x[i] *= factor;
    normal.points.y[i] *= factor;
  }
  return normal;
}

Similarity similarityTo(const LbfShape& shape, const LbfNormalShape& from) {
  const LbfNormalShape to = normalised(shape);
  double yx = 0;
  double xy = 0;
  double xx = 0;
  double yy = 0;
  for (std::size_t i = 0; i < kPoints; ++i) {
    yx += to.points.y[i] * from.points.x[i];
    xy += to.points.x[i] * from.points.y[i];
    xx += to.points.x[i] * from.points.x[i];
    yy += to.points.y[i] * from.points.y[i];
  }
  const double sine = yx - xy;
  const double cosine = xx + yy;
  const double norm = std::sqrt(sine * sine + cosine * cosine);
  return {to.size / from.size, cosine / norm, sine / norm};
}

} // namespace qorocv
