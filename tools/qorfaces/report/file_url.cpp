#include "report/file_url.h"

namespace qorfaces {

namespace {

bool isPlain(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= '0' && letter <= '9') || letter == '-' || letter == '.' || letter == '_' ||
         letter == '~' || letter == '/';
}

bool beginsWithDrive(const std::string& path) {
  return path.size() >= 2 && path[1] == ':';
}

} // namespace

std::string urlPath(const std::string& path) {
  constexpr const char* digits = "0123456789ABCDEF";
  std::string address;
  for (const char letter : path) {
    if (isPlain(letter)) {
      address += letter;
      continue;
    }
    const auto byte = static_cast<unsigned char>(letter);
    address += '%';
    address += digits[byte / 16U];
    address += digits[byte % 16U];
  }
  return address;
}

std::string fileUrl(const std::string& path) {
  if (beginsWithDrive(path)) {
    return "file:///" + path.substr(0, 2) + urlPath(path.substr(2));
  }
  // Of a server, its name is the address's host.
  return (path.rfind("//", 0) == 0 ? "file:" : "file://") + urlPath(path);
}

} // namespace qorfaces
