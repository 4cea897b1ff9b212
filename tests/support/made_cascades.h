// Cascades of stumps, in the format that OpenCV trains and reads.
#pragma once

#include <opencv2/core.hpp>
#include <opencv2/objdetect.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace qorocv::testing {

/// Left, top, width, height, weight.
using MadeRect = std::array<int, 5>;

struct MadeStump {
  std::vector<MadeRect> rects;
  float threshold;
  float below;
  float above;
};

struct MadeStage {
  std::vector<MadeStump> stumps;
  float threshold;
};

/// The text of a cascade's file with windows of 20 x 20.
inline std::string cascadeText(const std::vector<MadeStage>& stages) {
  std::ostringstream trees;
  std::ostringstream features;
  trees << std::setprecision(std::numeric_limits<float>::max_digits10);
  int feature = 0;
  for (const MadeStage& stage : stages) {
    trees << "<_><maxWeakCount>" << stage.stumps.size() << "</maxWeakCount><stageThreshold>"
          << stage.threshold << "</stageThreshold><weakClassifiers>\n";
    for (const MadeStump& stump : stage.stumps) {
      trees << "<_><internalNodes>0 -1 " << feature++ << ' ' << stump.threshold
            << "</internalNodes><leafValues>" << stump.below << ' ' << stump.above
            << "</leafValues></_>\n";
      features << "<_><rects>";
      for (const MadeRect& rect : stump.rects) {
        features << "<_>" << rect[0] << ' ' << rect[1] << ' ' << rect[2] << ' ' << rect[3] << ' '
                 << rect[4] << ".</_>";
      }
      features << "</rects><tilted>0</tilted></_>\n";
    }
    trees << "</weakClassifiers></_>\n";
  }
  return R"(<?xml version="1.0"?>
<opencv_storage><cascade>
<stageType>BOOST</stageType><featureType>HAAR</featureType><height>20</height><width>20</width>
<stageParams><maxWeakCount>1</maxWeakCount></stageParams>
<featureParams><maxCatCount>0</maxCatCount></featureParams>
<stageNum>)" +
         std::to_string(stages.size()) + "</stageNum><stages>" + trees.str() +
         "</stages><features>" + features.str() + "</features></cascade></opencv_storage>\n";
}

/// A file in memory, and its first node.
class CascadeFile {
public:
  explicit CascadeFile(const std::string& text)
      : file_(text, cv::FileStorage::READ | cv::FileStorage::MEMORY) {}

  cv::FileNode root() const { return file_.getFirstTopLevelNode(); }

  cv::CascadeClassifier classifier() const {
    cv::CascadeClassifier made;
    made.read(root());
    return made;
  }

private:
  cv::FileStorage file_;
};

/// Makes cascades of every kind of feature that the engine knows.
class CascadeMaker {
public:
  explicit CascadeMaker(std::uint32_t seed) : random_(seed) {}

  std::vector<MadeStage> stages() {
    std::vector<MadeStage> made(static_cast<std::size_t>(from(1, 12)));
    for (MadeStage& stage : made) {
      stage.stumps.resize(static_cast<std::size_t>(from(1, 9)));
      for (MadeStump& stump : stage.stumps) {
        stump = {rects(), real(-0.05F, 0.05F), real(-1, 1), real(-1, 1)};
      }
      // Most windows go on, so that all stages have some to look at.
      stage.threshold = real(-0.5F, 0.1F) * static_cast<float>(stage.stumps.size());
    }
    return made;
  }

private:
  int from(int first, int last) {
    return first + static_cast<int>(random_() % static_cast<std::uint32_t>(last - first + 1));
  }

  float real(float low, float high) {
    return low + (high - low) * static_cast<float>(random_() % 10007) / 10006;
  }

  std::vector<MadeRect> rects() {
    switch (from(0, 3)) {
    case 0:
      return twoHalves();
    case 1:
      return middleThird();
    case 2:
      return checked();
    default:
      return wide();
    }
  }

  std::vector<MadeRect> twoHalves() {
    const int width = 2 * from(1, 7);
    const int height = from(1, 14);
    const int x = from(0, 20 - width);
    const int y = from(0, 20 - height);
    const int second = from(0, 1) * width / 2;
    return turned({{x, y, width, height, -1}, {x + second, y, width / 2, height, 2}});
  }

  std::vector<MadeRect> middleThird() {
    const int width = 3 * from(1, 4);
    const int height = from(1, 12);
    const int x = from(0, 20 - width);
    const int y = from(0, 20 - height);
    return turned({{x, y, width, height, -1}, {x + width / 3, y, width / 3, height, 3}});
  }

  std::vector<MadeRect> checked() {
    const int width = from(1, 6);
    const int height = from(1, 6);
    const int x = from(0, 20 - 2 * width);
    const int y = from(0, 20 - 2 * height);
    const int left = from(0, 1) * width;
    return {{x, y, 2 * width, 2 * height, -1},
            {x + left, y, width, height, 2},
            {x + width - left, y + height, width, height, 2}};
  }

  // Sums that 16 bits do not hold.
  std::vector<MadeRect> wide() {
    const int height = from(16, 18);
    const int y = from(0, 20 - height);
    switch (from(0, 2)) {
    case 0:
      return turned({{1, y, 18, height, -1}, {1, y, 9, height, 2}});
    case 1:
      return turned({{2, 4, 18, 14, -1}, {8, 4, 6, 14, 3}});
    default:
      return {{0, 1, 20, 18, -1}, {0, 1, 10, 9, 2}, {10, 10, 10, 9, 2}};
    }
  }

  std::vector<MadeRect> turned(std::vector<MadeRect> made) {
    if (from(0, 1) == 0) {
      for (MadeRect& rect : made) {
        rect = {rect[1], rect[0], rect[3], rect[2], rect[4]};
      }
    }
    return made;
  }

  std::mt19937 random_;
};

} // namespace qorocv::testing
