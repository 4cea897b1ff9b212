#include "report/file_url.h"

#include <filesystem>

namespace qorfaces {

namespace {

bool isPlain(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= '0' && letter <= '9') || letter == '-' || letter == '.' || letter == '_' ||
         letter == '~' || letter == '/';
}

bool beginsWithDrive(const std::string& path) {
  return path.size() >= 2 && path[1] == ':' &&
         ((path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z'));
}

// As scans write them. Browsers leave dots out, and may take what is left for a server's name.
bool isInNormalForm(const std::string& path) {
  const bool isGeneric = std::filesystem::u8path(path).generic_u8string() == path;
  const std::string folders = path + "/";
  return isGeneric && path.front() == '/' && folders.find("//") == std::string::npos &&
         folders.find("/./") == std::string::npos && folders.find("/../") == std::string::npos;
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

std::optional<std::string> fileUrl(const std::string& path) {
  const std::string drive = beginsWithDrive(path) ? path.substr(0, 2) : "";
  const std::string rest = path.substr(drive.size());
  if (rest.empty() || !isInNormalForm(rest)) {
    return std::nullopt;
  }
  return "file://" + (drive.empty() ? "" : "/" + drive) + urlPath(rest);
}

} // namespace qorfaces
