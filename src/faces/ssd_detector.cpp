#include "faces/ssd_detector.h"

#include "arithmetic/processor_arithmetic.h"
#include "platform/platform.h"
#include "qorocv460/qorocv460.h"

#include <algorithm>

namespace qorocv {

namespace {

const cv::Scalar kMeanColour(104.0, 177.0, 123.0);

enum Column { confidence = 2, left = 3, top = 4, right = 5, bottom = 6, columnCount = 7 };

cv::Rect spannedBy(int x1, int y1, int x2, int y2) {
  const int x = std::min(x1, x2);
  const int y = std::min(y1, y2);
  return {x, y, wrappingDifference(std::max(x1, x2), x), wrappingDifference(std::max(y1, y2), y)};
}

} // namespace

void detectFacesSsd(cv::dnn::Net net, const cv::Mat& image, int modelKind,
                    std::vector<cv::Rect>& faces) {
  constexpr double scaleFactor = 2.0; // the thresholds below belong to inputs of this contrast
  constexpr float confidenceThreshold = 0.7F;

  const bool swapRedAndBlue = modelKind != QOROCV460_CAFFE;
  const cv::Mat blob =
      cv::dnn::blobFromImage(image, scaleFactor, cv::Size(kFaceNetworkSide, kFaceNetworkSide),
                             kMeanColour, swapRedAndBlue, false, CV_32F);
  // A network makes its layers when it first runs, and folds the case of their parameters by the
  // locale. A Turkish one does not turn I into i: the boxes would be wrong, without a word.
  const ClassicLocaleOfThread classicLocale;
  net.setInput(blob, "data", 1.0, cv::Scalar());
  cv::Mat result = net.forward("detection_out");
  CV_Assert(result.dims == 4 && result.type() == CV_32F && result.size[3] >= columnCount);
  const cv::Mat rows(result.size[2], result.size[3], CV_32F, result.ptr<float>());

  const auto width = static_cast<float>(image.cols);
  const auto height = static_cast<float>(image.rows);
  for (int i = 0; i < rows.rows; ++i) {
    const float* const row = rows.ptr<float>(i);
    if (row[confidence] > confidenceThreshold) {
      faces.push_back(spannedBy(truncateToInt(width * row[left]), truncateToInt(height * row[top]),
                                truncateToInt(width * row[right]),
                                truncateToInt(height * row[bottom])));
    }
  }
}

} // namespace qorocv
