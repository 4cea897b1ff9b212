#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qorocv::testing {

// Builds one message in the protobuf wire format: the few field kinds that network files need.
// A nested message is a writer of its own, added with message(). Calls can be chained.
class ProtobufWriter {
public:
  ProtobufWriter& integer(std::uint32_t field, std::uint64_t value);
  ProtobufWriter& number(std::uint32_t field, float value);
  ProtobufWriter& text(std::uint32_t field, std::string_view value);
  ProtobufWriter& message(std::uint32_t field, const ProtobufWriter& value);
  ProtobufWriter& packedIntegers(std::uint32_t field, const std::vector<std::uint64_t>& values);
  ProtobufWriter& packedNumbers(std::uint32_t field, const std::vector<float>& values);

  // The encoded message so far.
  const std::string& bytes() const { return encoded; }

private:
  std::string encoded;
};

} // namespace qorocv::testing
