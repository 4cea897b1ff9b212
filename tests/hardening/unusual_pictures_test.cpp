// Files that are no pictures, and pictures of every kind: what is promised for each of them.
#include "make_models/made_models.h"
#include "make_models/made_pictures.h"
#include "support/picture_bytes.h"
#include "support/slot_exports.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <cstdint>
#include <numeric>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#endif

namespace qorocv::testing {
namespace {

// CRC-32 as PNG defines it: ISO 3309.
std::uint32_t crc32(const Bytes& bytes) {
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const uchar byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
    }
  }
  return ~crc;
}

Bytes pngChunk(const std::string& type, const Bytes& data) {
  const Bytes body = joined({text(type), data});
  return joined(
      {bigEndian(static_cast<std::uint32_t>(data.size()), 4), body, bigEndian(crc32(body), 4)});
}

constexpr std::ptrdiff_t kPngHeaderEnd = 33; // signature 8, IHDR 25

/// A PNG with another header: width and height, depth, kind of colour.
Bytes pngWithHeader(const Bytes& png, std::uint32_t width, std::uint32_t height, uchar depth,
                    uchar colour, const Bytes& extra = {}) {
  const Bytes header =
      joined({bigEndian(width, 4), bigEndian(height, 4), {depth, colour, 0, 0, 0}});
  return joined({{png.begin(), png.begin() + 8},
                 pngChunk("IHDR", header),
                 extra,
                 {png.begin() + kPngHeaderEnd, png.end()}});
}

/// A grey PNG whose values index a palette of reds instead.
Bytes palettePng(const cv::Mat& grey) {
  Bytes palette;
  for (int i = 0; i < 256; ++i) {
    palette.insert(palette.end(), {static_cast<uchar>(i), 0, 0});
  }
  return pngWithHeader(encoded(".png", grey), static_cast<std::uint32_t>(grey.cols),
                       static_cast<std::uint32_t>(grey.rows), 8, 3, pngChunk("PLTE", palette));
}

/// A WebP of two frames, the first of which is `picture`.
Bytes animatedWebp(const cv::Mat& picture) {
  const auto size24 = [](int size) {
    return littleEndian(static_cast<std::uint32_t>(size - 1), 3);
  };
  const auto chunk = [](const std::string& type, const Bytes& data) {
    return joined({text(type), littleEndian(static_cast<std::uint32_t>(data.size()), 4), data,
                   Bytes(data.size() % 2, 0)});
  };
  const auto frame = [&](const cv::Mat& image) {
    const Bytes whole = encoded(".webp", image);
    return chunk("ANMF", joined({littleEndian(0, 3),
                                 littleEndian(0, 3),
                                 size24(image.cols),
                                 size24(image.rows),
                                 littleEndian(100, 3),
                                 {0},
                                 {whole.begin() + 12, whole.end()}}));
  };
  const Bytes file =
      joined({text("WEBP"),
              chunk("VP8X", joined({{0x02, 0, 0, 0}, size24(picture.cols), size24(picture.rows)})),
              chunk("ANIM", {0, 0, 0, 0, 0, 0}), frame(picture), frame(255 - picture)});
  return joined({text("RIFF"), littleEndian(static_cast<std::uint32_t>(file.size()), 4), file});
}

class UnusualPictures : public ::testing::Test {
protected:
  void SetUp() override {
    writeMadeModels(models_.path());
    ASSERT_EQ(initModelsAtPath(models_.asPrefix().c_str()), 0);
  }

  std::filesystem::path write(const std::string& name, const Bytes& bytes) const {
    const auto path = directory_ / name;
    writeBytes(path, bytes);
    return path;
  }

  /// Every detection export says that it cannot read the file, and does nothing more.
  static void expectUnreadable(const std::filesystem::path& file) {
    for (const SlotExport& slotExport : kSlotExports) {
      const Outcome outcome = detect(slotExport, file);
      EXPECT_EQ(outcome.returned, -1) << slotExport.name << ' ' << file;
      EXPECT_EQ(outcome.printed, kUnreadableMessage) << slotExport.name << ' ' << file;
      expectNothingTouched(outcome, 1);
    }
    for (const auto singleImage : {findQORFaces, processImage}) {
      const Outcome outcome = detect(singleImage, file);
      EXPECT_EQ(outcome.returned, -1) << file;
      expectNothingTouched(outcome, 1);
    }
  }

  TemporaryDirectory models_;
  TemporaryDirectory directory_;
};

TEST_F(UnusualPictures, thatAreNoneAreUnreadable) {
  expectUnreadable(write("empty.jpg", {}));
  expectUnreadable(write("one byte.jpg", {0xFF}));
  expectUnreadable(write("text.jpg", text("This is not a photograph.\n")));
  expectUnreadable(write("signature.png", {0x89, 'P', 'N', 'G', 13, 10, 26, 10}));
  expectUnreadable(directory_.path());
}

// What the host sees of a picture: its size, and the colour of the copy for display at a point.
struct Seen {
  int width;
  int height;
  cv::Vec3b bgrAt(double x, double y) const {
    const auto at = static_cast<std::size_t>(
        4 * (static_cast<int>(y * 1000) * 1000 + static_cast<int>(x * 1000)));
    return {view[at + 2], view[at + 1], view[at]};
  }
  std::vector<unsigned char> view;
};

Seen seen(const std::filesystem::path& file) {
  const Outcome outcome = detect(kDunMask01, file);
  EXPECT_EQ(outcome.returned, 1) << file;
  return {outcome.width, outcome.height, outcome.view.inside()};
}

void expectNear(const cv::Vec3b& colour, const cv::Vec3b& wanted, const std::string& what) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(colour[i], wanted[i], 12) << what << " channel " << i;
  }
}

TEST_F(UnusualPictures, areReadAsEightBitColour) {
  const cv::Vec3b colour(40, 120, 200);
  const cv::Mat picture(48, 64, CV_8UC3, cv::Scalar(colour));
  cv::Mat grey;
  cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
  const uchar greyValue = grey.at<uchar>(0, 0);
  const cv::Vec3b greyColour(greyValue, greyValue, greyValue);
  cv::Mat deep;
  picture.convertTo(deep, CV_16U, 257);
  cv::Mat transparent;
  cv::cvtColor(picture, transparent, cv::COLOR_BGR2BGRA);
  transparent.forEach<cv::Vec4b>([](cv::Vec4b& pixel, const int*) { pixel[3] = 128; });

  struct Kind {
    const char* name;
    Bytes bytes;
    cv::Vec3b colour;
  };
  const Kind kinds[] = {
      {"progressive.jpg", encoded(".jpg", picture, {cv::IMWRITE_JPEG_PROGRESSIVE, 1}), colour},
      {"deep.png", encoded(".png", deep), colour},
      {"deep.tif", encoded(".tif", deep), colour},
      {"grey.jpg", encoded(".jpg", grey), greyColour},
      {"grey.png", encoded(".png", grey), greyColour},
      {"transparent.png", encoded(".png", transparent), colour},
      {"transparent.webp", encoded(".webp", transparent), colour},
      {"palette.png", palettePng(grey), cv::Vec3b(0, 0, greyValue)},
      {"palette.bmp", encoded(".bmp", grey), greyColour},
  };
  for (const Kind& kind : kinds) {
    const Seen picture64 = seen(write(kind.name, kind.bytes));
    EXPECT_EQ(picture64.width, 64) << kind.name;
    EXPECT_EQ(picture64.height, 48) << kind.name;
    expectNear(picture64.bgrAt(0.5, 0.5), kind.colour, kind.name);
  }
  const Seen cmyk = seen(write("cmyk.jpg", cmykJpeg()));
  EXPECT_EQ(cmyk.width, 8);
  EXPECT_EQ(cmyk.height, 8);
}

TEST_F(UnusualPictures, stripOfAnimationIsUnreadable) {
  const cv::Mat picture(48, 64, CV_8UC3, cv::Scalar(40, 120, 200));
  expectUnreadable(write("animated.webp", animatedWebp(picture)));
}

// The picture has a red, green, blue and white quarter: from the top left, row by row. Orientation 1
// is upright; the others are how a camera stored what stands upright in the same way.
TEST_F(UnusualPictures, areTurnedUprightByTheirOrientation) {
  const cv::Vec3b red(0, 0, 255);
  const cv::Vec3b green(0, 255, 0);
  const cv::Vec3b blue(255, 0, 0);
  const cv::Vec3b white(255, 255, 255);
  cv::Mat upright(64, 96, CV_8UC3);
  upright(cv::Rect(0, 0, 48, 32)) = cv::Scalar(red);
  upright(cv::Rect(48, 0, 48, 32)) = cv::Scalar(green);
  upright(cv::Rect(0, 32, 48, 32)) = cv::Scalar(blue);
  upright(cv::Rect(48, 32, 48, 32)) = cv::Scalar(white);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    // Stored rows and columns change places in 5 to 8; then rows or columns run backwards.
    cv::Mat stored = upright.clone();
    if (orientation >= 5) {
      cv::transpose(stored, stored);
    }
    constexpr int none = 2;
    constexpr int flips[] = {none, 1, -1, 0, none, 0, -1, 1};
    if (flips[orientation - 1] != none) {
      cv::flip(stored, stored, flips[orientation - 1]);
    }
    const Bytes jpeg = encoded(".jpg", stored, {cv::IMWRITE_JPEG_QUALITY, 100});
    const std::string name = "orientation " + std::to_string(orientation) + ".jpg";
    const Seen turned = seen(write(name, jpegWithOrientation(jpeg, orientation)));
    EXPECT_EQ(turned.width, 96) << name;
    EXPECT_EQ(turned.height, 64) << name;
    expectNear(turned.bgrAt(0.25, 0.25), red, name);
    expectNear(turned.bgrAt(0.75, 0.25), green, name);
    expectNear(turned.bgrAt(0.25, 0.75), blue, name);
    expectNear(turned.bgrAt(0.75, 0.75), white, name);
  }
}

TEST_F(UnusualPictures, ofExtremeShapeAreAnalysedOrThrowWhereNothingIsLeftOfThem) {
  MadeModels seeingNothing;
  seeingNothing.caffeRows.clear();
  writeMadeModels(models_.path(), seeingNothing);
  struct Shape {
    cv::Size size;
    int maxSide;
    bool vanishes; // a side that is scaled to no pixel
  };
  const Shape shapes[] = {
      {{1, 1}, 0, false},     {{1, 1}, 100, false},    {{19, 19}, 0, false},
      {{1, 600}, 0, false},   {{600, 1}, 0, false},    {{1, 600}, 599, true},
      {{60000, 1}, 0, false}, {{60000, 1}, 100, true}, {{1, 60000}, 100, true},
      {{300, 200}, 1, true},
  };
  for (const Shape& shape : shapes) {
    const auto file = writePicture(directory_ / "shape.png", plainPicture(shape.size));
    for (const SlotExport& slotExport : kSlotExports) {
      CallOptions options;
      options.maxSide = shape.maxSide;
      if (shape.vanishes) {
        EXPECT_THROW(detect(slotExport, file, options), cv::Exception)
            << slotExport.name << shape.size;
      } else {
        SCOPED_TRACE(::testing::Message() << slotExport.name << shape.size << shape.maxSide);
        const Outcome outcome = detect(slotExport, file, options);
        EXPECT_EQ(outcome.returned, 0);
        EXPECT_EQ(outcome.width, shape.size.width);
        EXPECT_EQ(outcome.height, shape.size.height);
      }
    }
  }
}

// More pixels than OpenCV reads (2 to the power of 30): refused before anything of the size is made.
TEST_F(UnusualPictures, thatClaimToBeHugeThrow) {
  const Bytes png = encoded(".png", plainPicture({8, 8}));
  const Bytes jpeg =
      joined({jpegStart(65500, 65500, 3), {0xFF, 0xDA, 0, 12, 3, 1, 0, 2, 0, 3, 0, 0, 63, 0}});
  for (const auto& file :
       {write("huge.png", pngWithHeader(png, 65500, 65500, 8, 2)), write("huge.jpg", jpeg)}) {
    for (const SlotExport& slotExport : kSlotExports) {
      EXPECT_THROW(detect(slotExport, file), cv::Exception) << slotExport.name << file;
    }
  }
}

#ifndef _WIN32
// Reading one waits for who writes to it: a host gets its answer at once.
TEST_F(UnusualPictures, thatArePipesAreUnreadable) {
  const auto pipe = directory_ / "pipe.png";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  expectUnreadable(pipe);
}
#endif

} // namespace
} // namespace qorocv::testing
