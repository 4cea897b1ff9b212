// The digests by which files are known.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qorfaces {

/// SHA-256 of bytes, 64 hexadecimal digits in lower case.
std::string sha256(std::string_view bytes);

/// SHA-1 of bytes, 40 digits. Some published files are known by nothing else.
std::string sha1(std::string_view bytes);

} // namespace qorfaces
