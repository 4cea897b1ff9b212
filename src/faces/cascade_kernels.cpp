#include "faces/cascade_kernels.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>

#ifdef __x86_64__
#include <immintrin.h>
#endif

#if QOROCV_HAS_CASCADE_KERNELS

namespace qorocv {

namespace {

// GCC's and clang's vectors.
template <typename Number, int kBytes> struct VectorOf {
  typedef Number Type __attribute__((vector_size(kBytes)));
};

constexpr double kNormArea = kNormWindow * kNormWindow;

// The least that 324 * sum of squares - (sum of pixels)^2 can be for a window that OpenCV looks at:
// it asks whether 324 / sqrt(contrast), in single precision, is below 0.1.
constexpr double kLeastContrast = 10497601;

// A stage's sum for one window as OpenCV forms it, in double precision. In this precision sums of
// leaves are exact, so that the order of the stumps does not matter.
bool passesExactly(const PlacedStages& placed, const Stage& stage, const std::uint16_t* corner,
                   float factor) {
  double sum = 0;
  for (int i = stage.first; i < stage.first + stage.count; ++i) {
    const PlacedStump& at = placed.stumps[static_cast<std::size_t>(i)];
    const Stump& stump = placed.model.stumps[static_cast<std::size_t>(i)];
    const auto edge = [&at, corner](std::size_t number) {
      return corner[at.from[number]] - corner[at.to[number]];
    };
    const int outer = edge(0) + edge(1);
    const int inner = edge(2) + edge(3) + edge(4) + edge(5);
    const int value = stump.feature.kind == FeatureKind::wide
                          ? static_cast<std::uint16_t>(inner) * (at.weight - 1) -
                                static_cast<std::uint16_t>(-(outer + inner))
                          : static_cast<std::int16_t>(outer + inner * at.weight);
    sum += static_cast<double>(static_cast<float>(value) * factor < stump.threshold ? stump.below
                                                                                    : stump.above);
  }
  return sum >= stage.threshold;
}

} // namespace

} // namespace qorocv

// One source, compiled for each instruction set into a namespace of its own. Every header is
// included above it: a function of theirs that was compiled for AVX2 might be the one copy that the
// linker keeps, for processors without it, too.

#define QOROCV_KERNELS plain
#define QOROCV_VECTOR_BYTES 16
#define QOROCV_DEAL_FIRST_HALVES 0, 8, 1, 9, 2, 10, 3, 11
#define QOROCV_DEAL_SECOND_HALVES 4, 12, 5, 13, 6, 14, 7, 15
#define QOROCV_EVEN_OF_TWO 0, 2, 4, 6
#define QOROCV_ODD_OF_TWO 1, 3, 5, 7
#include "faces/cascade_kernels-inl.h"
#undef QOROCV_KERNELS
#undef QOROCV_VECTOR_BYTES
#undef QOROCV_DEAL_FIRST_HALVES
#undef QOROCV_DEAL_SECOND_HALVES
#undef QOROCV_EVEN_OF_TWO
#undef QOROCV_ODD_OF_TWO

#ifdef __x86_64__
#ifdef __clang__
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif
#define QOROCV_KERNELS avx2
#define QOROCV_VECTOR_BYTES 32
#define QOROCV_DEAL_FIRST_HALVES 0, 16, 1, 17, 2, 18, 3, 19, 8, 24, 9, 25, 10, 26, 11, 27
#define QOROCV_EVEN_OF_TWO 0, 2, 4, 6, 8, 10, 12, 14
#define QOROCV_ODD_OF_TWO 1, 3, 5, 7, 9, 11, 13, 15
#define QOROCV_DEAL_SECOND_HALVES 4, 20, 5, 21, 6, 22, 7, 23, 12, 28, 13, 29, 14, 30, 15, 31
#include "faces/cascade_kernels-inl.h"
#undef QOROCV_KERNELS
#undef QOROCV_VECTOR_BYTES
#undef QOROCV_DEAL_FIRST_HALVES
#undef QOROCV_DEAL_SECOND_HALVES
#undef QOROCV_EVEN_OF_TWO
#undef QOROCV_ODD_OF_TWO
#ifdef __clang__
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif
#endif

namespace qorocv {

const CascadeKernels& cascadeKernels(InstructionSet set) {
  CV_Assert(isAvailable(set));
#ifdef __x86_64__
  if (set == InstructionSet::avx2) {
    return avx2::kKernels;
  }
#endif
  return plain::kKernels;
}

} // namespace qorocv

#else

namespace qorocv {

const CascadeKernels& cascadeKernels(InstructionSet) {
  CV_Error(cv::Error::StsNotImplemented, "no kernels were compiled");
}

} // namespace qorocv

#endif
