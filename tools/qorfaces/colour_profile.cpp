#include "colour_profile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <zlib.h>

namespace qorfaces {

namespace {

enum class Order { bigEndian, littleEndian };

/// Part of a file. What lies outside of it reads as nothing.
class Part {
public:
  explicit Part(const Bytes& file) : Part(file.data(), file.size()) {}

  std::size_t size() const { return size_; }
  const unsigned char* begin() const { return data_; }
  const unsigned char* end() const { return data_ + size_; }

  bool startsWith(std::string_view text) const {
    return size_ >= text.size() && std::memcmp(data_, text.data(), text.size()) == 0;
  }
  /// From a place on; empty where that is outside.
  Part from(std::size_t place) const {
    return place < size_ ? Part(data_ + place, size_ - place) : Part(data_, 0);
  }
  /// The first bytes; empty where there are not so many.
  Part first(std::size_t count) const { return Part(data_, count <= size_ ? count : 0); }
  /// The number in `bytes` bytes at a place; 0 where that is outside.
  std::uint32_t number(std::size_t place, std::size_t bytes, Order order) const {
    std::uint32_t value = 0;
    const Part digits = from(place).first(bytes);
    for (std::size_t i = 0; i < digits.size_; ++i) {
      value = value << 8U | digits.data_[order == Order::bigEndian ? i : digits.size_ - 1 - i];
    }
    return value;
  }

private:
  Part(const unsigned char* data, std::size_t size) : data_(data), size_(size) {}

  const unsigned char* data_;
  std::size_t size_;
};

constexpr std::string_view kJpegStart("\xFF\xD8", 2);
constexpr std::string_view kJpegProfile("ICC_PROFILE\0", 12);
constexpr std::size_t kJpegProfileHead = kJpegProfile.size() + 2; // and its number, and how many
constexpr std::size_t kLongestSegment = 65533;                    // without the two of its length
constexpr std::size_t kProfilePerSegment = kLongestSegment - kJpegProfileHead;
constexpr unsigned kApp0 = 0xE0;
constexpr unsigned kApp2 = 0xE2;
constexpr unsigned kStartOfScan = 0xDA;
constexpr unsigned kEndOfImage = 0xD9;

constexpr std::size_t kLongestProfile = 16U
                                        << 20U; // of display profiles; real ones are far shorter

Bytes profileOfJpeg(const Part& file) {
  std::map<unsigned, Part> pieces; // by number, from 1
  unsigned count = 0;
  std::size_t place = kJpegStart.size();
  while (file.from(place).size() >= 4 && *file.from(place).begin() == 0xFF) {
    const unsigned marker = file.number(place + 1, 1, Order::bigEndian);
    if (marker == 0xFF) { // a filler
      ++place;
      continue;
    }
    if (marker == kStartOfScan || marker == kEndOfImage) {
      break;
    }
    const std::size_t length = file.number(place + 2, 2, Order::bigEndian);
    const Part content = file.from(place + 4).first(std::max<std::size_t>(length, 2) - 2);
    if (marker == kApp2 && content.startsWith(kJpegProfile) && content.size() >= kJpegProfileHead) {
      count = content.number(kJpegProfile.size() + 1, 1, Order::bigEndian);
      pieces.emplace(content.number(kJpegProfile.size(), 1, Order::bigEndian),
                     content.from(kJpegProfileHead));
    }
    place += 2 + std::max<std::size_t>(length, 2);
  }
  Bytes profile;
  for (unsigned number = 1; number <= count; ++number) {
    const auto piece = pieces.find(number);
    if (piece == pieces.end()) {
      return {};
    }
    profile.insert(profile.end(), piece->second.begin(), piece->second.end());
  }
  return profile;
}

Bytes inflated(const Part& packed) {
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) {
    return {};
  }
  stream.next_in = const_cast<unsigned char*>(packed.begin()); // zlib's C declares no const
  stream.avail_in = static_cast<uInt>(packed.size());
  Bytes result;
  int state = Z_OK;
  while (state == Z_OK && result.size() < kLongestProfile) {
    std::array<unsigned char, 16384> block;
    stream.next_out = block.data();
    stream.avail_out = static_cast<uInt>(block.size());
    state = inflate(&stream, Z_NO_FLUSH);
    result.insert(result.end(), block.data(), stream.next_out);
  }
  inflateEnd(&stream);
  return state == Z_STREAM_END ? result : Bytes();
}

constexpr std::string_view kPngStart("\x89PNG\r\n\x1A\n", 8);

Bytes profileOfPng(const Part& file) {
  constexpr std::size_t around = 12; // length, name and checksum of a chunk
  std::size_t place = kPngStart.size();
  while (file.from(place).size() >= around) {
    const std::size_t length = file.number(place, 4, Order::bigEndian);
    const Part chunk = file.from(place + 4);
    if (chunk.startsWith("IDAT")) {
      break;
    }
    if (chunk.startsWith("iCCP")) {
      const Part content = chunk.from(4).first(length);
      const auto* const nameEnd = std::find(content.begin(), content.end(), 0);
      const auto packed = static_cast<std::size_t>(nameEnd - content.begin()) + 2; // and the method
      return inflated(content.from(packed));
    }
    place += around + length;
  }
  return {};
}

Bytes profileOfWebp(const Part& file) {
  constexpr std::size_t head = 8; // name and length of a chunk
  std::size_t place = 12;
  while (file.from(place).size() >= head) {
    const std::size_t length = file.number(place + 4, 4, Order::littleEndian);
    if (file.from(place).startsWith("ICCP")) {
      const Part content = file.from(place + head).first(length);
      return {content.begin(), content.end()};
    }
    place += head + length + length % 2;
  }
  return {};
}

Bytes profileOfTiff(const Part& file, Order order) {
  constexpr unsigned profileTag = 34675;
  constexpr std::size_t entrySize = 12;
  const Part directory = file.from(file.number(4, 4, order));
  const unsigned count = directory.number(0, 2, order);
  for (unsigned i = 0; i < count; ++i) {
    const Part entry = directory.from(2 + i * entrySize);
    if (entry.number(0, 2, order) == profileTag) {
      const Part content = file.from(entry.number(8, 4, order)).first(entry.number(4, 4, order));
      return {content.begin(), content.end()};
    }
  }
  return {};
}

Bytes profileOf(const Part& file) {
  if (file.startsWith(kJpegStart)) {
    return profileOfJpeg(file);
  }
  if (file.startsWith(kPngStart)) {
    return profileOfPng(file);
  }
  if (file.startsWith("RIFF") && file.from(8).startsWith("WEBP")) {
    return profileOfWebp(file);
  }
  if (file.startsWith(std::string_view("II*\0", 4))) {
    return profileOfTiff(file, Order::littleEndian);
  }
  if (file.startsWith(std::string_view("MM\0*", 4))) {
    return profileOfTiff(file, Order::bigEndian);
  }
  return {};
}

// A profile begins with its own length, and has its signature at byte 36.
bool isWhole(const Bytes& profile) {
  constexpr std::size_t head = 128;
  const Part part(profile);
  return part.size() >= head && part.size() <= kLongestProfile &&
         part.number(0, 4, Order::bigEndian) <= part.size() && part.from(36).startsWith("acsp");
}

} // namespace

Bytes colourProfile(const Bytes& file) {
  Bytes profile = profileOf(Part(file));
  return isWhole(profile) ? profile : Bytes();
}

ProfileColours coloursOf(const Bytes& profile) {
  const Part space = Part(profile).from(16);
  return space.startsWith("RGB ")   ? ProfileColours::rgb
         : space.startsWith("GRAY") ? ProfileColours::grey
                                    : ProfileColours::other;
}

Bytes withColourProfile(const Bytes& jpeg, const Bytes& profile) {
  const std::size_t count = (profile.size() + kProfilePerSegment - 1) / kProfilePerSegment;
  if (count > 255) {
    throw std::runtime_error("the colour profile is too long for a JPEG file");
  }
  const Part file(jpeg);
  std::size_t place = kJpegStart.size();
  // JFIF wants its own segment first.
  if (file.number(place + 1, 1, Order::bigEndian) == kApp0) {
    place += 2 + file.number(place + 2, 2, Order::bigEndian);
  }
  Bytes result(file.begin(), file.begin() + place);
  for (std::size_t i = 0; i < count; ++i) {
    const Part piece = Part(profile).from(i * kProfilePerSegment);
    const std::size_t length = std::min(piece.size(), kProfilePerSegment);
    const std::size_t segment = 2 + kJpegProfileHead + length;
    result.insert(result.end(), {0xFF, static_cast<unsigned char>(kApp2),
                                 static_cast<unsigned char>(segment >> 8U),
                                 static_cast<unsigned char>(segment & 0xFFU)});
    result.insert(result.end(), kJpegProfile.begin(), kJpegProfile.end());
    result.push_back(static_cast<unsigned char>(i + 1));
    result.push_back(static_cast<unsigned char>(count));
    result.insert(result.end(), piece.begin(), piece.begin() + length);
  }
  result.insert(result.end(), file.begin() + place, file.end());
  return result;
}

} // namespace qorfaces
