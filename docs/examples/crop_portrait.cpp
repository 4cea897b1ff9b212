// crop_portrait MODELS/ PHOTO PORTRAIT: head and shoulders of the first face that is found.
#include <opencv2/imgcodecs.hpp>

#include <iostream>
#include <qorocv460/qorocv460.h>
#include <vector>

int main(int argc, char** argv) {
  if (argc != 4 || initModelsAtPath(argv[1]) != 0) {
    return 1;
  }
  std::vector<double> results(QOROCV460_HEAD_CENTRE_RESULTS);
  std::vector<unsigned char> view(QOROCV460_VIEW_BYTES);
  std::vector<unsigned char> mask(QOROCV460_MASK_BYTES);
  int count = QOROCV460_HEAD_CENTRE_RESULTS;
  int width = 0;
  int height = 0;
  const int found = findQORFacesDUNInTreadWithMask01(argv[2], results.data(), &count,
                                                     QOROCV460_CAFFE, QOROCV460_FIRST_SLOT, 1000, 0,
                                                     &width, &height, view.data(), mask.data());
  if (found == QOROCV460_UNREADABLE || count == 0) {
    return 1;
  }

  // In pixels. The centre lies halfway between the chin and the top of the head.
  const double* const record = &results[1];
  const double chin = record[7] * height;
  const double centreX = record[8] * width;
  const double centreY = record[9] * height;
  const double head = 2 * (chin - centreY);

  // A quarter of a head above it, three quarters below the chin, four wide to five high.
  const cv::Rect2d wanted(centreX - 0.8 * head, centreY - 0.75 * head, 1.6 * head, 2 * head);
  const cv::Rect portrait = cv::Rect(wanted) & cv::Rect(0, 0, width, height);
  std::cout << portrait.width << " x " << portrait.height << " at " << portrait.x << ", "
            << portrait.y << std::endl;

  // Upright by its EXIF orientation, as the library reads it.
  const cv::Mat photograph = cv::imread(argv[2], cv::IMREAD_COLOR);
  return cv::imwrite(argv[3], photograph(portrait)) ? 0 : 1;
}
