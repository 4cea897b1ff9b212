// The parts of the cascade engine by themselves.
#include "faces/cascade_kernels.h"
#include "faces/cascade_scales.h"
#include "faces/exact_resize.h"
#include "faces/group_rectangles.h"
#include "faces/hidden_windows.h"
#include "faces/wrapped_integral.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>

#include <random>

namespace qorocv {
namespace {

// ---- Scales

TEST(CascadeScales, areNoneWhereTheWindowDoesNotFit) {
  EXPECT_TRUE(cascadeScales({19, 100}).empty());
  EXPECT_TRUE(cascadeScales({100, 19}).empty());
  EXPECT_TRUE(cascadeScales({0, 0}).empty());
}

TEST(CascadeScales, startWithThePictureItself) {
  const std::vector<CascadeScale> scales = cascadeScales({20, 20});
  ASSERT_EQ(scales.size(), 1U);
  EXPECT_EQ(scales[0].factor, 1.F);
  EXPECT_EQ(scales[0].picture, cv::Size(20, 20));
  EXPECT_EQ(scales[0].windows, 1);
  EXPECT_EQ(scales[0].pixelRows, 1);
}

// 20 * 1.1^7 is 38.97, 20 * 1.1^8 is 42.87.
TEST(CascadeScales, endWithTheLastWindowThatFits) {
  EXPECT_EQ(cascadeScales({39, 100}).size(), 8U);
  EXPECT_EQ(cascadeScales({38, 100}).size(), 7U);
}

TEST(CascadeScales, leaveOutEverySecondWindowBelowTwo) {
  const std::vector<CascadeScale> scales = cascadeScales({200, 200});
  EXPECT_LT(scales[7].factor, 2.F);
  EXPECT_EQ(scales[7].step, 2);
  EXPECT_GT(scales[8].factor, 2.F);
  EXPECT_EQ(scales[8].step, 1);
}

// 84 columns of windows make 3 stripes; 28 rows make 14 steps; 5 steps to a stripe would be all.
TEST(CascadeScales, reachTheLastRowWhereStripesDo) {
  EXPECT_EQ(cascadeScales({103, 47})[0].pixelRows, 28);
}

// 32 columns make 1 stripe; of 29 rows its 14 steps reach 28.
TEST(CascadeScales, leaveOutRowsBelowTheLastStripe) {
  EXPECT_EQ(cascadeScales({51, 48})[0].pixelRows, 28);
}

// Of 27 rows 13 steps reach 26; two stripes of 7 steps reach beyond.
TEST(CascadeScales, haveAStripeForEach32Columns) {
  EXPECT_EQ(cascadeScales({51, 46})[0].pixelRows, 26);
  EXPECT_EQ(cascadeScales({52, 46})[0].pixelRows, 27);
}

TEST(CascadeScales, roundBoxesFromTheirCorners) {
  CascadeScale scale;
  scale.factor = 1.1F;
  EXPECT_EQ(boxOfWindow(scale, {2, 4}), cv::Rect(2, 4, 22, 22));
  EXPECT_EQ(boxOfWindow(scale, {14, 6}), cv::Rect(15, 7, 22, 22));
}

// ---- Hidden windows

std::uint64_t hiddenOneByOne(const std::vector<bool>& rejected, std::size_t first) {
  std::uint64_t bits = 0;
  bool isHidden = false;
  for (std::size_t i = 0; i < first + 64; ++i) {
    if (i >= first && isHidden) {
      bits |= std::uint64_t{1} << (i - first);
    }
    isHidden = !isHidden && rejected[i];
  }
  return bits;
}

TEST(HiddenWindows, areThoseBehindRejectedOnesThatAreSeen) {
  HiddenWindows windows;
  EXPECT_EQ(windows.among(0b0111'0011'0100), 0b1010'0010'1000U);
}

TEST(HiddenWindows, hideAcrossSixtyFour) {
  HiddenWindows windows;
  EXPECT_EQ(windows.among(std::uint64_t{1} << 63), 0U);
  EXPECT_EQ(windows.among(0b11), 0b101U);
}

TEST(HiddenWindows, areTheSameOneByOne) {
  std::mt19937_64 random(1);
  for (int round = 0; round < 200; ++round) {
    HiddenWindows windows;
    std::vector<bool> rejected;
    for (std::size_t first = 0; first < 256; first += 64) {
      // Long runs of both, and short ones.
      std::uint64_t bits = round % 3 == 0 ? random() : random() | random() | random();
      bits = round % 5 == 0 ? ~std::uint64_t{0} : bits;
      for (int i = 0; i < 64; ++i) {
        rejected.push_back((bits >> i & 1U) != 0);
      }
      ASSERT_EQ(windows.among(bits), hiddenOneByOne(rejected, first)) << round;
    }
  }
}

// ---- Integral image

const std::vector<InstructionSet>& availableSets() {
  static const std::vector<InstructionSet> sets =
      isAvailable(InstructionSet::avx2)
          ? std::vector<InstructionSet>{InstructionSet::plain, InstructionSet::avx2}
          : std::vector<InstructionSet>{InstructionSet::plain};
  return sets;
}

cv::Mat noise(const cv::Size& size) {
  cv::Mat picture(size, CV_8UC1);
  cv::randu(picture, 0, 256);
  return picture;
}

void expectIntegral(const cv::Mat& picture, int step, InstructionSet set) {
  const WrappedIntegral integral(picture, step, cascadeKernels(set));
  cv::Mat expected;
  cv::integral(picture, expected, CV_32S);
  for (int y = 0; y <= picture.rows; ++y) {
    for (int x = 0; x <= picture.cols; ++x) {
      const std::uint16_t sum = integral.window(0, 0)[integral.offset(x, y)];
      ASSERT_EQ(sum, static_cast<std::uint16_t>(expected.at<int>(y, x))) << x << ' ' << y;
    }
  }
}

TEST(WrappedIntegral, holdsSumsModulo65536) {
  for (const InstructionSet set : availableSets()) {
    for (int width = 1; width < 140; ++width) {
      expectIntegral(noise({width, 30}), 1, set);
      expectIntegral(noise({width, 31}), 2, set);
    }
  }
}

TEST(WrappedIntegral, setsWindowsSideBySide) {
  const cv::Mat picture(20, 40, CV_8UC1, cv::Scalar(3));
  const CascadeKernels& kernels = cascadeKernels(InstructionSet::plain);
  const WrappedIntegral everySecond(picture, 2, kernels);
  EXPECT_EQ(everySecond.window(7, 5), everySecond.window(0, 0) + everySecond.offset(10, 7));
  const WrappedIntegral every(picture, 1, kernels);
  EXPECT_EQ(every.window(7, 5), every.window(0, 0) + every.offset(5, 7));
}

// ---- Resizing

void expectResized(const cv::Mat& picture, const cv::Size& size) {
  cv::Mat expected;
  cv::resize(picture, expected, size, 0, 0, cv::INTER_LINEAR_EXACT);
  for (const InstructionSet set : availableSets()) {
    cv::Mat smaller(size, CV_8UC1);
    resizeExactly(picture, cascadeKernels(set), smaller);
    ASSERT_EQ(cv::norm(smaller, expected, cv::NORM_INF), 0) << picture.size() << ' ' << size;
  }
}

TEST(ExactResize, givesWhatOpenCvGivesForEveryScale) {
  for (const cv::Size& size : {cv::Size(640, 480), cv::Size(333, 777), cv::Size(20, 300),
                               cv::Size(1001, 21), cv::Size(20, 20)}) {
    for (const CascadeScale& scale : cascadeScales(size)) {
      expectResized(noise(size), scale.picture);
    }
  }
}

TEST(ExactResize, givesWhatOpenCvGivesForEveryWidth) {
  const cv::Mat picture = noise({200, 40});
  for (int width = 20; width <= 200; ++width) {
    expectResized(picture, {width, 37});
  }
}

TEST(ExactResize, givesTheBrightestOfTheBrightest) {
  expectResized(cv::Mat(50, 70, CV_8UC1, cv::Scalar(255)), {63, 41});
}

TEST(ExactResize, givesWhatOpenCvGivesForAView) {
  const cv::Mat view = noise({100, 90})(cv::Rect(31, 17, 50, 60));
  expectResized(view, {43, 51});
  expectResized(view, {20, 24});
}

// ---- Groups

TEST(GroupRectangles, isEmptyForNone) {
  EXPECT_TRUE(groupRectangles({}).empty());
}

TEST(GroupRectangles, needsMoreThanThree) {
  const cv::Rect box(10, 10, 20, 20);
  EXPECT_TRUE(groupRectangles({box, box, box}).empty());
  EXPECT_EQ(groupRectangles({box, box, box, box}), std::vector<cv::Rect>{box});
}

TEST(GroupRectangles, givesWhatOpenCvGives) {
  std::mt19937 random(7);
  const auto from = [&random](int first, int last) {
    return first + static_cast<int>(random() % static_cast<unsigned>(last - first + 1));
  };
  for (int round = 0; round < 300; ++round) {
    std::vector<cv::Rect> boxes;
    const int faces = from(1, 12);
    for (int face = 0; face < faces; ++face) {
      const cv::Rect around(from(0, 300), from(0, 200), from(20, 120), from(20, 120));
      for (int count = from(1, 15); count > 0; --count) {
        const int spread = from(0, around.width / 4);
        boxes.emplace_back(around.x + from(-spread, spread), around.y + from(-spread, spread),
                           around.width + from(-spread, spread), around.height);
      }
    }
    std::shuffle(boxes.begin(), boxes.end(), random);
    std::vector<cv::Rect> expected = boxes;
    cv::groupRectangles(expected, 3, 0.2);
    ASSERT_EQ(groupRectangles(boxes), expected) << round;
  }
}

} // namespace
} // namespace qorocv
