#include "hexadecimal.h"

#include <stdexcept>
#include <string_view>

namespace qorfaces {

namespace {

constexpr std::string_view kDigits = "0123456789abcdef";

} // namespace

std::string inHexadecimal(const std::string& bytes) {
  std::string hexadecimal;
  for (const char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    hexadecimal += kDigits[byte / 16];
    hexadecimal += kDigits[byte % 16];
  }
  return hexadecimal;
}

std::string fromHexadecimal(const std::string& digits) {
  if (digits.size() % 2 != 0 || digits.find_first_not_of(kDigits) != std::string::npos) {
    throw std::runtime_error("no bytes in hexadecimal: " + digits);
  }
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    bytes += static_cast<char>(kDigits.find(digits[i]) * 16 + kDigits.find(digits[i + 1]));
  }
  return bytes;
}

} // namespace qorfaces
