#include "protobuf_writer.h"

#include <cstring>

namespace qorocv::testing {
namespace {

enum class WireType : std::uint32_t { Varint = 0, LengthDelimited = 2, Fixed32 = 5 };

std::string varint(std::uint64_t value) {
  std::string bytes;
  while (value >= 0x80U) {
    bytes.push_back(static_cast<char>((value & 0x7FU) | 0x80U));
    value >>= 7U;
  }
  bytes.push_back(static_cast<char>(value));
  return bytes;
}

std::string key(std::uint32_t field, WireType type) {
  return varint((std::uint64_t{field} << 3U) | static_cast<std::uint32_t>(type));
}

std::string fixed32(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  std::string bytes;
  for (unsigned shift = 0; shift < 32U; shift += 8U) {
    bytes.push_back(static_cast<char>((bits >> shift) & 0xFFU));
  }
  return bytes;
}

} // namespace

ProtobufWriter& ProtobufWriter::integer(std::uint32_t field, std::uint64_t value) {
  encoded += key(field, WireType::Varint) + varint(value);
  return *this;
}

ProtobufWriter& ProtobufWriter::number(std::uint32_t field, float value) {
  encoded += key(field, WireType::Fixed32) + fixed32(value);
  return *this;
}

ProtobufWriter& ProtobufWriter::text(std::uint32_t field, std::string_view value) {
  encoded += key(field, WireType::LengthDelimited) + varint(value.size());
  encoded += value;
  return *this;
}

ProtobufWriter& ProtobufWriter::message(std::uint32_t field, const ProtobufWriter& value) {
  return text(field, value.encoded);
}

ProtobufWriter& ProtobufWriter::packedIntegers(std::uint32_t field,
                                               const std::vector<std::uint64_t>& values) {
  std::string packed;
  for (const std::uint64_t value : values) {
    packed += varint(value);
  }
  return text(field, packed);
}

ProtobufWriter& ProtobufWriter::packedNumbers(std::uint32_t field,
                                              const std::vector<float>& values) {
  std::string packed;
  for (const float value : values) {
    packed += fixed32(value);
  }
  return text(field, packed);
}

} // namespace qorocv::testing
