#include "faces/cascade_scan.h"

#include "faces/cascade_kernels.h"
#include "faces/hidden_windows.h"
#include "faces/window_contrasts.h"
#include "faces/wrapped_integral.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

namespace qorocv {

namespace {

// Windows are looked at in groups. At first a group are neighbours in a row. Where a stage leaves
// only few of them, these wait before the next stage until a whole group is together again. What
// its windows see is then copied into a patch, where they are neighbours, too.

// Neighbours are split up at the latest before this stage: it costs time to find out, for every
// width of picture anew, where the features of a stage lie.
constexpr std::size_t kSplitStage = 8;

// A group of neighbours is split up when no more than this many are left.
constexpr int kFewNeighbours = 6;

// A group in a patch is split up when no more than a fourth of it is left.
constexpr int kShareLeft = 4;

// In pairs, fours, bytes and all together: what counts bits in one instruction is not on every
// processor.
int countOf(std::uint32_t windows) {
  windows -= windows >> 1U & 0x55555555U;
  windows = (windows & 0x33333333U) + (windows >> 2U & 0x33333333U);
  windows = (windows + (windows >> 4U)) & 0x0F0F0F0FU;
  return static_cast<int>(windows * 0x01010101U >> 24U);
}

int lowest(std::uint32_t windows) {
#ifdef __GNUC__
  return __builtin_ctz(windows);
#else
  return countOf(~windows & (windows - 1));
#endif
}

PatchSource patchSource(const WrappedIntegral& integral, int step) {
  PatchSource source;
  source.columnStep = step;
  if (step == 1) {
    source.firstColumns = {0, 4, 8, 12, 16, 20};
  } else {
    source.firstColumns = {0, 8, 1, 9, 16, 17};
  }
  std::size_t i = 0;
  for (int row = 0; row < WindowPatch::kRows; ++row) {
    for (const int column : source.firstColumns) {
      source.offsets[i++] = integral.offset(column, row);
    }
  }
  return source;
}

// Windows that wait before a stage.
struct WaitingGroup {
  int count = 0;
  GroupCorners corners{};
  std::array<float, kGroup / 2> evenFactors{};
  std::array<float, kGroup / 2> oddFactors{};
  std::array<cv::Point, kGroup> places;

  WindowFactors factors() const { return {evenFactors.data(), oddFactors.data()}; }
};

class Scan {
public:
  Scan(const PlacedStages& inPatch, const CascadeScale& scale, const cv::Mat& picture,
       InstructionSet set)
      : model_(inPatch.model), inPatch_(inPatch), scale_(scale), kernels_(cascadeKernels(set)),
        integral_(picture, scale.step, kernels_), contrasts_(picture, integral_, scale, kernels_),
        patchSource_(patchSource(integral_, scale.step)),
        inRow_(placeStumps(model_, std::min(kSplitStage, model_.stages.size()),
                           [this](int x, int y) { return integral_.offset(x, y); })),
        waiting_(model_.stages.size()) {}

  std::vector<cv::Point> run() {
    for (int y = 0; y < scale_.pixelRows; y += scale_.step) {
      scanRow(y);
    }
    // Those that go on wait before later stages.
    for (std::size_t stage = 0; stage < waiting_.size(); ++stage) {
      if (waiting_[stage].count > 0) {
        scanPatch(stage);
      }
    }
    std::sort(found_.begin(), found_.end(), [](const cv::Point& a, const cv::Point& b) {
      return a.y != b.y ? a.y < b.y : a.x < b.x;
    });
    return std::move(found_);
  }

private:
  void scanRow(int y) {
    constexpr int kTogether = 64; // windows for which hidden ones are found together
    const WindowFactors factors = contrasts_.ofRow(y);
    HiddenWindows hiddenWindows;
    for (int first = 0; first < scale_.windows; first += kTogether) {
      std::uint64_t contrasting = 0;
      std::uint64_t passed = 0;
      for (int i = 0; i < kTogether; i += kGroup) {
        const WindowFactors ofGroup = factors.from(first + i);
        const std::uint32_t alive = kernels_.contrasting(ofGroup);
        contrasting |= std::uint64_t{alive} << i;
        passed |= std::uint64_t{passing(0, y, first + i, ofGroup, alive)} << i;
      }
      // A window without contrast is left out before the first stage, and hides nothing.
      passed &= ~hiddenWindows.among(contrasting & ~passed);
      for (int i = 0; i < kTogether; i += kGroup) {
        scanNeighbours(y, first + i, factors.from(first + i),
                       static_cast<std::uint32_t>(passed >> i));
      }
    }
  }

  std::uint32_t passing(std::size_t stage, int y, int first, const WindowFactors& factors,
                        std::uint32_t alive) const {
    return kernels_.passing({model_, inRow_}, model_.stages[stage], integral_.window(y, first),
                            factors, alive);
  }

  void scanNeighbours(int y, int first, const WindowFactors& factors, std::uint32_t alive) {
    std::size_t stage = 1;
    for (; countOf(alive) > kFewNeighbours && stage < kSplitStage && stage < waiting_.size();
         ++stage) {
      alive = passing(stage, y, first, factors, alive);
    }
    for (; alive != 0; alive &= alive - 1) {
      const int window = first + lowest(alive);
      await(stage, integral_.window(y, window), factors.of(window - first),
            {window * scale_.step, y});
    }
  }

  // Before a stage; a window that waits behind the last one is found.
  void await(std::size_t stage, const std::uint16_t* corner, float factor, const cv::Point& place) {
    if (stage == waiting_.size()) {
      found_.push_back(place);
      return;
    }
    WaitingGroup& group = waiting_[stage];
    const auto window = static_cast<std::size_t>(group.count++);
    group.corners[window] = corner;
    auto& factors = window % 2 == 0 ? group.evenFactors : group.oddFactors;
    factors[window / 2] = factor;
    group.places[window] = place;
    if (group.count == kGroup) {
      scanPatch(stage);
    }
  }

  // The group that waits before a stage goes on. What is left of it waits before later stages, and
  // may complete a group there, which then goes on from here in turn.
  void scanPatch(std::size_t stage) {
    WaitingGroup& group = waiting_[stage];
    const int count = group.count;
    group.count = 0;
    std::fill(group.corners.begin() + count, group.corners.end(), group.corners.front());
    kernels_.copyPatch(group.corners, count, patchSource_, *patch_);
    std::uint32_t alive = ~std::uint32_t{0} >> (kGroup - count);
    do {
      alive = kernels_.passing(inPatch_, model_.stages[stage++], patch_->numbers.data(),
                               group.factors(), alive);
    } while (countOf(alive) > count / kShareLeft && stage < waiting_.size());
    for (; alive != 0; alive &= alive - 1) {
      const auto window = static_cast<std::size_t>(lowest(alive));
      await(stage, group.corners[window], group.factors().of(static_cast<int>(window)),
            group.places[window]);
    }
  }

  const CascadeModel& model_;
  const PlacedStages& inPatch_;
  const CascadeScale& scale_;
  const CascadeKernels& kernels_;
  const WrappedIntegral integral_;
  WindowContrasts contrasts_;
  const PatchSource patchSource_;
  const std::vector<PlacedStump> inRow_;
  const std::unique_ptr<WindowPatch> patch_ = std::make_unique<WindowPatch>();
  std::vector<WaitingGroup> waiting_; // before each stage
  std::vector<cv::Point> found_;
};

} // namespace

std::vector<cv::Point> scanCascade(const PlacedStages& inPatch, const CascadeScale& scale,
                                   const cv::Mat& picture, InstructionSet set) {
  if (scale.windows == 0 || scale.pixelRows == 0) {
    return {};
  }
  return Scan(inPatch, scale, picture, set).run();
}

} // namespace qorocv
