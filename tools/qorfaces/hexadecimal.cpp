#include "hexadecimal.h"

namespace qorfaces {

std::string inHexadecimal(const std::string& bytes) {
  constexpr const char* digits = "0123456789abcdef";
  std::string hexadecimal;
  for (const char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    hexadecimal += digits[byte / 16];
    hexadecimal += digits[byte % 16];
  }
  return hexadecimal;
}

std::string fromHexadecimal(const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

} // namespace qorfaces
