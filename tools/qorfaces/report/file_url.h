// Addresses of files for web browsers.
#pragma once

#include <string>

namespace qorfaces {

/// A path in bytes, with / between folders, as a part of an address: what is not a letter, a digit
/// or one of -._~/ becomes % and two hexadecimal digits.
std::string urlPath(const std::string& path);

/// The address of a file. `path` is absolute: /photos/a.jpg, C:/photos/a.jpg or //server/photos/a.jpg.
std::string fileUrl(const std::string& path);

} // namespace qorfaces
