// On which threads OpenCV's loops run during a call, and what a host can do about it.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/host.h"
#include "support/process.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/core/utility.hpp>

#include <cstdlib>
#include <sched.h>

namespace qorocv::testing {
namespace {

/// Lets this process run on one of the processors that it may run on now.
void keepOneProcessor() {
  cpu_set_t allowed;
  ASSERT_EQ(sched_getaffinity(0, sizeof allowed, &allowed), 0);
  std::size_t first = 0;
  while (!CPU_ISSET(first, &allowed)) {
    ++first;
  }
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(first, &one);
  ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
}

/// The threads of this process once the cascade, whose loops are OpenCV's longest, has looked at a
/// photograph.
std::ptrdiff_t threadsAfterACall() {
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  initModelsAtPath(directory.asPrefix().c_str());
  const Outcome outcome =
      detect(findQORFaces, writePicture(directory / "many.png", pictureWithGrid(7)));
  EXPECT_EQ(outcome.returned, 7);
  return ownThreads();
}

TEST(OpenCVThreads, areMoreThanTheCallersWhateverTheEnvironmentSays) {
  if (cv::getNumberOfCPUs() == 1) {
    GTEST_SKIP() << "there is one processor";
  }
  ASSERT_EQ(setenv("OPENCV_FOR_THREADS_NUM", "1", 1), 0);
  EXPECT_GT(threadsAfterACall(), 1);
}

TEST(OpenCVThreads, areTheCallersAloneOnOneProcessor) {
  keepOneProcessor();
  EXPECT_EQ(threadsAfterACall(), 1);
}

TEST(OpenCVThreads, areTheCallersAloneWhereTheHostSetsOne) {
  cv::setNumThreads(1);
  EXPECT_EQ(threadsAfterACall(), 1);
}

} // namespace
} // namespace qorocv::testing
