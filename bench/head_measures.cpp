#include "bench.h"
#include "heads/mask_measures.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdio>
#include <malloc.h>
#include <vector>

namespace qorocv::bench {

namespace {

constexpr double kMostShare = 0.1;
const cv::Size kPicture(4000, 3000);

struct Head {
  cv::Rect box;
  LandmarkSet landmarks;
};

std::vector<Head> thirtyHeads() {
  std::vector<Head> heads;
  for (int i = 0; i < 30; ++i) {
    const cv::Rect box(100 + 620 * (i % 6), 500 + 480 * (i / 6), 600, 400);
    LandmarkSet landmarks(kLandmarkCount);
    landmarks[kNoseBridge] = {static_cast<float>(box.x + 300), static_cast<float>(box.y + 150)};
    landmarks[kChin] = {static_cast<float>(box.x + 300), static_cast<float>(box.y + 390)};
    heads.push_back({box, landmarks});
  }
  return heads;
}

float literal(const cv::Mat& picture, const Head& head, const cv::Mat& personMask) {
  const float faceLength = head.landmarks[kChin].y - head.landmarks[kNoseBridge].y;
  const int height = static_cast<int>(head.landmarks[kNoseBridge].y);
  const cv::Rect band(head.box.x, 0, head.box.width, height);
  const cv::Mat copy = picture(band).clone();
  cv::Mat grey;
  cv::cvtColor(personMask, grey, cv::COLOR_RGBA2GRAY);
  cv::Mat big;
  cv::resize(grey, big, picture.size(), 0, 0, cv::INTER_LINEAR);
  const cv::Mat rows = big(band);
  for (int row = height - 1; row >= 0; --row) {
    const uchar* const first = rows.ptr<uchar>(row);
    if (std::none_of(first, first + rows.cols, [](uchar value) { return value > 3; })) {
      const float fraction = static_cast<float>(height - row - 1) / static_cast<float>(height);
      const float distance = static_cast<float>(height) * fraction;
      return distance > 3.0F * faceLength ? faceLength : distance;
    }
  }
  return faceLength;
}

template <typename Measure>
std::vector<float> measured(const std::vector<Head>& heads, const Measure& measure) {
  std::vector<float> distances;
  for (const Head& head : heads) {
    distances.push_back(measure(head));
  }
  return distances;
}

// Notes the seconds that the work takes. It begins with a heap that has given back what is free:
// else the one side would use pages that the other has paid for.
template <typename Work> std::vector<float> timed(std::vector<double>& seconds, const Work& work) {
  malloc_trim(0);
  std::vector<float> distances;
  seconds.push_back(secondsOf([&] { distances = work(); }));
  return distances;
}

// True where the measures agree and keep the bound.
bool compare(const char* name, const cv::Mat& personMask) {
  const cv::Mat picture(kPicture, CV_8UC3, cv::Scalar(90, 90, 90));
  const std::vector<Head> heads = thirtyHeads();
  std::vector<double> ours;
  std::vector<double> theirs;
  bool equal = true;
  for (int round = 0; round < 20; ++round) {
    const std::vector<float> our = timed(ours, [&] {
      PictureMask mask(personMask, picture.size());
      return measured(
          heads, [&](const Head& head) { return headTopDistance(head.box, head.landmarks, mask); });
    });
    const std::vector<float> their = timed(theirs, [&] {
      return measured(heads, [&](const Head& head) { return literal(picture, head, personMask); });
    });
    equal = equal && our == their;
  }
  const double share = median(ours) / median(theirs);
  std::printf("| %s | %.2f | %.2f | %.3f | %s |\n", name, median(ours) * 1e3, median(theirs) * 1e3,
              share, equal ? "same" : "**different**");
  return equal && share <= kMostShare;
}

} // namespace

bool compareHeadMeasures() {
  std::printf(
      "## Head measures by mask\n\nThirty faces on 12 megapixels, all measures of a call, beside "
      "the sequence that copies the band, makes the mask grey and enlarges it for every face.\n\n"
      "| the mask shows | measures ms | sequence ms | share | bits |\n|---|--:|--:|--:|---|\n");
  constexpr int side = 192;
  const cv::Mat nobody(side, side, CV_8UC4, cv::Scalar(0, 0, 0, 255));
  const cv::Mat everybody(side, side, CV_8UC4, cv::Scalar(255, 255, 255, 255));
  // The person shows in the last columns of every box alone: rows are read to their ends.
  cv::Mat late = nobody.clone();
  for (const Head& head : thirtyHeads()) {
    const int fromTheEnd = 15;
    const int column = (head.box.br().x - fromTheEnd) * side / kPicture.width;
    late.col(column).setTo(cv::Scalar(255, 255, 255, 255));
  }
  cv::Mat heads = nobody.clone();
  heads(cv::Rect(0, 25, side, side - 25)).setTo(cv::Scalar(255, 255, 255, 255));
  bool good = compare("nobody", nobody);
  good = compare("everybody", everybody) && good;
  good = compare("people from an eighth down", heads) && good;
  good = compare("people at the right end of boxes", late) && good;
  std::printf("\n%s\n\n", good ? "The same bits for at most a tenth of the time."
                               : "**Other bits, or more than a tenth of the time.**");
  return good;
}

} // namespace qorocv::bench
