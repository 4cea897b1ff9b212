// Bytes that need not be text, as text.
#pragma once

#include <string>

namespace qorfaces {

/// Two digits a byte, in lower case.
std::string inHexadecimal(const std::string& bytes);

/// The bytes again. Throws std::runtime_error, which names the text, for what inHexadecimal has not
/// written.
std::string fromHexadecimal(const std::string& digits);

} // namespace qorfaces
