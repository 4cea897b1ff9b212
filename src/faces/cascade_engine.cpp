#include "faces/cascade_engine.h"

#include "faces/cascade_kernels.h"
#include "faces/cascade_scales.h"
#include "faces/cascade_scan.h"
#include "faces/exact_resize.h"
#include "faces/group_rectangles.h"
#include "faces/window_patch.h"

#include <opencv2/core/utility.hpp>

#include <atomic>
#include <utility>

namespace qorocv {

namespace {

// Windows and pictures are rounded separately, so that a box may end outside.
std::vector<cv::Rect> clippedTo(const cv::Size& picture, const std::vector<cv::Rect>& boxes) {
  std::vector<cv::Rect> clipped;
  for (const cv::Rect& box : boxes) {
    const cv::Rect inside = box & cv::Rect({}, picture);
    if (!inside.empty()) {
      clipped.push_back(inside);
    }
  }
  return clipped;
}

} // namespace

CascadeEngine::CascadeEngine(CascadeModel model)
    : model_(std::move(model)),
      inPatch_(placeStumps(model_, model_.stages.size(), WindowPatch::offset)) {}

std::vector<cv::Rect> CascadeEngine::detect(const cv::Mat& picture, InstructionSet set) const {
  return clippedTo(picture.size(), groupRectangles(candidates(picture, set)));
}

std::vector<cv::Rect> CascadeEngine::candidates(const cv::Mat& picture, InstructionSet set) const {
  CV_Assert(picture.type() == CV_8UC1);
  const std::vector<CascadeScale> scales = cascadeScales(picture.size());
  const auto count = static_cast<int>(scales.size());
  std::vector<std::vector<cv::Rect>> boxes(scales.size());
  // The loop itself lets its threads see what was written before it, and the caller what they wrote.
  // The thread sanitizer cannot see that inside OpenCV and its libraries, but it sees this.
  std::atomic<int> handover;
  handover.store(0, std::memory_order_release);
  // The first scale is about a tenth of the work and starts first, so that threads end together.
  cv::parallel_for_(
      cv::Range(0, count),
      [&](const cv::Range& range) {
        (void)handover.load(std::memory_order_acquire);
        cv::Mat smaller;
        for (int i = range.start; i < range.end; ++i) {
          const auto number = static_cast<std::size_t>(i);
          const CascadeScale& scale = scales[number];
          smaller.create(scale.picture, CV_8UC1);
          resizeExactly(picture, cascadeKernels(set), smaller);
          for (const cv::Point& corner : scanCascade({model_, inPatch_}, scale, smaller, set)) {
            boxes[number].push_back(boxOfWindow(scale, corner));
          }
        }
        handover.fetch_add(1, std::memory_order_release);
      },
      count);
  (void)handover.load(std::memory_order_acquire);
  std::vector<cv::Rect> all;
  for (const std::vector<cv::Rect>& ofScale : boxes) {
    all.insert(all.end(), ofScale.begin(), ofScale.end());
  }
  return all;
}

std::shared_ptr<const CascadeEngine> makeCascadeEngine(const cv::FileNode& cascade) {
  if (QOROCV_HAS_CASCADE_KERNELS == 0) {
    return nullptr;
  }
  std::optional<CascadeModel> model = compileCascade(cascade);
  return model ? std::make_shared<const CascadeEngine>(std::move(*model)) : nullptr;
}

} // namespace qorocv
