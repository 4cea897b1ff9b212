#include "make_models/made_models.h"
#include "make_models/made_pictures.h"

#include <gtest/gtest.h>
#include <opencv2/dnn.hpp>
#include <opencv2/face.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <set>
#include <string>

namespace qorocv::testing {
namespace {

// An own directory for each test, removed afterwards.
class ScratchDirectory {
public:
  ScratchDirectory() : path(nameOfTest()) {
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  std::string file(const char* name) const { return (path / name).string(); }

  const std::filesystem::path path;

private:
  static std::filesystem::path nameOfTest() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string("made_") + info->test_suite_name() + "_" + info->name();
    std::replace(name.begin(), name.end(), '/', '_');
    return std::filesystem::path(::testing::TempDir()) / name;
  }
};

std::uint32_t bitsOf(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// Equal bit for bit, with all NaNs alike.
bool sameFloat(float a, float b) {
  if (std::isnan(a) || std::isnan(b)) {
    return std::isnan(a) && std::isnan(b);
  }
  return bitsOf(a) == bitsOf(b);
}

cv::Mat evenPicture(int blue, int green, int red) {
  return cv::Mat(300, 300, CV_8UC3, cv::Scalar(blue, green, red));
}

// ---- Files

TEST(MadeModelFiles, AreTheSeven) {
  const ScratchDirectory scratch;
  writeMadeModels(scratch.path / "new" / "directory");
  std::set<std::string> names;
  for (const auto& entry :
       std::filesystem::directory_iterator(scratch.path / "new" / "directory")) {
    names.insert(entry.path().filename().string());
  }
  const std::set<std::string> expected{"model01.prototxt", "model02.caffemodel", "model03.pbtxt",
                                       "model04.pb",       "model05.yaml",       "model06.xml",
                                       "model07.onnx"};
  EXPECT_EQ(names, expected);
}

TEST(MadeModelFiles, AreSmall) {
  const ScratchDirectory scratch;
  writeMadeModels(scratch.path);
  std::uintmax_t bytes = 0;
  for (const auto& entry : std::filesystem::directory_iterator(scratch.path)) {
    bytes += entry.file_size();
  }
  EXPECT_GT(bytes, 0U);
  EXPECT_LT(bytes, 300U * 1000U);
}

TEST(MadeModelFiles, CannotBeWrittenBelowAFile) {
  const ScratchDirectory scratch;
  std::ofstream(scratch.path / "file") << "not a directory";
  EXPECT_THROW(writeMadeModels(scratch.path / "file"), std::exception);
}

// ---- Detection networks

struct Network {
  const char* name;
  std::vector<DetectionRow> MadeModels::*rows;
  cv::dnn::Net (*read)(const ScratchDirectory& scratch);
};

cv::dnn::Net readCaffe(const ScratchDirectory& scratch) {
  return cv::dnn::readNetFromCaffe(scratch.file(kMadeCaffeText), scratch.file(kMadeCaffeWeights));
}

cv::dnn::Net readTensorflow(const ScratchDirectory& scratch) {
  return cv::dnn::readNetFromTensorflow(scratch.file(kMadeTensorflowWeights),
                                        scratch.file(kMadeTensorflowText));
}

class MadeDetectionNetwork : public ::testing::TestWithParam<Network> {
protected:
  cv::Mat answer(const MadeModels& models, const cv::Mat& blob) const {
    const ScratchDirectory scratch;
    writeMadeModels(scratch.path, models);
    cv::dnn::Net net = GetParam().read(scratch);
    net.setInput(blob, "data");
    return net.forward("detection_out").clone();
  }

  cv::Mat answer(const std::vector<DetectionRow>& rows, const cv::Mat& blob) const {
    MadeModels models;
    models.*GetParam().rows = rows;
    return answer(models, blob);
  }

  cv::Mat answer(const std::vector<DetectionRow>& rows) const {
    return answer(rows, cv::dnn::blobFromImage(evenPicture(10, 20, 30)));
  }
};

INSTANTIATE_TEST_SUITE_P(Both, MadeDetectionNetwork,
                         ::testing::Values(Network{"Caffe", &MadeModels::caffeRows, readCaffe},
                                           Network{"Tensorflow", &MadeModels::tensorflowRows,
                                                   readTensorflow}),
                         [](const auto& instance) { return std::string(instance.param.name); });

void expectShape(const cv::Mat& output, int rows) {
  ASSERT_EQ(output.type(), CV_32F);
  ASSERT_EQ(output.dims, 4);
  EXPECT_EQ(output.size[0], 1);
  EXPECT_EQ(output.size[1], 1);
  EXPECT_EQ(output.size[2], rows);
  EXPECT_EQ(output.size[3], 7);
}

void expectRow(const cv::Mat& output, int row, const std::vector<float>& expected) {
  ASSERT_EQ(expected.size(), 7U);
  const auto* values = output.ptr<float>(0, 0, row);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_TRUE(sameFloat(values[i], expected[i]))
        << "row " << row << ", value " << i << ": " << values[i] << " instead of " << expected[i];
  }
}

TEST_P(MadeDetectionNetwork, GivesConstantsBitForBit) {
  const float belowLimit = std::nextafter(0.7F, 0.0F);
  const float aboveLimit = std::nextafter(0.7F, 1.0F);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinity = std::numeric_limits<float>::infinity();
  const float least = std::numeric_limits<float>::min();
  const cv::Mat output = answer({{0.7F, 0.1F, 0.2F, 0.3F, 0.4F},
                                 {belowLimit, -0.5F, -1e-3F, 1.5F, 1e9F},
                                 {aboveLimit, nan, infinity, -infinity, least, 15.0F, 2.0F},
                                 {nan, 1.0F / 3.0F, 0.0F, 1.0F, 0.999999F}});
  expectShape(output, 4);
  expectRow(output, 0, {0.0F, 1.0F, 0.7F, 0.1F, 0.2F, 0.3F, 0.4F});
  expectRow(output, 1, {0.0F, 1.0F, belowLimit, -0.5F, -1e-3F, 1.5F, 1e9F});
  expectRow(output, 2, {2.0F, 15.0F, aboveLimit, nan, infinity, -infinity, least});
  expectRow(output, 3, {0.0F, 1.0F, nan, 1.0F / 3.0F, 0.0F, 1.0F, 0.999999F});
}

TEST_P(MadeDetectionNetwork, GivesAsManyRowsAsAsked) {
  for (const int count : {1, 2, 7, 31, 35, 200}) {
    std::vector<DetectionRow> rows;
    for (int i = 0; i < count; ++i) {
      const float n = static_cast<float>(i) / 1000.0F;
      rows.push_back({0.9F, n, 0.1F + n, 0.2F + n, 0.3F + n});
    }
    const cv::Mat output = answer(rows);
    expectShape(output, count);
    for (int i = 0; i < count; ++i) {
      const float n = static_cast<float>(i) / 1000.0F;
      expectRow(output, i, {0.0F, 1.0F, 0.9F, n, 0.1F + n, 0.2F + n, 0.3F + n});
    }
  }
}

TEST_P(MadeDetectionNetwork, GivesARowWithoutConfidenceForNoRows) {
  const cv::Mat output = answer(std::vector<DetectionRow>{});
  expectShape(output, 1);
  expectRow(output, 0, {0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F});
}

TEST_P(MadeDetectionNetwork, ShowsThePlanesOfItsInput) {
  constexpr float kUnit = 1.0F / 1024.0F;
  const std::vector<DetectionRow> rows{{{0.5F, {kUnit, 2 * kUnit, 4 * kUnit}},
                                        {0.0F, {kUnit, 0.0F, 0.0F}},
                                        {0.0F, {0.0F, kUnit, 0.0F}},
                                        {0.0F, {0.0F, 0.0F, kUnit}},
                                        1.0F}};
  const cv::Mat picture = evenPicture(16, 32, 64);
  expectRow(answer(rows, cv::dnn::blobFromImage(picture)), 0,
            {0.0F, 1.0F, 0.5F + 336 * kUnit, 16 * kUnit, 32 * kUnit, 64 * kUnit, 1.0F});

  const cv::Mat swapped = cv::dnn::blobFromImage(picture, 1.0, {}, {}, true);
  expectRow(answer(rows, swapped), 0,
            {0.0F, 1.0F, 0.5F + 192 * kUnit, 64 * kUnit, 32 * kUnit, 16 * kUnit, 1.0F});

  const cv::Mat shifted = cv::dnn::blobFromImage(picture, 1.0, {}, {104, 177, 123});
  expectRow(answer(rows, shifted), 0,
            {0.0F, 1.0F, 0.5F - 614 * kUnit, -88 * kUnit, -145 * kUnit, -59 * kUnit, 1.0F});
}

TEST_P(MadeDetectionNetwork, TakesTheMaximumOverTheWholePlane) {
  const std::vector<DetectionRow> rows{
      {0.0F, {0.0F, {1.0F, 0.0F, 0.0F}}, {0.0F, {0.0F, 1.0F, 0.0F}}, 0.0F, 0.0F}};
  for (const cv::Point& corner : {cv::Point(0, 0), cv::Point(299, 0), cv::Point(0, 299),
                                  cv::Point(299, 299), cv::Point(150, 7)}) {
    cv::Mat picture = evenPicture(5, 6, 7);
    picture.at<cv::Vec3b>(corner) = {255, 3, 9};
    expectRow(answer(rows, cv::dnn::blobFromImage(picture)), 0,
              {0.0F, 1.0F, 0.0F, 255.0F, 6.0F, 0.0F, 0.0F});
  }
}

TEST(MadeDetectionNetworks, DifferByDefault) {
  const ScratchDirectory scratch;
  writeMadeModels(scratch.path);
  const cv::Mat blob = cv::dnn::blobFromImage(evenPicture(1, 2, 3));
  cv::dnn::Net caffe = readCaffe(scratch);
  caffe.setInput(blob, "data");
  expectRow(caffe.forward("detection_out"), 0, {0.0F, 1.0F, 0.875F, 0.25F, 0.25F, 0.75F, 0.75F});
  cv::dnn::Net tensorflow = readTensorflow(scratch);
  tensorflow.setInput(blob, "data");
  expectRow(tensorflow.forward("detection_out"), 0,
            {0.0F, 1.0F, 0.75F, 0.125F, 0.25F, 0.625F, 0.875F});
}

// ---- Cascade

class MadeCascade : public ::testing::Test {
protected:
  MadeCascade() : threads(cv::getNumThreads()) { cv::setNumThreads(1); }
  ~MadeCascade() override { cv::setNumThreads(threads); }

  void SetUp() override {
    writeMadeModels(scratch.path);
    ASSERT_TRUE(cascade.load(scratch.file(kMadeCascade)));
  }

  std::vector<cv::Rect> detect(const cv::Mat& picture, int minimumNeighbours = 3) {
    cv::Mat grey;
    cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
    std::vector<cv::Rect> faces;
    cascade.detectMultiScale(grey, faces, 1.1, minimumNeighbours, 0, cv::Size(), cv::Size());
    return faces;
  }

private:
  int threads;
  ScratchDirectory scratch;
  cv::CascadeClassifier cascade;
};

// Within a sixteenth of the side, plus two pixels for the steps of the search.
bool isNear(const cv::Rect& found, const cv::Rect& square) {
  const int allowed = square.width / 16 + 2;
  const cv::Point first = found.tl() - square.tl();
  const cv::Point last = found.br() - square.br();
  return std::max({std::abs(first.x), std::abs(first.y), std::abs(last.x), std::abs(last.y)}) <=
         allowed;
}

TEST_F(MadeCascade, FindsEveryMarkOfAGridOnce) {
  for (const int count : {0, 1, 2, 7, 8, 31, 35}) {
    const std::vector<cv::Rect> squares = gridSquares(count);
    ASSERT_EQ(squares.size(), static_cast<std::size_t>(count));
    const std::vector<cv::Rect> faces = detect(pictureWithGrid(count));
    EXPECT_EQ(faces.size(), squares.size());
    for (const cv::Rect& square : squares) {
      EXPECT_EQ(std::count_if(faces.begin(), faces.end(),
                              [&](const cv::Rect& face) { return isNear(face, square); }),
                1)
          << count << " marks, square " << square;
    }
  }
}

TEST_F(MadeCascade, FindsTheGridAtOtherScales) {
  for (const double scale : {0.75, 1.25, 2.0}) {
    cv::Mat scaled;
    cv::resize(pictureWithGrid(35), scaled, {}, scale, scale, cv::INTER_AREA);
    EXPECT_EQ(detect(scaled).size(), 35U) << scale;
  }
}

TEST_F(MadeCascade, FindsMarksOfAnySizeAnywhere) {
  for (int side = 36; side <= 400; side += 1 + side / 12) {
    for (const int offset : {0, 1, 5}) {
      const cv::Rect square(side / 4 + offset, side / 4, side, side);
      const std::vector<cv::Rect> faces =
          detect(pictureWithMarks({side * 3 / 2 + 20, side * 3 / 2 + 20}, {square}));
      ASSERT_EQ(faces.size(), 1U) << square;
      EXPECT_TRUE(isNear(faces[0], square)) << square << " found as " << faces[0];
    }
  }
}

TEST_F(MadeCascade, FindsTheFace) {
  const std::vector<cv::Rect> faces = detect(pictureWithFace());
  ASSERT_EQ(faces.size(), 1U);
  EXPECT_TRUE(isNear(faces[0], {200, 120, 240, 240})) << faces[0];
}

TEST_F(MadeCascade, FindsNoWindowElsewhere) {
  const cv::Size size(640, 480);
  EXPECT_TRUE(detect(plainPicture(size), 0).empty());
  EXPECT_TRUE(detect(texturedPicture(size), 0).empty());
  EXPECT_TRUE(detect(cv::Mat(size, CV_8UC3, cv::Scalar::all(0)), 0).empty());
  EXPECT_TRUE(detect(cv::Mat(size, CV_8UC3, cv::Scalar::all(255)), 0).empty());
}

// ---- Landmarks

class MadeLandmarkModel : public ::testing::Test {
protected:
  // Fits to boxes on a 640x480 picture with a face.
  std::vector<std::vector<cv::Point2f>> fit(const LandmarkShape& shape,
                                            const std::vector<cv::Rect>& boxes) {
    cv::Mat grey;
    cv::cvtColor(pictureWithFace(), grey, cv::COLOR_BGR2GRAY);
    return fit(shape, boxes, grey);
  }

  std::vector<std::vector<cv::Point2f>>
  fit(const LandmarkShape& shape, const std::vector<cv::Rect>& boxes, const cv::Mat& grey) {
    MadeModels models;
    models.meanShape = shape;
    writeMadeModels(scratch.path, models);
    const auto fitter = cv::face::FacemarkLBF::create();
    fitter->loadModel(scratch.file(kMadeLandmarks));
    std::vector<std::vector<cv::Point2f>> landmarks;
    EXPECT_TRUE(fitter->fit(grey, boxes, landmarks));
    return landmarks;
  }

private:
  ScratchDirectory scratch;
};

cv::Point2f placed(const cv::Point2d& relative, const cv::Rect& box) {
  return cv::Point2d(box.x + box.width / 2.0 + relative.x * box.width / 2.0,
                     box.y + box.height / 2.0 + relative.y * box.height / 2.0);
}

TEST_F(MadeLandmarkModel, PlacesTheDefaultShape) {
  const auto faces = fit(defaultMeanShape(), {{100, 80, 64, 128}});
  ASSERT_EQ(faces.size(), 1U);
  ASSERT_EQ(faces[0].size(), 68U);
  EXPECT_EQ(faces[0][0], cv::Point2f(111.0F, 144.0F));  // by the left ear
  EXPECT_EQ(faces[0][8], cv::Point2f(132.0F, 192.0F));  // chin
  EXPECT_EQ(faces[0][16], cv::Point2f(153.0F, 144.0F)); // by the right ear
  EXPECT_EQ(faces[0][27], cv::Point2f(132.0F, 130.0F)); // top of the nose
  EXPECT_EQ(faces[0][36], cv::Point2f(118.0F, 132.0F)); // outer corner of the left eye
  EXPECT_EQ(faces[0][67], cv::Point2f(130.0F, 173.0F)); // last of the lips
}

TEST_F(MadeLandmarkModel, PlacesShapesExactlyInAnyBox) {
  LandmarkShape moved = defaultMeanShape();
  moved[8] = {0.125, 1.5};
  moved[27] = {-0.375, -2.0};
  const std::vector<cv::Rect> boxes{{200, 120, 240, 240}, {201, 123, 233, 233}, {0, 0, 51, 51},
                                    {-10, -7, 60, 44},    {600, 450, 40, 30},   {3, 5, 7, 9}};
  for (const LandmarkShape& shape : {defaultMeanShape(), moved}) {
    const auto faces = fit(shape, boxes);
    ASSERT_EQ(faces.size(), boxes.size());
    for (std::size_t face = 0; face < faces.size(); ++face) {
      ASSERT_EQ(faces[face].size(), shape.size());
      for (std::size_t i = 0; i < shape.size(); ++i) {
        EXPECT_EQ(faces[face][i], placed(shape[i], boxes[face]))
            << "landmark " << i << " in " << boxes[face];
      }
    }
  }
}

TEST_F(MadeLandmarkModel, DefaultShapeIsASymmetricFace) {
  const LandmarkShape shape = defaultMeanShape();
  const auto mirrored = [&](std::size_t left, std::size_t right) {
    return shape[left].x == -shape[right].x && shape[left].y == shape[right].y;
  };
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_TRUE(mirrored(i, 16 - i)) << i;
  }
  for (std::size_t i = 17; i < 22; ++i) {
    EXPECT_TRUE(mirrored(i, 43 - i)) << i;
  }
  for (std::size_t i = 36; i < 40; ++i) {
    EXPECT_TRUE(mirrored(i, 81 - i)) << i;
  }
  EXPECT_TRUE(mirrored(48, 54));
  EXPECT_TRUE(mirrored(60, 64));
  EXPECT_LT(shape[19].y, shape[37].y);
  EXPECT_LT(shape[37].y, shape[30].y);
  EXPECT_LT(shape[30].y, shape[51].y);
  EXPECT_LT(shape[57].y, shape[8].y);
}

// The fitter cuts the surroundings of the box out of the picture; on a picture one pixel wide
// nothing is left. As it does not check, reading a pixel of nothing ends the process.
using MadeLandmarkModelDeathTest = MadeLandmarkModel;

TEST_F(MadeLandmarkModelDeathTest, ReadsPixels) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const cv::Mat sliver(100, 1, CV_8U, cv::Scalar(7));
  EXPECT_DEATH_IF_SUPPORTED(fit(defaultMeanShape(), {{0, 10, 40, 40}}, sliver), "");
}

// ---- Segmentation

class MadeSegmentation : public ::testing::Test {
protected:
  cv::Mat scores(const MadeModels& models, const cv::Mat& blob) {
    writeMadeModels(scratch.path, models);
    cv::dnn::Net net = cv::dnn::readNet(scratch.file(kMadeSegmentation));
    net.setInput(blob, "x");
    return net.forward("save_infer_model/scale_0.tmp_1").clone();
  }

private:
  ScratchDirectory scratch;
};

TEST_F(MadeSegmentation, TakesBrightPixelsForPersonByDefault) {
  cv::Mat picture(192, 192, CV_8UC3, cv::Scalar::all(0));
  const cv::Rect bright(50, 20, 60, 100);
  picture(bright) = cv::Scalar::all(255);
  const cv::Mat blob = cv::dnn::blobFromImage(picture, 1 / 127.5, {}, cv::Scalar::all(127.5));
  const cv::Mat output = scores({}, blob);
  ASSERT_EQ(output.dims, 4);
  ASSERT_EQ(output.size[0], 1);
  ASSERT_EQ(output.size[1], 2);
  ASSERT_EQ(output.size[2], 192);
  ASSERT_EQ(output.size[3], 192);
  for (int y = 0; y < 192; ++y) {
    for (int x = 0; x < 192; ++x) {
      const bool person = output.ptr<float>(0, 1, y)[x] > output.ptr<float>(0, 0, y)[x];
      ASSERT_EQ(person, bright.contains({x, y})) << x << ", " << y;
    }
  }
}

TEST_F(MadeSegmentation, WeighsChannelsAsAsked) {
  MadeModels models;
  models.background = {{0.0F, 0.5F, 0.0F}, 0.25F};
  models.person = {{1.0F, 2.0F, 4.0F}, -3.0F};
  const cv::Mat picture(192, 192, CV_8UC3, cv::Scalar(10, 20, 30));
  const cv::Mat output = scores(models, cv::dnn::blobFromImage(picture));
  for (int y = 0; y < 192; ++y) {
    for (int x = 0; x < 192; ++x) {
      ASSERT_EQ(output.ptr<float>(0, 0, y)[x], 10.25F) << x << ", " << y;
      ASSERT_EQ(output.ptr<float>(0, 1, y)[x], 167.0F) << x << ", " << y;
    }
  }
}

// ---- Pictures

TEST(MadePictures, AreTheSameOnEveryRun) {
  const auto same = [](const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0.0;
  };
  EXPECT_TRUE(same(texturedPicture({64, 48}), texturedPicture({64, 48})));
  EXPECT_TRUE(same(pictureWithGrid(35), pictureWithGrid(35)));
  EXPECT_TRUE(same(pictureWithGrid(0), plainPicture({448, 320})));
  EXPECT_FALSE(same(pictureWithGrid(31), pictureWithGrid(35)));
}

TEST(MadePictures, AreWrittenWithoutLoss) {
  const ScratchDirectory scratch;
  const cv::Mat picture = texturedPicture({64, 48});
  const std::filesystem::path path = writePicture(scratch.path / "picture.png", picture);
  const cv::Mat read = cv::imread(path.string(), cv::IMREAD_UNCHANGED);
  ASSERT_EQ(read.size(), picture.size());
  ASSERT_EQ(read.type(), CV_8UC3);
  EXPECT_EQ(cv::norm(read, picture, cv::NORM_INF), 0.0);
}

TEST(MadePictures, CannotBeWrittenToAMissingDirectory) {
  const ScratchDirectory scratch;
  EXPECT_THROW(writePicture(scratch.path / "missing" / "picture.png", plainPicture({8, 8})),
               std::runtime_error);
}

} // namespace
} // namespace qorocv::testing
