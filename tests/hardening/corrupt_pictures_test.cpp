// Pictures that were cut short or had bytes turned over: each call says that it cannot read the
// picture, or finds what is left, or throws; the process lives, and the next call works.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

namespace qorocv::testing {
namespace {

int numberOfPictures() {
  const char* const wanted = std::getenv("QOROCV460_CORRUPT_PICTURES");
  return wanted != nullptr ? std::atoi(wanted) : 1000;
}

std::vector<uchar> encoded(const std::string& extension) {
  std::vector<uchar> bytes;
  cv::imencode(extension, texturedPicture({96, 64}), bytes);
  return bytes;
}

std::vector<uchar> corrupted(std::vector<uchar> bytes, std::mt19937& random) {
  const auto below = [&](std::size_t limit) { return random() % limit; };
  switch (below(3)) {
  case 0: // cut short
    bytes.resize(below(bytes.size()));
    break;
  case 1: // some bits turned over, anywhere
    for (std::size_t i = 0; i <= below(20); ++i) {
      bytes[below(bytes.size())] ^= static_cast<uchar>(1U << below(8));
    }
    break;
  default: // a byte of the header replaced
    bytes[below(std::min<std::size_t>(bytes.size(), 64))] = static_cast<uchar>(below(256));
  }
  return bytes;
}

// One that never comes back is what the test runner's time-out is for.
TEST(CorruptPictures, areReadOrNotButEndNoProcess) {
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  ASSERT_EQ(initModelsAtPath(directory.asPrefix().c_str()), 0);
  std::mt19937 random(460);
  std::vector<std::string> extensions{".jpg", ".png", ".tif", ".webp",
                                      ".bmp", ".ppm", ".ras", ".jp2"};
  if (!cv::haveImageWriter(".jp2")) { // an OpenCV of few parts
    extensions.pop_back();
  }
  std::vector<std::vector<uchar>> whole;
  std::transform(extensions.begin(), extensions.end(), std::back_inserter(whole), encoded);
  int read = 0;
  int unreadable = 0;
  int thrown = 0;
  for (int i = 0; i < numberOfPictures(); ++i) {
    const std::size_t format = static_cast<std::size_t>(i) % extensions.size();
    const std::vector<uchar> bytes = corrupted(whole[format], random);
    const auto path = directory / ("picture" + extensions[format]);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    try {
      const int returned = detect(kDunMask02, path, scaledTo(100)).returned;
      (returned == -1 ? unreadable : read) += 1;
    } catch (const std::exception&) {
      ++thrown;
    }
  }
  std::cout << read << " read, " << unreadable << " unreadable, " << thrown << " thrown"
            << std::endl;
  EXPECT_EQ(read + unreadable + thrown, numberOfPictures());
  EXPECT_GT(read, 0);
  EXPECT_GT(unreadable, 0);
  const auto good = writePicture(directory / "good.png", pictureWithFace());
  EXPECT_EQ(detect(kDunMask02, good).returned, 1);
}

TEST(CorruptPictures, cutAtEveryHundredthAreReadOrNot) {
  const TemporaryDirectory directory;
  writeMadeModels(directory.path());
  ASSERT_EQ(initModelsAtPath(directory.asPrefix().c_str()), 0);
  for (const char* const extension : {".jpg", ".png"}) {
    const std::vector<uchar> whole = encoded(extension);
    for (std::size_t percent = 0; percent <= 100; ++percent) {
      const auto path = directory / (std::string("cut") + extension);
      std::ofstream(path, std::ios::binary)
          .write(reinterpret_cast<const char*>(whole.data()),
                 static_cast<std::streamsize>(whole.size() * percent / 100));
      const int returned = detect(kDun02, path).returned;
      EXPECT_GE(returned, percent == 100 ? 0 : -1) << extension << ' ' << percent;
      EXPECT_LE(returned, percent == 0 ? -1 : 1) << extension << ' ' << percent;
    }
  }
}

} // namespace
} // namespace qorocv::testing
