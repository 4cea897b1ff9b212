#include "networks/network_file.h"

#include <opencv2/core.hpp>

#include <fstream>
#include <iterator>
#include <limits>

namespace qorocv::networks {

std::optional<std::string> contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file.good()) {
    return std::nullopt;
  }
  return std::string(std::istreambuf_iterator<char>(file), {});
}

void refuse(const std::string& path, const std::string& what) {
  CV_Error(cv::Error::StsParseError, path + ": " + what);
}

std::size_t volume(const std::vector<std::int64_t>& sizes, const std::string& of) {
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  std::int64_t numbers = 1;
  for (const std::int64_t size : sizes) {
    if (size < 0 || size > most || (numbers *= size) > most) {
      throw BadMessage(of + " has impossible sizes");
    }
  }
  return static_cast<std::size_t>(numbers);
}

void checkBytes(std::size_t bytes, std::size_t each, std::size_t numbers, const std::string& of) {
  if (bytes != numbers * each) {
    throw BadMessage(of + " has " + std::to_string(bytes) + " bytes instead of " +
                     std::to_string(numbers * each));
  }
}

} // namespace qorocv::networks
