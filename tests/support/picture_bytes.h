// Picture files put together byte by byte.
#pragma once

#include <opencv2/imgcodecs.hpp>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

namespace qorocv::testing {

using Bytes = std::vector<uchar>;

inline Bytes encoded(const std::string& extension, const cv::Mat& picture,
                     const std::vector<int>& parameters = {}) {
  Bytes bytes;
  cv::imencode(extension, picture, bytes, parameters);
  return bytes;
}

/// A number in bytes, the highest first or last.
inline Bytes bigEndian(std::uint32_t value, int size) {
  Bytes bytes;
  for (int i = size - 1; i >= 0; --i) {
    bytes.push_back(static_cast<uchar>(value >> (8 * i)));
  }
  return bytes;
}
inline Bytes littleEndian(std::uint32_t value, int size) {
  const Bytes bytes = bigEndian(value, size);
  return {bytes.rbegin(), bytes.rend()};
}

inline Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes whole;
  for (const Bytes& part : parts) {
    whole.insert(whole.end(), part.begin(), part.end());
  }
  return whole;
}
inline Bytes text(const std::string& letters) {
  return {letters.begin(), letters.end()};
}

inline void writeBytes(const std::filesystem::path& path, const Bytes& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

/// A JPEG with a marker of that kind before all others.
inline Bytes jpegWithMarker(const Bytes& jpeg, uchar marker, const Bytes& data) {
  return joined({{0xFF, 0xD8, 0xFF, marker},
                 bigEndian(static_cast<std::uint32_t>(data.size()) + 2, 2),
                 data,
                 {jpeg.begin() + 2, jpeg.end()}});
}
constexpr uchar kApp1 = 0xE1;

using NumberBytes = Bytes (*)(std::uint32_t value, int size);

/// Exif data with one entry, which says which way the camera was held.
inline Bytes exifWithOrientation(int orientation, NumberBytes number = littleEndian) {
  return joined({text("Exif"),
                 {0, 0},
                 text(number == littleEndian ? "II" : "MM"),
                 number(42, 2),
                 number(8, 4),
                 number(1, 2),
                 number(0x0112, 2),
                 number(3, 2),
                 number(1, 4),
                 number(static_cast<std::uint32_t>(orientation), 2),
                 {0, 0},
                 number(0, 4)});
}
inline Bytes jpegWithOrientation(const Bytes& jpeg, int orientation) {
  return jpegWithMarker(jpeg, kApp1, exifWithOrientation(orientation));
}

/// The start of a JPEG: one quantisation table of ones, and a frame of this size and these many
/// components.
inline Bytes jpegStart(std::uint32_t width, std::uint32_t height, uchar components) {
  Bytes frame = joined({{0xFF, 0xC0},
                        bigEndian(8U + 3U * components, 2),
                        {8},
                        bigEndian(height, 2),
                        bigEndian(width, 2),
                        {components}});
  for (uchar i = 1; i <= components; ++i) {
    frame.insert(frame.end(), {i, 0x11, 0});
  }
  return joined({{0xFF, 0xD8, 0xFF, 0xDB, 0, 67, 0}, Bytes(64, 1), frame});
}

/// A JPEG of 8 x 8 pixels in four components (CMYK), every value in its middle. Its tables hold one
/// code each: no difference, and end of block.
inline Bytes cmykJpeg() {
  const Bytes oneCode = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  return joined({jpegStart(8, 8, 4),
                 {0xFF, 0xC4, 0, 20, 0x00},
                 oneCode,
                 {0xFF, 0xC4, 0, 20, 0x10},
                 oneCode,
                 {0xFF, 0xDA, 0, 14, 4, 1, 0, 2, 0, 3, 0, 4, 0, 0, 63, 0},
                 {0x00, 0xFF, 0xD9}});
}

} // namespace qorocv::testing
