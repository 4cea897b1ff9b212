// OpenCV's cascade appends candidates as its threads find them; on one thread the order of the
// boxes is the same in every run.
#include <gtest/gtest.h>
#include <opencv2/core/utility.hpp>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  cv::setNumThreads(1);
  return RUN_ALL_TESTS();
}
