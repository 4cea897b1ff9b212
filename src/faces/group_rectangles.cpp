#include "faces/group_rectangles.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace qorocv {

namespace {

constexpr int kMinNeighbours = 3; // a group needs more boxes than these
constexpr double kTolerance = 0.2;

// The boxes that are alike, directly or over others between them: a forest whose trees are groups.
class AlikeBoxes {
public:
  explicit AlikeBoxes(std::size_t count) : parents_(count) {
    std::iota(parents_.begin(), parents_.end(), std::size_t{0});
  }

  std::size_t rootOf(std::size_t box) {
    while (parents_[box] != box) {
      parents_[box] = parents_[parents_[box]];
      box = parents_[box];
    }
    return box;
  }

  void join(std::size_t a, std::size_t b) { parents_[rootOf(b)] = rootOf(a); }

private:
  std::vector<std::size_t> parents_;
};

// As in cv::SimilarRects.
bool areAlike(const cv::Rect& a, const cv::Rect& b) {
  const double reach =
      kTolerance * (std::min(a.width, b.width) + std::min(a.height, b.height)) * 0.5;
  return std::abs(a.x - b.x) <= reach && std::abs(a.y - b.y) <= reach &&
         std::abs(a.x + a.width - b.x - b.width) <= reach &&
         std::abs(a.y + a.height - b.y - b.height) <= reach;
}

// Along x a box reaches no further than this, so only its neighbours in that order are compared.
double furthestReach(const cv::Rect& box) {
  return kTolerance * (box.width + box.height) * 0.5;
}

AlikeBoxes joinAlike(const std::vector<cv::Rect>& boxes) {
  std::vector<std::size_t> byX(boxes.size());
  std::iota(byX.begin(), byX.end(), std::size_t{0});
  std::sort(byX.begin(), byX.end(),
            [&boxes](std::size_t a, std::size_t b) { return boxes[a].x < boxes[b].x; });
  AlikeBoxes alike(boxes.size());
  for (std::size_t i = 0; i < byX.size(); ++i) {
    const cv::Rect& box = boxes[byX[i]];
    const double reach = furthestReach(box);
    for (std::size_t j = i + 1; j < byX.size() && boxes[byX[j]].x - box.x <= reach; ++j) {
      if (areAlike(box, boxes[byX[j]])) {
        alike.join(byX[i], byX[j]);
      }
    }
  }
  return alike;
}

struct Group {
  cv::Rect box; // first the sum of its boxes, then their mean
  int count = 0;
};

// Groups in the order of their first boxes.
std::vector<Group> sumGroups(const std::vector<cv::Rect>& boxes) {
  AlikeBoxes alike = joinAlike(boxes);
  constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::vector<std::size_t> groupOfRoot(boxes.size(), kNone);
  std::vector<Group> groups;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    std::size_t& number = groupOfRoot[alike.rootOf(i)];
    if (number == kNone) {
      number = groups.size();
      groups.emplace_back();
    }
    Group& group = groups[number];
    group.box.x += boxes[i].x;
    group.box.y += boxes[i].y;
    group.box.width += boxes[i].width;
    group.box.height += boxes[i].height;
    ++group.count;
  }
  return groups;
}

// OpenCV multiplies by the reciprocal in single precision, which is not a division.
void sumToMean(Group& group) {
  const float share = 1.F / static_cast<float>(group.count);
  const auto mean = [share](int sum) { return cvRound(static_cast<float>(sum) * share); };
  group.box = {mean(group.box.x), mean(group.box.y), mean(group.box.width), mean(group.box.height)};
}

// Inside a group of clearly more boxes.
bool isInside(const Group& inner, const Group& outer) {
  const int dx = cvRound(outer.box.width * kTolerance);
  const int dy = cvRound(outer.box.height * kTolerance);
  return inner.box.x >= outer.box.x - dx && inner.box.y >= outer.box.y - dy &&
         inner.box.x + inner.box.width <= outer.box.x + outer.box.width + dx &&
         inner.box.y + inner.box.height <= outer.box.y + outer.box.height + dy &&
         outer.count > std::max(kMinNeighbours, inner.count);
}

} // namespace

std::vector<cv::Rect> groupRectangles(const std::vector<cv::Rect>& boxes) {
  std::vector<Group> groups = sumGroups(boxes);
  groups.erase(std::remove_if(groups.begin(), groups.end(),
                              [](const Group& group) { return group.count <= kMinNeighbours; }),
               groups.end());
  std::for_each(groups.begin(), groups.end(), sumToMean);
  std::vector<cv::Rect> means;
  for (const Group& group : groups) {
    // A group is never inside itself: it would have to have more boxes than it has.
    const bool isHidden = std::any_of(groups.begin(), groups.end(), [&group](const Group& other) {
      return isInside(group, other);
    });
    if (!isHidden) {
      means.push_back(group.box);
    }
  }
  return means;
}

} // namespace qorocv
