// The kernels of cascade_kernels.h. Included once for each instruction set, therefore no guard.
//
// Written with the vectors of GCC and clang: arithmetic on them is arithmetic on every lane, and
// the compiler chooses the instructions. Where it does not find the right ones of AVX2 they are
// named, beside plain C++ that gives the same. Everything stands in a namespace without a name
// inside that of the instruction set, so that nothing compiled for one set can be taken for the
// other. No lambdas: GCC compiles them without the instruction set.

namespace qorocv::QOROCV_KERNELS {
namespace {

constexpr int kVectorBytes = QOROCV_VECTOR_BYTES;

using Words = VectorOf<std::uint16_t, kVectorBytes>::Type;
using Ints = VectorOf<std::int32_t, kVectorBytes>::Type;
using Floats = VectorOf<float, kVectorBytes>::Type;
using Bytes = VectorOf<std::uint8_t, kVectorBytes / 2>::Type;
using Doubles = VectorOf<double, kVectorBytes>::Type;
using Longs = VectorOf<std::int64_t, kVectorBytes>::Type;
using HalfInts = VectorOf<std::int32_t, kVectorBytes / 2>::Type;
using HalfFloats = VectorOf<float, kVectorBytes / 2>::Type;
using Quads = VectorOf<std::uint64_t, kVectorBytes>::Type;

constexpr int kLanes = kVectorBytes / 2; // of Words
constexpr int kPairs = kLanes / 2;       // lanes of Ints and Floats

template <typename Vector> inline Vector load(const void* from) {
  Vector vector;
  std::memcpy(&vector, from, sizeof vector);
  return vector;
}

template <typename Vector> inline void store(Vector vector, void* to) {
  std::memcpy(to, &vector, sizeof vector);
}

// A vector of words as two of integers: the even lanes, and the odd ones. Each is one half of a
// 32-bit number already, so that no lane has to move.
struct IntPair {
  Ints even;
  Ints odd;
};

// Signed words as integers kScaledUp times as large: to move them down would take more instructions
// than to move them up, and a power of two changes no rounding.
constexpr float kScaledUp = 65536;

inline IntPair fromSignedScaledUp(Words words) {
  const Ints pairs = reinterpret_cast<Ints>(words);
  return {pairs << 16, pairs & ~0xFFFF};
}

inline IntPair fromUnsigned(Words words) {
  const Ints pairs = reinterpret_cast<Ints>(words);
  return {pairs & 0xFFFF, (pairs >> 16) & 0xFFFF};
}

// Bit i tells of lane i. Lanes are the results of comparisons: all ones or all zeros.
#if QOROCV_VECTOR_BYTES == 32
inline std::uint32_t bitsOf(IntPair lanes) {
  const __m256i words = _mm256_blend_epi16(reinterpret_cast<__m256i>(lanes.even),
                                           reinterpret_cast<__m256i>(lanes.odd), 0b10101010);
  const __m128i bytes =
      _mm_packs_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
  return static_cast<std::uint32_t>(_mm_movemask_epi8(bytes)); // the highest bit of every byte
}
#else
inline std::uint32_t bitsOf(IntPair lanes) {
  const Words words = reinterpret_cast<Words>((lanes.even & 1) | ((lanes.odd & 1) << 16));
  const Bytes bytes = __builtin_convertvector(words, Bytes);
  std::uint32_t bits = 0;
  for (int i = 0; i < kLanes; i += 8) {
    std::uint64_t eight = 0;
    std::memcpy(&eight, reinterpret_cast<const char*>(&bytes) + i, sizeof eight);
    // Of each byte the product moves the one bit to a place of its own in the highest byte.
    bits |= static_cast<std::uint32_t>((eight * 0x0102040810204080U) >> 56U) << i;
  }
  return bits;
}
#endif

// ---- Resizing

constexpr int kBlendOffset = 1 << 15;

inline void blendEightColumns(const ColumnBlend& blend, const std::uint8_t* row,
                              std::int16_t* blended) {
  for (std::size_t i = 0; i < 8; ++i) {
    const std::uint8_t* const pixels = row + blend.firsts[i];
    blended[i] = static_cast<std::int16_t>(pixels[0] * blend.weights[2 * i] +
                                           pixels[1] * blend.weights[2 * i + 1] - kBlendOffset);
  }
}

#if QOROCV_VECTOR_BYTES == 32
inline __m128i pick(const std::uint8_t* from, const std::uint8_t* shuffle) {
  return _mm_shuffle_epi8(load<__m128i>(from), load<__m128i>(shuffle));
}

void blendColumns(const std::vector<ColumnBlend>& blends, const std::uint8_t* row,
                  std::int16_t* blended) {
  for (const ColumnBlend& blend : blends) {
    if (blend.takesTwoLoads) {
      const std::uint8_t* const shuffles = blend.shuffles.data();
      const __m128i pixels = _mm_or_si128(pick(row + blend.loads[0], shuffles),
                                          pick(row + blend.loads[1], shuffles + 16));
      const __m256i sums = _mm256_madd_epi16( // of the products of two neighbours each
          _mm256_cvtepu8_epi16(pixels), load<__m256i>(blend.weights.data()));
      const __m256i moved = _mm256_sub_epi32(sums, _mm256_set1_epi32(kBlendOffset));
      store(_mm_packs_epi32(_mm256_castsi256_si128(moved), _mm256_extracti128_si256(moved, 1)),
            blended);
    } else {
      blendEightColumns(blend, row, blended);
    }
    blended += 8;
  }
}
#else
void blendColumns(const std::vector<ColumnBlend>& blends, const std::uint8_t* row,
                  std::int16_t* blended) {
  for (const ColumnBlend& blend : blends) {
    blendEightColumns(blend, row, blended);
    blended += 8;
  }
}
#endif

// A plain loop, which the compiler turns into vectors.
void blendRows(const std::int16_t* __restrict upper, const std::int16_t* __restrict lower,
               int weightOfLower, int columns, std::uint8_t* __restrict pixels) {
  constexpr int kUnit = kBlendUnit * kBlendUnit;
  constexpr int kOffsets = kBlendOffset * kBlendUnit;
  const auto lowerWeight = static_cast<std::int16_t>(weightOfLower);
  const auto upperWeight = static_cast<std::int16_t>(kBlendUnit - weightOfLower);
  for (int x = 0; x < columns; ++x) {
    const int sum = upper[x] * upperWeight + lower[x] * lowerWeight;
    pixels[x] =
        static_cast<std::uint8_t>(static_cast<unsigned>(sum + kOffsets + kUnit / 2) / kUnit);
  }
}

// ---- Sums

inline std::uint16_t wrapped(unsigned sum) {
  return static_cast<std::uint16_t>(sum);
}

inline std::int32_t squaresOfPair(const std::uint8_t* pixels) {
  return pixels[0] * pixels[0] + pixels[1] * pixels[1];
}

#if QOROCV_VECTOR_BYTES == 32
// Adds up pixels from left to right, modulo 2^16.
class RunningSums {
public:
  RunningSums() : left_(_mm256_setzero_si256()) {}

  // Of pairs of pixels: the sums of everything to the left of the first one, and of the second one.
  struct Pairs {
    __m256i first;
    __m256i second;
  };

  // The next 32 pixels of a row, of which only `count` are there.
  Pairs next(const std::uint8_t* pixels, int count) {
    if (count >= 32) {
      return next(load<__m256i>(pixels));
    }
    __m256i last = _mm256_setzero_si256();
    std::memcpy(&last, pixels, static_cast<std::size_t>(count));
    return next(last);
  }

private:
  Pairs next(__m256i pixels) {
    const __m256i pairs = _mm256_maddubs_epi16(pixels, _mm256_set1_epi8(1));
    // Each pair with all those to the left in the same half of the register: with one, with two and
    // with four more.
    __m256i sums = _mm256_add_epi16(pairs, _mm256_slli_si256(pairs, 2));
    sums = _mm256_add_epi16(sums, _mm256_slli_si256(sums, 4));
    sums = _mm256_add_epi16(sums, _mm256_slli_si256(sums, 8));
    // The last sum of the lower half goes into the upper one.
    const __m256i lastOfHalf = _mm256_set1_epi16(0x0F0E);
    const __m256i lowerHalfAbove = _mm256_permute2x128_si256(sums, sums, 0x08);
    sums = _mm256_add_epi16(sums, _mm256_shuffle_epi8(lowerHalfAbove, lastOfHalf));

    const __m256i first = _mm256_add_epi16(left_, _mm256_sub_epi16(sums, pairs));
    const __m256i evenPixels = _mm256_and_si256(pixels, _mm256_set1_epi16(0xFF));
    const __m256i upperHalf = _mm256_permute4x64_epi64(sums, 0xFF);
    left_ = _mm256_add_epi16(left_, _mm256_shuffle_epi8(upperHalf, lastOfHalf));
    return {first, _mm256_add_epi16(first, evenPixels)};
  }

  __m256i left_; // of all pixels so far, in every lane
};

inline void storeSums(__m256i ofRow, const std::uint16_t* above, std::uint16_t* sums) {
  store(_mm256_add_epi16(ofRow, load<__m256i>(above)), sums);
}

void sumRow(const std::uint8_t* pixels, int width, const std::uint16_t* above,
            std::uint16_t* sums) {
  RunningSums running;
  for (int x = 0; x <= width; x += 32) {
    const RunningSums::Pairs pairs = running.next(pixels + x, width - x);
    // Back in turns: within either half of the register first, and then the halves.
    const __m256i inner = _mm256_unpacklo_epi16(pairs.first, pairs.second);
    const __m256i outer = _mm256_unpackhi_epi16(pairs.first, pairs.second);
    storeSums(_mm256_permute2x128_si256(inner, outer, 0x20), above + x, sums + x);
    storeSums(_mm256_permute2x128_si256(inner, outer, 0x31), above + x + 16, sums + x + 16);
  }
}

void sumSplitRow(const std::uint8_t* pixels, int width, const std::uint16_t* above,
                 std::uint16_t* sums, std::ptrdiff_t half) {
  RunningSums running;
  for (int x = 0; x <= width; x += 32) {
    const RunningSums::Pairs pairs = running.next(pixels + x, width - x);
    storeSums(pairs.first, above + x / 2, sums + x / 2);
    storeSums(pairs.second, above + half + x / 2, sums + half + x / 2);
  }
}

inline __m256i squaresOfEightPairs(const std::uint8_t* pixels) {
  const __m256i words = _mm256_cvtepu8_epi16(load<__m128i>(pixels));
  return _mm256_madd_epi16(words, words); // sums of two products each
}

void moveSquares(std::int32_t* pairs, int count, const std::uint8_t* leaving,
                 const std::uint8_t* entering) {
  std::ptrdiff_t i = 0;
  for (; i + 8 <= count; i += 8) {
    const __m256i change = _mm256_sub_epi32(squaresOfEightPairs(entering + 2 * i),
                                            squaresOfEightPairs(leaving + 2 * i));
    store(_mm256_add_epi32(load<__m256i>(pairs + i), change), pairs + i);
  }
  for (; i < count; ++i) {
    pairs[i] += squaresOfPair(entering + 2 * i) - squaresOfPair(leaving + 2 * i);
  }
}
#else
void sumRow(const std::uint8_t* pixels, int width, const std::uint16_t* above,
            std::uint16_t* sums) {
  unsigned sum = 0;
  for (int x = 0; x < width; ++x) {
    sums[x] = wrapped(above[x] + sum);
    sum += pixels[x];
  }
  sums[width] = wrapped(above[width] + sum);
}

void sumSplitRow(const std::uint8_t* pixels, int width, const std::uint16_t* above,
                 std::uint16_t* sums, std::ptrdiff_t half) {
  unsigned sum = 0;
  const int pairs = width / 2;
  for (int pair = 0; pair < pairs; ++pair) {
    const unsigned even = *pixels++;
    const unsigned odd = *pixels++;
    sums[pair] = wrapped(above[pair] + sum);
    sums[half + pair] = wrapped(above[half + pair] + sum + even);
    sum += even + odd;
  }
  sums[pairs] = wrapped(above[pairs] + sum);
  if (width % 2 != 0) {
    sums[half + pairs] = wrapped(above[half + pairs] + sum + *pixels);
  }
}

void moveSquares(std::int32_t* pairs, int count, const std::uint8_t* leaving,
                 const std::uint8_t* entering) {
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    pairs[i] += squaresOfPair(entering + 2 * i) - squaresOfPair(leaving + 2 * i);
  }
}
#endif

// ---- Stages

// Adds up what the stumps of a stage say of windows side by side. Two vectors of them share the
// loading of the stumps.
template <int kVectors> class Votes {
public:
  Votes(const std::uint16_t* corner, const WindowFactors& factors) : corner_(corner) {
    for (int i = 0; i < kVectors; ++i) {
      const WindowFactors ofVector = factors.from(i * kLanes);
      evenFactors_[i] = load<Floats>(ofVector.even) / kScaledUp;
      oddFactors_[i] = load<Floats>(ofVector.odd) / kScaledUp;
    }
  }

  template <std::size_t kEdges> void add(const PlacedStump& stump) {
    for (int i = 0; i < kVectors; ++i) {
      const Words weighted = weightedInner<kEdges>(stump, i);
      const IntPair values = fromSignedScaledUp(outer(stump, i) + weighted);
      addVotes(stump, i, __builtin_convertvector(values.even, Floats),
               __builtin_convertvector(values.odd, Floats));
    }
  }

  // The inner rectangles, and what they leave of the outer one, each fit into 16 bits by
  // themselves.
  void addWide(const PlacedStump& stump) {
    const std::int32_t weight = stump.weight - 1;
    for (int i = 0; i < kVectors; ++i) {
      const Words bright = inner<kMostEdges>(stump, i);
      const IntPair brights = fromUnsigned(bright);
      const IntPair darks = fromUnsigned(Words{} - (outer(stump, i) + bright));
      addVotes(stump, i,
               __builtin_convertvector(brights.even * weight - darks.even, Floats) * kScaledUp,
               __builtin_convertvector(brights.odd * weight - darks.odd, Floats) * kScaledUp);
    }
  }

  // The windows with at least so many votes.
  std::uint32_t reaching(std::int32_t votes) const {
    std::uint32_t bits = 0;
    for (int i = 0; i < kVectors; ++i) {
      bits |= bitsOf({votes_[i].even >= votes, votes_[i].odd >= votes}) << (i * kLanes);
    }
    return bits;
  }

private:
  Words edge(const PlacedStump& stump, std::size_t number, int vector) const {
    const std::uint16_t* const corner = corner_ + std::ptrdiff_t{vector} * kLanes;
    return load<Words>(corner + stump.from[number]) - load<Words>(corner + stump.to[number]);
  }

  Words outer(const PlacedStump& stump, int vector) const {
    return edge(stump, 0, vector) + edge(stump, 1, vector);
  }

  template <std::size_t kEdges> Words inner(const PlacedStump& stump, int vector) const {
    Words sum = edge(stump, 2, vector);
    for (std::size_t number = 3; number < kEdges; ++number) {
      sum += edge(stump, number, vector);
    }
    return sum;
  }

  template <std::size_t kEdges> Words weightedInner(const PlacedStump& stump, int vector) const {
    const Words sum = inner<kEdges>(stump, vector);
    if constexpr (kEdges == 3) {
      return sum + sum; // edges are shared only where the weight is 2
    } else {
      return sum * static_cast<std::uint16_t>(stump.weight);
    }
  }

  // The values are kScaledUp times as large. The one place where a feature is rounded: to single
  // precision, and again by the product.
  void addVotes(const PlacedStump& stump, int vector, Floats evenValues, Floats oddValues) {
    const Floats even = evenValues * evenFactors_[vector];
    const Floats odd = oddValues * oddFactors_[vector];
    votes_[vector].even += (even < stump.threshold) & stump.vote;
    votes_[vector].odd += (odd < stump.threshold) & stump.vote;
  }

  const std::uint16_t* corner_;
  Floats evenFactors_[kVectors];
  Floats oddFactors_[kVectors];
  IntPair votes_[kVectors] = {};
};

// Bits of windows: those that pass a stage, and those that may.
struct Verdicts {
  std::uint32_t passed;
  std::uint32_t inDoubt;
};

template <int kVectors>
inline Verdicts verdictsOf(const PlacedStump* stump, const Stage& stage,
                           const std::uint16_t* corner, const WindowFactors& factors) {
  Votes<kVectors> votes(corner, factors);
  for (int i = 0; i < stage.threeEdges; ++i) {
    votes.template add<3>(*stump++);
  }
  for (int i = 0; i < stage.fourEdges; ++i) {
    votes.template add<4>(*stump++);
  }
  for (int i = 0; i < stage.sixEdges; ++i) {
    votes.template add<6>(*stump++);
  }
  for (int i = 0; i < stage.wide; ++i) {
    votes.addWide(*stump++);
  }
  return {votes.reaching(stage.surelyPassed), votes.reaching(stage.surelyRejected)};
}

std::uint32_t passing(const PlacedStages& placed, const Stage& stage, const std::uint16_t* corner,
                      const WindowFactors& factors, std::uint32_t alive) {
  constexpr std::uint32_t kAllLanes = (std::uint32_t{1} << kLanes) - 1;
  const PlacedStump* const stumps = placed.stumps.data() + stage.first;
  std::uint32_t passed = 0;
  std::uint32_t inDoubt = 0;
  for (int first = 0; first < kGroup; first += kLanes) {
    const std::uint32_t next = alive >> first;
    if ((next & kAllLanes) == 0) {
      continue;
    }
    const bool two = first + kLanes < kGroup && (next >> kLanes & kAllLanes) != 0;
    const Verdicts verdicts =
        two ? verdictsOf<2>(stumps, stage, corner + first, factors.from(first))
            : verdictsOf<1>(stumps, stage, corner + first, factors.from(first));
    passed |= verdicts.passed << first;
    inDoubt |= verdicts.inDoubt << first;
    first += two ? kLanes : 0;
  }
  for (inDoubt &= alive & ~passed; inDoubt != 0; inDoubt &= inDoubt - 1) {
    const int window = __builtin_ctz(inDoubt);
    if (passesExactly(placed, stage, corner + window, factors.of(window))) {
      passed |= std::uint32_t{1} << window;
    }
  }
  return passed & alive;
}

// ---- Patches

// Two quads of each of kLanes windows. In every 16 bytes of a row lie those of one window.
struct QuadRows {
  Words rows[8];
};

inline QuadRows loadQuads(const std::uint16_t* const* corners, const std::ptrdiff_t* quads) {
  QuadRows loaded;
  for (int i = 0; i < 8; ++i) {
    Quads row{};
    for (int k = 0; k < kVectorBytes / 8; ++k) {
      row[k] = load<std::uint64_t>(corners[i + k / 2 * 8] + quads[k % 2]);
    }
    loaded.rows[i] = reinterpret_cast<Words>(row);
  }
  return loaded;
}

// Two quads that stand side by side in memory.
template <typename Vector> inline Vector loadSixteenBytes(const void* first, const void* second) {
  if constexpr (sizeof(Vector) == 16) {
    return load<Vector>(first);
  } else {
    using TwoQuads = VectorOf<std::uint64_t, 16>::Type;
    return reinterpret_cast<Vector>(
        __builtin_shufflevector(load<TwoQuads>(first), load<TwoQuads>(second), 0, 1, 2, 3));
  }
}

inline QuadRows loadAdjacentQuads(const std::uint16_t* const* corners, std::ptrdiff_t quad) {
  QuadRows loaded;
  for (int i = 0; i < 8; ++i) {
    // The second is beyond the windows of a vector of 16 bytes.
    const std::uint16_t* const second = corners[kLanes == 8 ? i : i + 8];
    loaded.rows[i] = loadSixteenBytes<Words>(corners[i] + quad, second + quad);
  }
  return loaded;
}

// Afterwards a row has one column of all windows. Three rounds, each of which deals out two halves
// like cards, within every 16 bytes by themselves.
inline QuadRows transposed(QuadRows quads) {
  for (int round = 0; round < 3; ++round) {
    QuadRows dealt;
    for (std::size_t i = 0; i < 4; ++i) {
      const Words a = quads.rows[i];
      const Words b = quads.rows[i + 4];
      dealt.rows[2 * i] = __builtin_shufflevector(a, b, QOROCV_DEAL_FIRST_HALVES);
      dealt.rows[2 * i + 1] = __builtin_shufflevector(a, b, QOROCV_DEAL_SECOND_HALVES);
    }
    quads = dealt;
  }
  return quads;
}

// Four columns, `step` numbers apart.
inline void storeQuad(const Words* columns, std::uint16_t* to, std::ptrdiff_t step) {
  store(columns[0], to);
  store(columns[1], to + step);
  store(columns[2], to + 2 * step);
  store(columns[3], to + 3 * step);
}

// Two quads of every row.
template <bool kAdjacent>
void copyQuads(const GroupCorners& corners, int count, const PatchSource& source, std::size_t quad,
               WindowPatch& patch) {
  const std::ptrdiff_t step = WindowPatch::offset(source.columnStep, 0);
  std::uint16_t* const a = patch.numbers.data() + WindowPatch::offset(source.firstColumns[quad], 0);
  std::uint16_t* const b =
      patch.numbers.data() + WindowPatch::offset(source.firstColumns[quad + 1], 0);
  for (int first = 0; first < count; first += kLanes) {
    const std::uint16_t* const* const windows = corners.data() + first;
    const std::ptrdiff_t* quads = source.offsets.data() + quad;
    for (int row = 0; row < WindowPatch::kRows; ++row, quads += PatchSource::kQuads) {
      const QuadRows columns =
          transposed(kAdjacent ? loadAdjacentQuads(windows, *quads) : loadQuads(windows, quads));
      const std::ptrdiff_t to = WindowPatch::offset(0, row) + first;
      storeQuad(columns.rows, a + to, step);
      storeQuad(columns.rows + 4, b + to, step);
    }
  }
}

void copyPatch(const GroupCorners& corners, int count, const PatchSource& source,
               WindowPatch& patch) {
  for (std::size_t quad = 0; quad < PatchSource::kQuads; quad += 2) {
    if (source.offsets[quad + 1] == source.offsets[quad] + 4) {
      copyQuads<true>(corners, count, source, quad, patch);
    } else {
      copyQuads<false>(corners, count, source, quad, patch);
    }
  }
}

// ---- Contrast

std::uint32_t contrasting(const WindowFactors& factors) {
  std::uint32_t bits = 0;
  for (int first = 0; first < kGroup; first += kLanes) {
    const WindowFactors lanes = factors.from(first);
    bits |= bitsOf({load<Floats>(lanes.even) > 0, load<Floats>(lanes.odd) > 0}) << first;
  }
  return bits;
}

#if QOROCV_VECTOR_BYTES == 32
inline Doubles rootsOf(Doubles numbers) {
  return reinterpret_cast<Doubles>(_mm256_sqrt_pd(reinterpret_cast<__m256d>(numbers)));
}
#else
inline Doubles rootsOf(Doubles numbers) {
  for (std::size_t i = 0; i < sizeof numbers / sizeof(double); ++i) {
    numbers[i] = std::sqrt(numbers[i]);
  }
  return numbers;
}
#endif

// OpenCV's own steps: the contrast in double precision, its root, the reciprocal to single
// precision. Where there is next to no contrast an infinite one takes its place, which gives 0.
inline HalfFloats factorsOf(HalfInts pixels, HalfInts squares) {
  const Doubles sums = __builtin_convertvector(pixels, Doubles);
  const Doubles contrasts = kNormArea * __builtin_convertvector(squares, Doubles) - sums * sums;
  const Longs flat = contrasts < kLeastContrast;
  const Longs infinite = reinterpret_cast<Longs>(Doubles{} + HUGE_VAL);
  const Longs chosen = (reinterpret_cast<Longs>(contrasts) & ~flat) | (infinite & flat);
  return __builtin_convertvector(1. / rootsOf(reinterpret_cast<Doubles>(chosen)), HalfFloats);
}

inline void storeFactors(Ints pixels, Ints squares, float* factors) {
  constexpr std::size_t kHalf = sizeof(HalfInts);
  const char* const pixelBytes = reinterpret_cast<const char*>(&pixels);
  const char* const squareBytes = reinterpret_cast<const char*>(&squares);
  store(factorsOf(load<HalfInts>(pixelBytes), load<HalfInts>(squareBytes)), factors);
  store(factorsOf(load<HalfInts>(pixelBytes + kHalf), load<HalfInts>(squareBytes + kHalf)),
        factors + kPairs / 2);
}

// Of the points in a row: what a window has to the left of the one, and not of the other.
inline Words between(const std::uint16_t* corner, const NormPoints& points, std::size_t row) {
  return load<Words>(corner + points.right[row]) - load<Words>(corner + points.left[row]);
}

inline Ints ninePairs(const std::int32_t* pairs) {
  Ints sum = load<Ints>(pairs);
  for (int i = 1; i < 9; ++i) {
    sum += load<Ints>(pairs + i);
  }
  return sum;
}

void toFactors(const std::uint16_t* corner, const NormPoints& points, const std::int32_t* evenPairs,
               const std::int32_t* oddPairs, float* even, float* odd) {
  for (int first = 0; first < kGroup; first += kLanes) {
    const Words middle = between(corner + first, points, 1);
    const IntPair upper = fromUnsigned(middle - between(corner + first, points, 0));
    const IntPair lower = fromUnsigned(between(corner + first, points, 2) - middle);
    IntPair squares;
    if (evenPairs != oddPairs) {
      squares = {ninePairs(evenPairs + first / 2), ninePairs(oddPairs + first / 2)};
    } else {
      const Ints a = ninePairs(evenPairs + first);
      const Ints b = ninePairs(evenPairs + first + kPairs);
      squares = {__builtin_shufflevector(a, b, QOROCV_EVEN_OF_TWO),
                 __builtin_shufflevector(a, b, QOROCV_ODD_OF_TWO)};
    }
    storeFactors(upper.even + lower.even, squares.even, even + first / 2);
    storeFactors(upper.odd + lower.odd, squares.odd, odd + first / 2);
  }
}

constexpr CascadeKernels kKernels = {blendColumns, blendRows,   contrasting, passing,  copyPatch,
                                     sumRow,       sumSplitRow, moveSquares, toFactors};

} // namespace
} // namespace qorocv::QOROCV_KERNELS
