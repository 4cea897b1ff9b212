// findQORFaces and processImage through the C interface, on made models.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "qorocv460/qorocv460.h"
#include "support/annotations.h"
#include "support/host.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <clocale>
#include <fstream>

namespace qorocv::testing {
namespace {

struct SingleImageCase {
  const char* name;
  SingleImageExport detection;
  std::size_t recordSize;
};

void PrintTo(const SingleImageCase& single, std::ostream* out) {
  *out << single.name;
}

class SingleImage : public ::testing::TestWithParam<SingleImageCase> {
protected:
  void SetUp() override {
    writeMadeModels(directory_.path());
    ASSERT_EQ(initModelsAtPath(directory_.asPrefix().c_str()), 0);
  }
  std::filesystem::path photo(const cv::Mat& picture) const {
    return writePicture(directory_ / "photo.png", picture);
  }
  Outcome find(const std::filesystem::path& path, const CallOptions& options = {},
               int capacity = 1) const {
    return detect(GetParam().detection, path, options, capacity);
  }
  std::size_t recordSize() const { return GetParam().recordSize; }

  TemporaryDirectory directory_;
};

constexpr SingleImageCase kSingleImageCases[] = {{"findQORFaces", findQORFaces, 8},
                                                 {"processImage", processImage, 140}};

INSTANTIATE_TEST_SUITE_P(Exports, SingleImage, ::testing::ValuesIn(kSingleImageCases),
                         [](const auto& instance) { return instance.param.name; });

/// What each rejected call gave: without an array, without a count, and with too little capacity.
std::vector<Outcome> rejectedCalls(SingleImageExport detection, const std::string& path,
                                   const std::string& copy = {}) {
  std::vector<Outcome> outcomes;
  outcomes.push_back(call([&](const HostVariables& host) {
    return detection(path.c_str(), copy.c_str(), nullptr, host.count, 0, false, host.width,
                     host.height);
  }));
  outcomes.push_back(call([&](const HostVariables& host) {
    return detection(path.c_str(), copy.c_str(), host.results, nullptr, 0, false, host.width,
                     host.height);
  }));
  for (const int capacity : {0, -1}) {
    outcomes.push_back(detect(detection, path, copiedTo(copy), capacity));
    EXPECT_EQ(outcomes.back().count, capacity);
    outcomes.back().count = 1; // as in the other two
  }
  return outcomes;
}

TEST_P(SingleImage, returnsZeroForACallWithoutRoomForAnAnswer) {
  const std::string path = photo(pictureWithFace()).string();
  for (const Outcome& outcome : rejectedCalls(GetParam().detection, path)) {
    EXPECT_EQ(outcome.returned, 0);
  }
}

TEST_P(SingleImage, touchesNothingInARejectedCall) {
  const std::string path = photo(pictureWithFace()).string();
  const std::string copy = (directory_ / "copy.png").string();
  for (const Outcome& outcome : rejectedCalls(GetParam().detection, path, copy)) {
    expectNothingTouched(outcome, 1);
  }
  EXPECT_FALSE(std::filesystem::exists(copy));
}

TEST_P(SingleImage, keepsTheLocaleInARejectedCall) {
  rejectedCalls(GetParam().detection, photo(pictureWithFace()).string());
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST_P(SingleImage, doesNotLookForThePhotographOfARejectedCall) {
  for (const Outcome& outcome : rejectedCalls(GetParam().detection, "no-such-picture.jpg")) {
    EXPECT_EQ(outcome.returned, 0);
    EXPECT_EQ(outcome.printed, "");
  }
}

TEST_P(SingleImage, saysNothingInARejectedCall) {
  const std::string path = photo(pictureWithFace()).string();
  for (const Outcome& outcome : rejectedCalls(GetParam().detection, path)) {
    EXPECT_EQ(outcome.printed, "");
  }
}

TEST_P(SingleImage, switchesToTheUsersLocale) {
  find("no-such-picture.png");
  const std::string current = std::setlocale(LC_ALL, nullptr);
  EXPECT_NE(current, "C");
  EXPECT_EQ(current, std::setlocale(LC_ALL, "")); // the user's
}

TEST_P(SingleImage, saysInOneLineThatAPhotographCannotBeRead) {
  std::ofstream(directory_ / "text.jpg") << "no picture";
  for (const std::filesystem::path& path : {directory_ / "missing.jpg", directory_ / "text.jpg",
                                            directory_.path(), std::filesystem::path()}) {
    const Outcome outcome = find(path);
    EXPECT_EQ(outcome.returned, -1) << path;
    EXPECT_EQ(outcome.printed, kUnreadableMessage) << path;
  }
}

TEST_P(SingleImage, touchesNothingForAPhotographThatCannotBeRead) {
  std::ofstream(directory_ / "text.jpg") << "no picture";
  for (const char* const name : {"missing.jpg", "text.jpg"}) {
    expectNothingTouched(find(directory_ / name, copiedTo(directory_ / "copy.png")), 1);
  }
  EXPECT_FALSE(std::filesystem::exists(directory_ / "copy.png"));
}

TEST_P(SingleImage, readsANullPathAsAnEmptyOne) {
  const auto detection = GetParam().detection;
  const Outcome outcome = call([&](const HostVariables& host) {
    return detection(nullptr, nullptr, host.results, host.count, 0, false, host.width, host.height);
  });
  EXPECT_EQ(outcome.returned, -1);
  EXPECT_EQ(outcome.printed, kUnreadableMessage);
}

TEST_P(SingleImage, reportsOneFace) {
  const Outcome outcome = find(photo(pictureWithFace()));
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(outcome.width, 640);
  EXPECT_EQ(outcome.height, 480);
  EXPECT_EQ(outcome.count, static_cast<int>(1 + recordSize()));
  EXPECT_EQ(outcome.written(), 1 + recordSize());
  EXPECT_EQ(outcome.results[0], 1.0);
  // The mark's square is (200, 120) to (440, 360); the cascade's steps are coarse.
  constexpr double tolerance = 0.06;
  EXPECT_NEAR(outcome.results[1], 200.0 / 640, tolerance);
  EXPECT_NEAR(outcome.results[2], 120.0 / 480, tolerance);
  EXPECT_NEAR(outcome.results[3], 440.0 / 640, tolerance);
  EXPECT_NEAR(outcome.results[4], 360.0 / 480, tolerance);
}

// The box in whole pixels, from fractions of a picture that was not scaled.
cv::Rect boxInPixels(const Outcome& outcome) {
  const auto pixel = [](double fraction, int side) { return cvRound(fraction * side); };
  return {cv::Point(pixel(outcome.results[1], outcome.width),
                    pixel(outcome.results[2], outcome.height)),
          cv::Point(pixel(outcome.results[3], outcome.width),
                    pixel(outcome.results[4], outcome.height))};
}

cv::Point2f fitted(const cv::Rect& box, std::size_t landmark) {
  const cv::Point2d shape = defaultMeanShape().at(landmark);
  return {static_cast<float>(box.x + box.width / 2. + shape.x * box.width / 2.),
          static_cast<float>(box.y + box.height / 2. + shape.y * box.height / 2.)};
}

TEST_P(SingleImage, reportsTheFittedLandmarksAsFractions) {
  const Outcome outcome = find(photo(pictureWithFace()));
  const cv::Rect box = boxInPixels(outcome);
  std::vector<std::size_t> landmarks{QOROCV460_NOSE_BRIDGE, QOROCV460_CHIN};
  if (recordSize() == 140) {
    landmarks.resize(QOROCV460_LANDMARKS);
    for (std::size_t i = 0; i < QOROCV460_LANDMARKS; ++i) {
      landmarks[i] = i;
    }
  }
  ASSERT_EQ(4 + 2 * landmarks.size(), recordSize());
  for (std::size_t i = 0; i < landmarks.size(); ++i) {
    const cv::Point2f point = fitted(box, landmarks[i]);
    EXPECT_EQ(outcome.results[5 + 2 * i], static_cast<double>(point.x / 640.0F)) << landmarks[i];
    EXPECT_EQ(outcome.results[6 + 2 * i], static_cast<double>(point.y / 480.0F)) << landmarks[i];
  }
}

TEST_P(SingleImage, reportsTheSizeBeforeScaling) {
  const Outcome outcome = find(photo(pictureWithFace()), scaledTo(320));
  EXPECT_EQ(outcome.returned, 1);
  EXPECT_EQ(outcome.width, 640);
  EXPECT_EQ(outcome.height, 480);
}

TEST_P(SingleImage, normalisesWithTheSizeThatStandsInTheHostsVariables) {
  // A host may pass one variable for both; then the height, written last, is what both divide by.
  const std::string path = photo(pictureWithFace()).string();
  const Outcome apart = find(path);
  int side = 0;
  const auto detection = GetParam().detection;
  const Outcome together = call([&](const HostVariables& host) {
    return detection(path.c_str(), "", host.results, host.count, 0, false, &side, &side);
  });
  EXPECT_EQ(side, 480);
  const cv::Rect box = boxInPixels(apart);
  EXPECT_EQ(together.results[1], static_cast<double>(static_cast<float>(box.x) / 480.0F));
  EXPECT_EQ(together.results[2], apart.results[2]);
}

TEST_P(SingleImage, findsNothingOnAPlainPicture) {
  const Outcome outcome = find(photo(plainPicture({200, 100})));
  EXPECT_EQ(outcome.returned, 0);
  EXPECT_EQ(outcome.count, 0);
  EXPECT_EQ(outcome.written(), 0U);
  EXPECT_EQ(outcome.width, 200);
  EXPECT_EQ(outcome.height, 100);
}

TEST_P(SingleImage, writesThirtyRecordsOfMoreFacesWhateverTheCapacity) {
  for (const int faces : {31, 35}) {
    for (const int capacity : {1, 5000}) {
      const Outcome outcome = find(photo(pictureWithGrid(faces)), {}, capacity);
      EXPECT_EQ(outcome.returned, faces);
      EXPECT_EQ(outcome.results[0], static_cast<double>(faces));
      EXPECT_EQ(outcome.count, static_cast<int>(1 + 30 * recordSize()));
      EXPECT_EQ(outcome.written(), 1 + 30 * recordSize());
    }
  }
}

TEST_P(SingleImage, givesNearlyTheSameFractionsAtHalfTheSize) {
  const auto path = photo(pictureWithFace());
  const Outcome whole = find(path);
  const Outcome half = find(path, scaledTo(320));
  constexpr double tolerance = 0.03; // a few steps of the cascade's grid
  ASSERT_EQ(half.count, whole.count);
  for (std::size_t i = 1; i < whole.written(); ++i) {
    EXPECT_NEAR(half.results[i], whole.results[i], tolerance) << i;
  }
}

TEST_P(SingleImage, writesAnAnnotatedCopyOfTheScaledPicture) {
  const std::string copy = (directory_ / "copy.png").string();
  const Outcome outcome = find(photo(pictureWithFace()), scaledTo(320, copiedTo(copy)));
  const cv::Mat picture = cv::imread(copy);
  ASSERT_EQ(picture.size(), cv::Size(320, 240));
  const auto left = cvRound(outcome.results[1] * 320);
  const auto top = cvRound(outcome.results[2] * 240);
  EXPECT_EQ(picture.at<cv::Vec3b>(top, left + 20), cv::Vec3b(0, 255, 0));
  EXPECT_EQ(picture.at<cv::Vec3b>(top + 1, left + 20), cv::Vec3b(0, 255, 0));
  EXPECT_GT(pixelsOf(picture, kLightBlue), 100);
}

class AnnotatedCrowd : public SingleImage {
protected:
  void SetUp() override {
    SingleImage::SetUp();
    const std::filesystem::path copy = directory_ / "copy.png";
    ASSERT_EQ(find(photo(pictureWithGrid(35)), copiedTo(copy)).returned, 35);
    picture_ = cv::imread(copy.string());
  }
  cv::Mat picture_;
};

INSTANTIATE_TEST_SUITE_P(Exports, AnnotatedCrowd, ::testing::ValuesIn(kSingleImageCases),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(AnnotatedCrowd, hasTheBoxesOfMoreThanThirtyFaces) {
  for (const cv::Rect& square : gridSquares(35)) {
    const cv::Rect around(square.x - 8, square.y - 8, square.width + 16, square.height + 16);
    EXPECT_GT(pixelsOf(picture_(around), kGreen), 100) << square;
  }
}

TEST_P(AnnotatedCrowd, hasTheLandmarksOfMoreThanThirtyFaces) {
  for (const cv::Rect& square : gridSquares(35)) {
    EXPECT_GT(pixelsOf(picture_(square), kLightBlue), 20) << square;
  }
}

TEST_P(SingleImage, writesThePlainScaledPictureWhereNoFaceIsFound) {
  const cv::Mat plain = texturedPicture({200, 100});
  const std::string copy = (directory_ / "copy.png").string();
  EXPECT_EQ(find(photo(plain), copiedTo(copy)).returned, 0);
  EXPECT_EQ(cv::norm(cv::imread(copy), plain, cv::NORM_INF), 0.0);
}

TEST_P(SingleImage, takesAOneCharacterOutputPathAsNone) {
  std::filesystem::current_path(directory_.path());
  const auto path = photo(pictureWithFace());
  const auto filesBefore = std::distance(std::filesystem::directory_iterator("."), {});
  for (const char* blank : {" ", "a", ""}) {
    EXPECT_EQ(find(path, copiedTo(blank)).returned, 1) << blank;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), filesBefore);
  std::filesystem::current_path("/");
}

TEST_P(SingleImage, hasTheRecordsInPlaceBeforeTheCopyFails) {
  const std::string path = photo(pictureWithFace()).string();
  const std::string noFormat = (directory_ / "copy.nosuchformat").string();
  const auto detection = GetParam().detection;
  const Outcome outcome = call([&](const HostVariables& host) {
    EXPECT_THROW(detection(path.c_str(), noFormat.c_str(), host.results, host.count, 0, false,
                           host.width, host.height),
                 cv::Exception);
    return 0;
  });
  EXPECT_EQ(outcome.count, static_cast<int>(1 + recordSize()));
  EXPECT_EQ(outcome.written(), 1 + recordSize());
}

TEST_P(SingleImage, ignoresACopyThatCannotBeWritten) {
  const Outcome outcome = find(photo(pictureWithFace()), copiedTo(directory_ / "no/such/copy.png"));
  EXPECT_EQ(outcome.returned, 1);
}

TEST_P(SingleImage, opensPhotographsNamedInAnyLanguage) {
#ifdef _WIN32
  const auto names = {"Zoë.png", "garçon.png"}; // of the user's code page
#else
  const auto names = {"портрет.png", "肖像.png", "😀.png"};
#endif
  for (const std::string name : names) {
    const auto path =
        writePicture(directory_.path() / std::filesystem::u8path(name), pictureWithFace());
    const auto copy = directory_.path() / std::filesystem::u8path("été-" + name);
    EXPECT_EQ(find(path, copiedTo(copy)).returned, 1) << name;
    EXPECT_TRUE(std::filesystem::exists(copy)) << name;
  }
}

TEST_P(SingleImage, throwsForAMissingCascade) {
  const auto path = photo(pictureWithFace());
  std::filesystem::remove(directory_ / kMadeCascade);
  EXPECT_THROW(find(path), cv::Exception);
}

TEST_P(SingleImage, findsAMissingCascadeThatIsThereAtTheNextCall) {
  const auto path = photo(pictureWithFace());
  std::filesystem::remove(directory_ / kMadeCascade);
  EXPECT_THROW(find(path), cv::Exception);
  writeMadeModels(directory_.path());
  EXPECT_EQ(find(path).returned, 1);
}

class ShowImageUnreadable : public ::testing::Test {
protected:
  Outcome outcome_ = call([](const HostVariables& host) {
    return showImage("no-such-picture.jpg", host.width, host.height);
  });
};

TEST_F(ShowImageUnreadable, isReportedInOneLine) {
  EXPECT_EQ(outcome_.returned, -1);
  EXPECT_EQ(outcome_.printed, kUnreadableMessage);
}

TEST_F(ShowImageUnreadable, leavesEverythingUntouched) {
  expectNothingTouched(outcome_, 1);
}

} // namespace
} // namespace qorocv::testing
