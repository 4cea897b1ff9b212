// Addresses of files for web browsers.
#pragma once

#include <optional>
#include <string>

namespace qorfaces {

/// A path in bytes, with / between folders, as a part of an address: what is not a letter, a digit
/// or one of -._~/ becomes % and two hexadecimal digits.
std::string urlPath(const std::string& path);

/// The address of a file on this machine, absolute: /photos/a.jpg or C:/photos/a.jpg. Nothing of any
/// other path, such as //server/photos/a.jpg: a browser that followed it would tell the server who
/// asks.
std::optional<std::string> fileUrl(const std::string& path);

} // namespace qorfaces
