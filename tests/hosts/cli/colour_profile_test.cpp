// Colour profiles in files made by hand, byte by byte.
#include "colour_profile.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <stdexcept>
#include <string>
#include <zlib.h>

namespace qorfaces {
namespace {

using namespace std::string_literals;

Bytes bytes(const std::string& text) {
  return {text.begin(), text.end()};
}

std::string bigEndian(std::size_t value, int count) {
  std::string text;
  for (int i = count - 1; i >= 0; --i) {
    text += static_cast<char>(value >> (8 * i) & 0xFFU);
  }
  return text;
}

std::string littleEndian(std::size_t value, int count) {
  const std::string text = bigEndian(value, count);
  return {text.rbegin(), text.rend()};
}

// What a reader looks at: its length, its colours and its signature.
std::string profile(std::size_t size = 200, const std::string& colours = "RGB ") {
  std::string text(size, 'p');
  text.replace(0, 4, bigEndian(size, 4));
  text.replace(16, 4, colours);
  text.replace(36, 4, "acsp");
  return text;
}

std::string segment(unsigned char marker, const std::string& content) {
  return "\xFF"s + static_cast<char>(marker) + bigEndian(content.size() + 2, 2) + content;
}

std::string piece(int number, int count, const std::string& content) {
  return segment(0xE2,
                 "ICC_PROFILE\0"s + static_cast<char>(number) + static_cast<char>(count) + content);
}

std::string jpeg(const std::string& segments) {
  return "\xFF\xD8"s + segments + segment(0xDA, "scan") + "\xFF\xD9"s;
}

std::string chunk(const std::string& name, const std::string& content) {
  return bigEndian(content.size(), 4) + name + content + "csum";
}

std::string png(const std::string& chunks) {
  return "\x89PNG\r\n\x1A\n"s + chunk("IHDR", std::string(13, '\0')) + chunks + chunk("IDAT", "x") +
         chunk("IEND", "");
}

std::string packed(const std::string& text) {
  std::string result(text.size() + 100, '\0');
  auto size = static_cast<uLongf>(result.size());
  compress(reinterpret_cast<Bytef*>(result.data()), &size,
           reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size()));
  result.resize(size);
  return result;
}

TEST(ColourProfile, isThatOfAJpegFile) {
  EXPECT_EQ(colourProfile(bytes(jpeg(segment(0xE0, "JFIF") + piece(1, 1, profile())))),
            bytes(profile()));
}

TEST(ColourProfile, isPutTogetherByTheNumbersOfItsPieces) {
  const std::string whole = profile();
  EXPECT_EQ(
      colourProfile(bytes(jpeg(piece(2, 3, whole.substr(50, 100)) + piece(3, 3, whole.substr(150)) +
                               segment(0xE1, "Exif") + piece(1, 3, whole.substr(0, 50))))),
      bytes(whole));
}

TEST(ColourProfile, isNoneWhereAPieceIsMissing) {
  EXPECT_TRUE(colourProfile(bytes(jpeg(piece(1, 2, profile())))).empty());
}

TEST(ColourProfile, isFoundBehindFillers) {
  EXPECT_EQ(colourProfile(bytes(jpeg("\xFF\xFF\xFF"s + piece(1, 1, profile())))), bytes(profile()));
}

TEST(ColourProfile, isNotThatOfAPictureWithinTheScan) {
  EXPECT_TRUE(colourProfile(bytes(jpeg("") + piece(1, 1, profile()))).empty());
}

TEST(ColourProfile, isThatOfAPngFile) {
  EXPECT_EQ(colourProfile(bytes(png(chunk("gAMA", "1234") +
                                    chunk("iCCP", "a name\0\0"s + packed(profile(100000)))))),
            bytes(profile(100000)));
}

TEST(ColourProfile, isNoneWhereItCannotBeUnpacked) {
  EXPECT_TRUE(colourProfile(bytes(png(chunk("iCCP", "a name\0\0not packed"s)))).empty());
  EXPECT_TRUE(colourProfile(bytes(png(chunk("iCCP", "a name")))).empty());
  const std::string half = packed(profile(100000)).substr(0, 100);
  EXPECT_TRUE(colourProfile(bytes(png(chunk("iCCP", "a name\0\0"s + half)))).empty());
}

TEST(ColourProfile, isThatOfAWebpFile) {
  const std::string file = "RIFF" + littleEndian(999, 4) + "WEBP" + "VP8X" + littleEndian(3, 4) +
                           "abc\0"s + "ICCP" + littleEndian(200, 4) + profile();
  EXPECT_EQ(colourProfile(bytes(file)), bytes(profile()));
}

// A directory at byte 8 with two entries; the profile lies behind it, at byte 38.
template <class Number> std::string tiff(const std::string& start, Number number) {
  return start + number(8, 4) + number(2, 2) +                           //
         number(256, 2) + number(3, 2) + number(1, 4) + number(640, 4) + //
         number(34675, 2) + number(7, 2) + number(200, 4) + number(38, 4) + number(0, 4) +
         profile();
}

TEST(ColourProfile, isThatOfATiffFileInEitherOrder) {
  EXPECT_EQ(colourProfile(bytes(tiff("II*\0"s, littleEndian))), bytes(profile()));
  EXPECT_EQ(colourProfile(bytes(tiff("MM\0*"s, bigEndian))), bytes(profile()));
}

TEST(ColourProfile, isNoneInFilesWithoutOne) {
  EXPECT_TRUE(colourProfile({}).empty());
  EXPECT_TRUE(colourProfile(bytes("BM a bitmap")).empty());
  EXPECT_TRUE(colourProfile(bytes(jpeg(""))).empty());
  EXPECT_TRUE(colourProfile(bytes(png(""))).empty());
}

TEST(ColourProfile, isNoneWhereItSaysSomethingElse) {
  EXPECT_TRUE(colourProfile(bytes(jpeg(piece(1, 1, std::string(200, 'x'))))).empty());
  EXPECT_TRUE(colourProfile(bytes(jpeg(piece(1, 1, "short")))).empty());
  EXPECT_TRUE(colourProfile(bytes(jpeg(piece(1, 1, profile(400).substr(0, 300))))).empty());
}

TEST(ColourProfile, isNoneOrWholeWhereverTheFileIsCutShort) {
  const std::string whole = profile();
  for (const std::string& file :
       {jpeg(piece(1, 1, whole)), png(chunk("iCCP", "a\0\0"s + packed(whole))),
        tiff("II*\0"s, littleEndian), tiff("MM\0*"s, bigEndian)}) {
    for (std::size_t length = 0; length < file.size(); ++length) {
      const Bytes found = colourProfile(bytes(file.substr(0, length)));
      EXPECT_TRUE(found.empty() || found == bytes(whole)) << length;
    }
  }
}

TEST(ColoursOf, saysWhatTheNumbersStandFor) {
  EXPECT_EQ(coloursOf(bytes(profile())), ProfileColours::rgb);
  EXPECT_EQ(coloursOf(bytes(profile(200, "GRAY"))), ProfileColours::grey);
  EXPECT_EQ(coloursOf(bytes(profile(200, "CMYK"))), ProfileColours::other);
}

Bytes encoded() {
  Bytes file;
  cv::imencode(".jpg", cv::Mat(8, 8, CV_8UC3, cv::Scalar(10, 20, 30)), file);
  return file;
}

TEST(WithColourProfile, isReadBack) {
  for (const std::size_t size : {200U, 65519U, 65520U, 200000U}) {
    const Bytes file = withColourProfile(encoded(), bytes(profile(size)));
    EXPECT_EQ(colourProfile(file), bytes(profile(size))) << size;
    EXPECT_EQ(cv::imdecode(file, cv::IMREAD_COLOR).size(), cv::Size(8, 8)) << size;
  }
}

TEST(WithColourProfile, keepsTheFileWhereThereIsNone) {
  EXPECT_EQ(withColourProfile(encoded(), {}), encoded());
}

TEST(WithColourProfile, leavesTheFirstSegmentFirst) {
  const Bytes file = withColourProfile(encoded(), bytes(profile()));
  EXPECT_EQ(std::string(file.begin() + 6, file.begin() + 10), "JFIF");
}

TEST(WithColourProfile, refusesWhatNoJpegFileHolds) {
  EXPECT_THROW(withColourProfile(encoded(), Bytes(255 * 65519 + 1)), std::runtime_error);
}

} // namespace
} // namespace qorfaces
