#include "call/photograph.h"
#include "make_models/made_pictures.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <fstream>

namespace qorocv {
namespace {

using testing::TemporaryDirectory;

struct Scaled {
  cv::Size size;
  float scale;
};

Scaled scaled(cv::Size size, int maxSide) {
  cv::Mat picture(size, CV_8UC3, cv::Scalar(10, 20, 30));
  const float scale = scaleToMaxSide(picture, maxSide);
  return {picture.size(), scale};
}

TEST(ScaleToMaxSide, halves1000By750To500By375) {
  const Scaled result = scaled({1000, 750}, 500);
  EXPECT_EQ(result.size, cv::Size(500, 375));
  EXPECT_EQ(result.scale, 0.5F);
}

TEST(ScaleToMaxSide, truncatesBothSides) {
  const Scaled result = scaled({1000, 750}, 333);
  EXPECT_EQ(result.size, cv::Size(333, 249)); // 750 * 0.333 is 249.75
  EXPECT_EQ(result.scale, 0.333F);
}

TEST(ScaleToMaxSide, takesTheHeightOfATallPicture) {
  const Scaled result = scaled({75, 100}, 50);
  EXPECT_EQ(result.size, cv::Size(37, 50));
  EXPECT_EQ(result.scale, 0.5F);
}

TEST(ScaleToMaxSide, enlarges) {
  const Scaled result = scaled({100, 50}, 250);
  EXPECT_EQ(result.size, cv::Size(250, 125));
  EXPECT_EQ(result.scale, 2.5F);
}

TEST(ScaleToMaxSide, goesDownToOnePixel) {
  const Scaled result = scaled({2, 2}, 1);
  EXPECT_EQ(result.size, cv::Size(1, 1));
  EXPECT_EQ(result.scale, 0.5F);
}

TEST(ScaleToMaxSide, keepsTheSizeWithoutAPositiveLimit) {
  for (const int maxSide : {0, -1, -2147483647}) {
    const Scaled result = scaled({101, 57}, maxSide);
    EXPECT_EQ(result.size, cv::Size(101, 57)) << maxSide;
    EXPECT_EQ(result.scale, 1.0F) << maxSide;
  }
}

TEST(ScaleToMaxSide, leavesThePixelsAloneWhereTheSideIsItsOwn) {
  const cv::Mat before = testing::texturedPicture({64, 48});
  cv::Mat picture = before.clone();
  EXPECT_EQ(scaleToMaxSide(picture, 64), 1.0F);
  EXPECT_EQ(cv::norm(picture, before, cv::NORM_INF), 0.0);
}

TEST(ScaleToMaxSide, interpolatesLinearly) {
  cv::Mat picture(1, 4, CV_8UC3, cv::Scalar::all(0));
  picture.at<cv::Vec3b>(0, 0) = {100, 100, 100};
  cv::Mat tall;
  cv::repeat(picture, 2, 1, tall);
  scaleToMaxSide(tall, 2);
  // Half the size: each new pixel is the mean of the two it covers.
  EXPECT_EQ(tall.size(), cv::Size(2, 1));
  EXPECT_EQ(tall.at<cv::Vec3b>(0, 0), cv::Vec3b(50, 50, 50));
  EXPECT_EQ(tall.at<cv::Vec3b>(0, 1), cv::Vec3b(0, 0, 0));
}

TEST(ScaleToMaxSide, throwsWhereASideWouldVanish) {
  cv::Mat picture(1, 100, CV_8UC3);
  EXPECT_THROW(scaleToMaxSide(picture, 50), cv::Exception);
}

class IsComplete : public ::testing::Test {
protected:
  double results_ = 0;
  int count_ = 1;
  HostCall call_{"p", &results_, &count_, 0, nullptr, nullptr};
};

TEST_F(IsComplete, holdsForACapacityOfOne) {
  EXPECT_TRUE(isComplete(call_));
}

TEST_F(IsComplete, asksForACapacity) {
  for (const int capacity : {0, -1}) {
    count_ = capacity;
    EXPECT_FALSE(isComplete(call_)) << capacity;
  }
}

TEST_F(IsComplete, asksForResults) {
  call_.results = nullptr;
  EXPECT_FALSE(isComplete(call_));
}

TEST_F(IsComplete, asksForACount) {
  call_.resultCount = nullptr;
  EXPECT_FALSE(isComplete(call_));
}

// What readPhotograph prints and returns.
struct Reading {
  cv::Mat picture;
  std::string printed;
};

Reading read(const std::string& path) {
  ::testing::internal::CaptureStdout();
  cv::Mat picture = readPhotograph(path);
  return {picture, ::testing::internal::GetCapturedStdout()};
}

constexpr const char* kMessage = "Could not open or find the image\n";

TEST(ReadPhotograph, printsNothingOfAPicture) {
  const TemporaryDirectory directory;
  const cv::Mat painted(3, 5, CV_8UC3, cv::Scalar(1, 2, 3));
  EXPECT_EQ(read(testing::writePicture(directory / "p.png", painted).string()).printed, "");
}

TEST(ReadPhotograph, readsColourInBlueGreenRedOrder) {
  const TemporaryDirectory directory;
  const cv::Mat painted(3, 5, CV_8UC3, cv::Scalar(1, 2, 3));
  const Reading reading = read(testing::writePicture(directory / "p.png", painted).string());
  ASSERT_EQ(reading.picture.size(), cv::Size(5, 3));
  EXPECT_EQ(reading.picture.at<cv::Vec3b>(2, 4), cv::Vec3b(1, 2, 3));
}

TEST(ReadPhotograph, makesThreeChannelsOfAGreyPicture) {
  const TemporaryDirectory directory;
  const cv::Mat grey(3, 5, CV_8UC1, cv::Scalar(7));
  const Reading reading = read(testing::writePicture(directory / "p.png", grey).string());
  EXPECT_EQ(reading.picture.type(), CV_8UC3);
}

TEST(ReadPhotograph, saysOnceThatAMissingFileCannotBeOpened) {
  const Reading reading = read("no-such-picture.jpg");
  EXPECT_TRUE(reading.picture.empty());
  EXPECT_EQ(reading.printed, kMessage);
}

TEST(ReadPhotograph, saysTheSameOfEveryPathThatIsNoPicture) {
  const TemporaryDirectory directory;
  const std::filesystem::path text = directory / "text.jpg";
  std::ofstream(text) << "no picture";
  for (const std::string& path : {std::string(), directory.path().string(), text.string()}) {
    const Reading reading = read(path);
    EXPECT_TRUE(reading.picture.empty()) << path;
    EXPECT_EQ(reading.printed, kMessage) << path;
  }
}

TEST(ReadPhotograph, throwsWhatOpenCvThrowsAboutAFileThatIsThere) {
  const TemporaryDirectory directory;
  const std::filesystem::path huge = directory / "huge.ppm";
  std::ofstream(huge) << "P6\n100000 100000\n255\n";
  EXPECT_THROW(readPhotograph(huge.string()), cv::Exception);
}

} // namespace
} // namespace qorocv
