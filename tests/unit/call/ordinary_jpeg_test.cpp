// Ordinary JPEG files are read as OpenCV reads them; all others are left to it.
#include "call/ordinary_jpeg.h"
#include "make_models/made_pictures.h"
#include "support/picture_bytes.h"
#include "support/shared_files.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h> // which wants FILE and size_t to be known

namespace qorocv {
namespace {

using namespace qorocv::testing;

/// How a JPEG file keeps its pixels.
struct JpegKind {
  J_COLOR_SPACE colours = JCS_YCbCr;
  /// Pixels to a value of colour.
  int across = 2;
  int down = 2;
  bool progressive = false;
  int restartRows = 0;
  bool arithmetic = false;
  /// A scan of its own for each component.
  bool apart = false;
};

Bytes jpegOf(const cv::Mat& picture, const JpegKind& kind) {
  jpeg_compress_struct encoder = {};
  jpeg_error_mgr errors = {};
  encoder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&encoder);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&encoder, &memory, &size);
  encoder.image_width = static_cast<JDIMENSION>(picture.cols);
  encoder.image_height = static_cast<JDIMENSION>(picture.rows);
  encoder.input_components = 3;
  encoder.in_color_space = JCS_EXT_BGR;
  jpeg_set_defaults(&encoder);
  jpeg_set_colorspace(&encoder, kind.colours);
  encoder.comp_info[0].h_samp_factor = kind.across;
  encoder.comp_info[0].v_samp_factor = kind.down;
  encoder.restart_in_rows = kind.restartRows;
  encoder.arith_code = kind.arithmetic ? TRUE : FALSE;
  const jpeg_scan_info scans[] = {
      {1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
  if (kind.apart) {
    encoder.scan_info = scans;
    encoder.num_scans = 3;
  }
  if (kind.progressive) {
    jpeg_simple_progression(&encoder);
  }
  jpeg_start_compress(&encoder, TRUE);
  for (int y = 0; y < picture.rows; ++y) {
    JSAMPROW row = const_cast<JSAMPROW>(picture.ptr(y)); // only read
    jpeg_write_scanlines(&encoder, &row, 1);
  }
  jpeg_finish_compress(&encoder);
  jpeg_destroy_compress(&encoder);
  const Bytes jpeg(memory, memory + size);
  std::free(memory);
  return jpeg;
}

cv::Mat noise(cv::Size size) {
  cv::Mat picture(size, CV_8UC3);
  cv::RNG(7).fill(picture, cv::RNG::UNIFORM, 0, 256);
  return picture;
}

bool areEqual(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0;
}

class ReadOrdinaryJpeg : public ::testing::Test {
protected:
  cv::Mat read(const Bytes& file) const {
    writeBytes(path_, file);
    return readOrdinaryJpeg(path_.string());
  }

  void expectAsOpenCv(const Bytes& file) const {
    const cv::Mat picture = read(file);
    ASSERT_FALSE(picture.empty());
    EXPECT_TRUE(areEqual(picture, cv::imread(path_.string(), cv::IMREAD_COLOR)));
  }

  TemporaryDirectory directory_;
  std::filesystem::path path_ = directory_ / "photograph.jpg";
  Bytes jpeg_ = jpegOf(texturedPicture({50, 30}), {});
};

TEST_F(ReadOrdinaryJpeg, readsSmallAndOddSizesAsOpenCv) {
  for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 100), cv::Size(100, 1), cv::Size(8, 8),
                              cv::Size(17, 33), cv::Size(640, 481), cv::Size(3001, 20)}) {
    SCOPED_TRACE(size);
    expectAsOpenCv(jpegOf(noise(size), {}));
    expectAsOpenCv(jpegOf(texturedPicture(size), {}));
  }
}

TEST_F(ReadOrdinaryJpeg, readsManyKindsAsOpenCv) {
  const JpegKind kinds[] = {
      {JCS_YCbCr, 1, 1},
      {JCS_YCbCr, 2, 1},
      {JCS_YCbCr, 1, 2},
      {JCS_YCbCr, 4, 1},
      {JCS_YCbCr, 2, 2, true},
      {JCS_YCbCr, 2, 2, false, 1},
      {JCS_YCbCr, 2, 2, false, 0, true},
      {JCS_YCbCr, 2, 2, false, 0, false, true},
      {JCS_RGB, 1, 1},
      {JCS_GRAYSCALE, 1, 1},
      {JCS_GRAYSCALE, 1, 1, true},
  };
  int number = 0;
  for (const JpegKind& kind : kinds) {
    SCOPED_TRACE(number++);
    expectAsOpenCv(jpegOf(noise({101, 67}), kind));
  }
}

TEST_F(ReadOrdinaryJpeg, readsPhotographsAsOpenCv) {
  for (const char* const name : photosAtHand({"astronaut.jpg", "couple.jpg", "crowd.jpg",
                                              "painting.jpg", "player.jpg", "quartet.jpg"})) {
    const std::string path = realPhoto(name).string();
    EXPECT_TRUE(areEqual(readOrdinaryJpeg(path), cv::imread(path, cv::IMREAD_COLOR))) << name;
  }
}

TEST_F(ReadOrdinaryJpeg, doesNotMindWhatFollowsThePicture) {
  expectAsOpenCv(joined({jpeg_, text("a film")}));
}

TEST_F(ReadOrdinaryJpeg, leavesPicturesThatAreToBeTurned) {
  for (const NumberBytes number : {NumberBytes(littleEndian), NumberBytes(bigEndian)}) {
    for (int orientation = 2; orientation <= 8; ++orientation) {
      const Bytes exif = exifWithOrientation(orientation, number);
      EXPECT_TRUE(read(jpegWithMarker(jpeg_, kApp1, exif)).empty()) << orientation;
    }
  }
}

// OpenCV takes all but two letters I for the order of big machines.
TEST_F(ReadOrdinaryJpeg, leavesPicturesThatAreToBeTurnedByNumbersOfAnUnknownOrder) {
  for (const char* const order : {"IM", "MI", "XX"}) {
    Bytes exif = exifWithOrientation(6, bigEndian);
    std::copy_n(order, 2, exif.begin() + 6);
    const Bytes file = jpegWithMarker(jpeg_, kApp1, exif);
    EXPECT_TRUE(read(file).empty()) << order;
    const cv::Mat openCvs = cv::imread(path_.string(), cv::IMREAD_COLOR);
    EXPECT_EQ(openCvs.size(), cv::Size(30, 50)) << order; // turned
  }
}

TEST_F(ReadOrdinaryJpeg, readsPicturesThatLieAsTheyAre) {
  for (const NumberBytes number : {NumberBytes(littleEndian), NumberBytes(bigEndian)}) {
    for (const int orientation : {0, 1, 9, 0x0600}) {
      SCOPED_TRACE(orientation);
      expectAsOpenCv(jpegWithMarker(jpeg_, kApp1, exifWithOrientation(orientation, number)));
    }
  }
}

TEST_F(ReadOrdinaryJpeg, findsTheOrientationBehindOtherEntries) {
  // Six bytes of name, eight of header, the count; then an entry of twelve.
  Bytes exif = exifWithOrientation(6);
  exif[14] = 2;
  const Bytes unit = joined({littleEndian(0x0128, 2), littleEndian(3, 2), littleEndian(1, 4),
                             littleEndian(2, 2), littleEndian(0, 2)});
  exif.insert(exif.begin() + 16, unit.begin(), unit.end());
  EXPECT_TRUE(read(jpegWithMarker(jpeg_, kApp1, exif)).empty());
}

TEST_F(ReadOrdinaryJpeg, looksAtTheFirstMarkerAlone) {
  const Bytes turned = jpegWithOrientation(jpeg_, 6);
  expectAsOpenCv(jpegWithMarker(turned, kApp1, text("http://ns.adobe.com/xap/1.0/")));
}

// OpenCV turns the picture as soon as it has read the orientation's two bytes.
TEST_F(ReadOrdinaryJpeg, agreesWithOpenCvWhereverExifDataEnd) {
  const Bytes exif = exifWithOrientation(6);
  std::size_t lengthsRead = 0;
  for (std::size_t length = 0; length <= exif.size(); ++length) {
    const Bytes part(exif.begin(), exif.begin() + static_cast<std::ptrdiff_t>(length));
    const cv::Mat picture = read(jpegWithMarker(jpeg_, kApp1, part));
    if (!picture.empty()) {
      ++lengthsRead;
      EXPECT_TRUE(areEqual(picture, cv::imread(path_.string(), cv::IMREAD_COLOR))) << length;
    }
  }
  EXPECT_EQ(lengthsRead, 26U); // six bytes of name, eight of header, the count, ten of the entry
}

TEST_F(ReadOrdinaryJpeg, leavesOtherFormats) {
  EXPECT_TRUE(read(encoded(".png", texturedPicture({50, 30}))).empty());
  EXPECT_TRUE(read(text("no picture")).empty());
  EXPECT_TRUE(read({}).empty());
}

TEST_F(ReadOrdinaryJpeg, leavesFourComponents) {
  EXPECT_TRUE(read(cmykJpeg()).empty());
}

TEST_F(ReadOrdinaryJpeg, leavesPathsThatLeadToNoFile) {
  EXPECT_TRUE(readOrdinaryJpeg("").empty());
  EXPECT_TRUE(readOrdinaryJpeg(directory_.path().string()).empty());
  EXPECT_TRUE(readOrdinaryJpeg((directory_ / "nothing.jpg").string()).empty());
}

TEST_F(ReadOrdinaryJpeg, leavesEveryFileThatEndsEarlyWithoutAWord) {
  ::testing::internal::CaptureStderr();
  for (std::size_t length = 0; length < jpeg_.size(); ++length) {
    EXPECT_TRUE(read({jpeg_.begin(), jpeg_.begin() + static_cast<std::ptrdiff_t>(length)}).empty())
        << length;
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

// libjpeg fills the gap, and says so.
TEST_F(ReadOrdinaryJpeg, leavesWhatLibjpegWarnsOf) {
  Bytes gap = jpeg_;
  gap.insert(gap.end() - 2, {1, 2, 3});
  ::testing::internal::CaptureStderr();
  EXPECT_TRUE(read(gap).empty());
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_FALSE(cv::imread(path_.string(), cv::IMREAD_COLOR).empty());
}

/// Has no memory for any picture.
class NoMemory : public cv::MatAllocator {
public:
  cv::UMatData* allocate(int, const int*, int, void*, size_t*, cv::AccessFlag,
                         cv::UMatUsageFlags) const override {
    CV_Error(cv::Error::StsNoMem, "none");
  }
  bool allocate(cv::UMatData*, cv::AccessFlag, cv::UMatUsageFlags) const override { return false; }
  void deallocate(cv::UMatData*) const override {}
};

TEST_F(ReadOrdinaryJpeg, asksForNoMemoryForMorePixelsThanOpenCvTakes) {
  const auto ofSize = [](std::uint32_t width, std::uint32_t height) {
    return joined(
        {jpegStart(width, height, 3), {0xFF, 0xDA, 0, 12, 3, 1, 0, 2, 0, 3, 0, 0, 63, 0}});
  };
  NoMemory none;
  cv::MatAllocator* const before = cv::Mat::getDefaultAllocator();
  cv::Mat::setDefaultAllocator(&none);
  EXPECT_THROW(read(ofSize(32768, 32768)), cv::Exception); // 2^30, the most
  EXPECT_TRUE(read(ofSize(32768, 32769)).empty());
  EXPECT_TRUE(read(ofSize(65500, 65500)).empty());
  cv::Mat::setDefaultAllocator(before);
}

TEST_F(ReadOrdinaryJpeg, agreesWithOpenCvWhateverByteIsAnother) {
  int readAlike = 0;
  for (std::size_t i = 0; i < jpeg_.size(); ++i) {
    for (const int change : {0x01, 0x80, 0xFF}) {
      Bytes changed = jpeg_;
      changed[i] = static_cast<uchar>(changed[i] ^ change);
      const cv::Mat picture = read(changed);
      if (!picture.empty()) {
        ++readAlike;
        EXPECT_TRUE(areEqual(picture, cv::imread(path_.string(), cv::IMREAD_COLOR)))
            << i << ' ' << change;
      }
    }
  }
  EXPECT_GT(readAlike, 100);
}

#ifndef _WIN32 // which has no setenv
TEST_F(ReadOrdinaryJpeg, leavesEveryFileWhereOpenCvWasGivenLimits) {
  expectAsOpenCv(jpeg_);
  for (const char* const name :
       {"OPENCV_IO_MAX_IMAGE_WIDTH", "OPENCV_IO_MAX_IMAGE_HEIGHT", "OPENCV_IO_MAX_IMAGE_PIXELS"}) {
    ASSERT_EQ(setenv(name, "1000000", 1), 0);
    EXPECT_TRUE(read(jpeg_).empty()) << name;
    unsetenv(name);
  }
}
#endif

} // namespace
} // namespace qorocv
