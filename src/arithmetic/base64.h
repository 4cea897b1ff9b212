// Base64 (RFC 4648, section 4).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qorocv {

/// How many characters stand for `bytes` bytes, padding included.
constexpr std::size_t base64Length(std::size_t bytes) {
  return (bytes + 2) / 3 * 4;
}

/// Decodes `text`, which has base64Length(size) characters, to the `size` bytes at `bytes`. False,
/// with any bytes, where a character does not belong there.
bool decodeBase64(std::string_view text, std::uint8_t* bytes, std::size_t size);

} // namespace qorocv
