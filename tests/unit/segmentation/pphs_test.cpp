// The segmentation model on made networks, and the pixel blocks that hosts get.
#include "make_models/made_models.h"
#include "segmentation/pixel_block.h"
#include "segmentation/pphs.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

namespace qorocv {
namespace {

class PphsTest : public ::testing::Test {
protected:
  PPHS make(const testing::MadeModels& models = {}) {
    testing::writeMadeModels(directory_.path(), models);
    return {path(), cv::dnn::DNN_BACKEND_OPENCV, cv::dnn::DNN_TARGET_CPU};
  }
  std::string path() const { return (directory_ / testing::kMadeSegmentation).string(); }

  testing::TemporaryDirectory directory_;
};

cv::Mat painted(cv::Size size, const cv::Scalar& colour) {
  return {size, CV_8UC3, colour};
}

const cv::Vec4b kPerson(255, 255, 255, 255);
const cv::Vec4b kBackground(0, 0, 0, 255);

bool isAll(const cv::Mat& mask, const cv::Vec4b& colour) {
  return cv::norm(mask, cv::Mat(mask.size(), CV_8UC4, cv::Scalar(colour)), cv::NORM_INF) == 0;
}

std::vector<int> shapeOf(const cv::Mat& blob) {
  return {blob.size.p, blob.size.p + blob.dims};
}

TEST_F(PphsTest, holdsWhatItWasMadeWith) {
  const PPHS model = make();
  EXPECT_FALSE(model.net.empty());
  EXPECT_EQ(model.modelPath, path());
  EXPECT_EQ(model.mean, cv::Scalar(0.5, 0.5, 0.5, 0));
  EXPECT_EQ(model.std, cv::Scalar(0.5, 0.5, 0.5, 0));
  EXPECT_EQ(model.inputSize, cv::Size(192, 192));
  EXPECT_EQ(model.sourceSize, cv::Size(0, 0));
  EXPECT_EQ(model.inputName, "x");
  EXPECT_EQ(model.outputName, "save_infer_model/scale_0.tmp_1");
  EXPECT_EQ(model.backendId, 3);
  EXPECT_EQ(model.targetId, 0);
  EXPECT_FALSE(model.busy);
}

TEST_F(PphsTest, throwsWithoutAFile) {
  EXPECT_THROW(PPHS("no/such/model.onnx", 3, 0), cv::Exception);
}

TEST_F(PphsTest, givesTheNetworkValuesFromMinusOneToOneBlueFirst) {
  PPHS model = make();
  const cv::Mat blob = model.preprocess(painted({400, 300}, {255, 0, 51}));
  EXPECT_EQ(shapeOf(blob), (std::vector<int>{1, 3, 192, 192}));
  constexpr std::size_t plane = 192 * 192;
  const auto* const values = blob.ptr<float>();
  for (const std::size_t pixel : {std::size_t{0}, std::size_t{100}, plane - 1}) {
    EXPECT_FLOAT_EQ(values[pixel], 1.0F);
    EXPECT_FLOAT_EQ(values[plane + pixel], -1.0F);
    EXPECT_FLOAT_EQ(values[2 * plane + pixel], -0.6F);
  }
}

// What the exports never hand over: they read photographs in colour.
TEST_F(PphsTest, givesTheNetworkOneChannelOfAGreyPicture) {
  PPHS model = make();
  const cv::Mat blob = model.preprocess(cv::Mat(50, 70, CV_8UC1, cv::Scalar(51)));
  EXPECT_EQ(shapeOf(blob), (std::vector<int>{1, 1, 192, 192}));
  EXPECT_FLOAT_EQ(blob.ptr<float>()[0], -0.6F);
  EXPECT_FLOAT_EQ(blob.ptr<float>()[192 * 192 - 1], -0.6F);
}

TEST_F(PphsTest, givesTheNetworkAllFourChannelsOfAPictureThatHasThem) {
  PPHS model = make();
  const cv::Mat blob = model.preprocess(cv::Mat(50, 70, CV_8UC4, cv::Scalar(255, 0, 51, 255)));
  EXPECT_EQ(shapeOf(blob), (std::vector<int>{1, 4, 192, 192}));
  constexpr std::size_t plane = 192 * 192;
  EXPECT_FLOAT_EQ(blob.ptr<float>()[0], 1.0F);
  EXPECT_FLOAT_EQ(blob.ptr<float>()[plane], -1.0F);
  EXPECT_FLOAT_EQ(blob.ptr<float>()[2 * plane], -0.6F);
}

TEST_F(PphsTest, notesTheSizeOfTheLatestPicture) {
  PPHS model = make();
  model.infer(painted({100, 50}, {}));
  EXPECT_EQ(model.sourceSize, cv::Size(100, 50));
  model.infer(painted({30, 500}, {}));
  EXPECT_EQ(model.sourceSize, cv::Size(30, 500));
  EXPECT_FALSE(model.busy);
}

TEST_F(PphsTest, makesAMaskThatIsOneBlockOfRgba) {
  const cv::Mat mask = make().infer(painted({192, 192}, {255, 255, 255}));
  EXPECT_EQ(mask.size(), cv::Size(192, 192));
  EXPECT_EQ(mask.type(), CV_8UC4);
  EXPECT_TRUE(mask.isContinuous());
}

TEST_F(PphsTest, masksAPersonInOpaqueWhite) {
  EXPECT_TRUE(isAll(make().infer(painted({192, 192}, {255, 255, 255})), kPerson));
}

TEST_F(PphsTest, masksTheBackgroundInOpaqueBlack) {
  EXPECT_TRUE(isAll(make().infer(painted({192, 192}, {})), kBackground));
}

TEST_F(PphsTest, givesTiesToTheBackground) {
  testing::MadeModels models;
  models.person = models.background; // the same score everywhere
  EXPECT_TRUE(isAll(make(models).infer(painted({192, 192}, {255, 255, 255})), kBackground));
}

TEST_F(PphsTest, coversAPictureOfAnyShapeByStretching) {
  PPHS model = make();
  cv::Mat picture = painted({384, 96}, {});
  picture(cv::Rect(192, 0, 192, 96)).setTo(cv::Scalar(255, 255, 255)); // the right half
  const cv::Mat mask = model.infer(picture);
  EXPECT_TRUE(isAll(mask(cv::Rect(0, 0, 96, 192)), kBackground));
  EXPECT_TRUE(isAll(mask(cv::Rect(96, 0, 96, 192)), kPerson));
}

TEST_F(PphsTest, givesTheSameMaskTwice) {
  PPHS model = make();
  cv::Mat picture(120, 160, CV_8UC3);
  cv::RNG(7).fill(picture, cv::RNG::UNIFORM, 0, 256);
  const cv::Mat first = model.infer(picture);
  EXPECT_EQ(cv::norm(first, model.infer(picture), cv::NORM_INF), 0.0);
}

TEST_F(PphsTest, isNoLongerBusyAfterAnException) {
  PPHS model = make();
  EXPECT_THROW(model.infer(cv::Mat()), cv::Exception);
  EXPECT_FALSE(model.busy);
}

TEST(GiveFourChannels, makesOpaqueRgbaOfThree) {
  cv::Mat colour(1, 1, CV_8UC3, cv::Scalar(1, 2, 3));
  giveFourChannels(colour);
  EXPECT_EQ(colour.at<cv::Vec4b>(0), cv::Vec4b(3, 2, 1, 255));
}

TEST(GiveFourChannels, makesAnOpaqueGreyOfOne) {
  cv::Mat grey(1, 1, CV_8UC1, cv::Scalar(9));
  giveFourChannels(grey);
  EXPECT_EQ(grey.at<cv::Vec4b>(0), cv::Vec4b(9, 9, 9, 255));
}

TEST(GiveFourChannels, leavesFourAsTheyAre) {
  cv::Mat four(1, 1, CV_8UC4, cv::Scalar(1, 2, 3, 4));
  giveFourChannels(four);
  EXPECT_EQ(four.at<cv::Vec4b>(0), cv::Vec4b(1, 2, 3, 4));
}

TEST(ViewImage, isAThousandPixelsBothWays) {
  const cv::Mat view = viewImage(painted({30, 70}, {10, 20, 30}));
  EXPECT_EQ(view.size(), cv::Size(1000, 1000));
  EXPECT_TRUE(isAll(view, {30, 20, 10, 255}));
}

TEST(CopyPixels, copiesABlockOfTheRightSizeOnly) {
  const cv::Mat block(2, 2, CV_8UC4, cv::Scalar(1, 2, 3, 4));
  unsigned char bytes[17] = {};
  copyPixels(block, bytes, 16);
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(bytes[i], 1 + i % 4) << i;
  }
  EXPECT_EQ(bytes[16], 0);
  EXPECT_THROW(copyPixels(block, bytes, 17), cv::Exception);
  EXPECT_THROW(copyPixels(block, bytes, 15), cv::Exception);
  unsigned char untouched = 7;
  copyPixels(cv::Mat(), &untouched, 1);
  EXPECT_EQ(untouched, 7);
}

} // namespace
} // namespace qorocv
