#include "arithmetic/base64.h"

#include <array>

namespace qorocv {

namespace {

/// Set in what stands for a character that is no digit.
constexpr std::uint32_t kNoDigit = 1U << 31;

/// What a character adds to the 24 bits of a group of four, in one of its places.
using Digits = std::array<std::uint32_t, 256>;

constexpr std::array<Digits, 4> makeDigits() {
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<Digits, 4> digits{};
  for (std::size_t place = 0; place < 4; ++place) {
    for (auto& digit : digits[place]) {
      digit = kNoDigit;
    }
    for (std::uint32_t value = 0; value < 64; ++value) {
      digits[place][static_cast<std::uint8_t>(kAlphabet[value])] = value << (18 - 6 * place);
    }
  }
  return digits;
}

constexpr std::array<Digits, 4> kDigits = makeDigits();

/// The 24 bits of four characters, and kNoDigit where they are not all digits.
std::uint32_t group(const char* text) {
  const auto digit = [text](std::size_t place) {
    return kDigits[place][static_cast<std::uint8_t>(text[place])];
  };
  return digit(0) | digit(1) | digit(2) | digit(3);
}

} // namespace

bool decodeBase64(std::string_view text, std::uint8_t* bytes, std::size_t size) {
  std::uint32_t all = 0;
  const char* next = text.data();
  const std::size_t wholeGroups = size / 3;
  for (std::size_t i = 0; i < wholeGroups; ++i, next += 4, bytes += 3) {
    const std::uint32_t bits = group(next);
    all |= bits;
    bytes[0] = static_cast<std::uint8_t>(bits >> 16);
    bytes[1] = static_cast<std::uint8_t>(bits >> 8);
    bytes[2] = static_cast<std::uint8_t>(bits);
  }
  const std::size_t rest = size % 3;
  if (rest > 0) {
    const char last[] = {next[0], next[1], rest == 2 ? next[2] : 'A', 'A'};
    const std::uint32_t bits = group(last);
    all |= bits;
    bytes[0] = static_cast<std::uint8_t>(bits >> 16);
    if (rest == 2) {
      bytes[1] = static_cast<std::uint8_t>(bits >> 8);
    }
    const bool isPadded = next[3] == '=' && (rest == 2 || next[2] == '=');
    all |= isPadded ? 0U : kNoDigit;
  }
  return (all & kNoDigit) == 0;
}

} // namespace qorocv
