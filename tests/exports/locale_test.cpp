// The user's locale changes nothing but the encoding of paths: numbers in model files keep their
// points and i its dot.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "qorocv460/qorocv460.h"
#include "support/host.h"
#include "support/shared_files.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

namespace qorocv::testing {
namespace {

// With decimal commas, with another i, with characters of several bytes, with a decimal sign of two.
constexpr const char* kLocales[] = {"C.UTF-8", "de_DE.UTF-8", "tr_TR.UTF-8", "ja_JP.UTF-8",
                                    "ps_AF"};
constexpr const char* kNames[] = {"портрет", "肖像", "😀"};

// Detects in every locale with freshly loaded models, in photographs named in any language.
void expectTheSameInEveryLocale(const std::filesystem::path& photo, int faces,
                                const TemporaryDirectory& directory) {
  Outcome first;
  for (const char* locale : kLocales) {
    setenv("LC_ALL", locale, 1);
    for (const char* name : kNames) {
      const std::filesystem::path named = directory / (name + photo.extension().string());
      std::filesystem::copy_file(photo, named, std::filesystem::copy_options::overwrite_existing);
      initDetector();
      const Outcome outcome = detect(processImage, named);
      EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), locale);
      ASSERT_EQ(outcome.returned, faces) << locale << name;
      if (first.returned == 0) {
        first = outcome;
      }
      EXPECT_EQ(outcome.results, first.results) << locale << name;
    }
  }
}

TEST(Locale, changesNoResultOfMadeModels) {
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  initModelsAtPath(directory.asPrefix().c_str());
  expectTheSameInEveryLocale(writePicture(directory / "face.png", pictureWithFace()), 1, directory);
}

class RealLocale : public RealModelsTest {};

TEST_F(RealLocale, changesNoResult) {
  const TemporaryDirectory directory;
  // The cascade takes the suit for a face too.
  expectTheSameInEveryLocale(realPhoto("astronaut.jpg"), 2, directory);
}

// Turkish has no i for the I of a keyword: a network is read the same in every locale all the same.
class RealLocaleOfNetwork : public RealModelsTest, public ::testing::WithParamInterface<int> {};

TEST_P(RealLocaleOfNetwork, changesNothingThatIsReadInIt) {
  CallOptions options;
  options.modelKind = GetParam();
  Outcome first;
  for (const char* locale : kLocales) {
    setenv("LC_ALL", locale, 1);
    const Outcome outcome = detect(kDunTr02, realPhoto("astronaut.jpg"), options);
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), locale);
    EXPECT_EQ(outcome.returned, 1) << locale;
    if (first.returned == 0) {
      first = outcome;
    }
    EXPECT_EQ(outcome.results, first.results) << locale;
    ++options.slot; // a fresh one
  }
}

INSTANTIATE_TEST_SUITE_P(ModelKinds, RealLocaleOfNetwork, ::testing::Values(1, 2));

TEST_F(RealLocale, changesNoMaskOfASegmenterThatIsReadInIt) {
  // One face, so that its close-up is segmented too.
  const auto photo = realPhoto("astronaut.jpg");
  Outcome first;
  CallOptions options;
  for (const char* locale : kLocales) {
    setenv("LC_ALL", locale, 1);
    const Outcome outcome = detect(kDunMask02, photo, options);
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), locale);
    EXPECT_EQ(outcome.returned, 1) << locale;
    EXPECT_FALSE(outcome.cropMask.isUntouched()) << locale;
    if (first.returned == 0) {
      first = outcome;
    }
    EXPECT_TRUE(sameOutputs(outcome, first)) << locale;
    ++options.slot; // a fresh one
  }
}

TEST(Locale, mayBeTheOneThatEveryProcessBeginsWith) {
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  initModelsAtPath(directory.asPrefix().c_str());
  const auto photo = writePicture(directory / "face.png", pictureWithFace());
  setenv("LC_ALL", "C", 1);
  EXPECT_EQ(detect(processImage, photo).returned, 1);
}

TEST(Locale, withoutTheCharactersOfAPathCannotOpenIt) {
  const TemporaryDirectory directory;
  setenv("LC_ALL", "de_DE.ISO-8859-1", 1);
  const auto photo = writePicture(directory / "肖像.png", pictureWithFace());
  const Outcome outcome = detect(findQORFaces, photo);
  EXPECT_EQ(outcome.returned, -1);
  EXPECT_EQ(outcome.printed, kUnreadableMessage);
}

} // namespace
} // namespace qorocv::testing
