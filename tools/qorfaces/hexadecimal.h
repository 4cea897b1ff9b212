// Bytes that need not be text, as text.
#pragma once

#include <string>

namespace qorfaces {

/// Two digits a byte.
std::string inHexadecimal(const std::string& bytes);

/// Throws std::exception for what inHexadecimal has not written.
std::string fromHexadecimal(const std::string& digits);

} // namespace qorfaces
