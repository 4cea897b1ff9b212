// What the checks of network files have in common.
#pragma once

#include "networks/protobuf_message.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qorocv::networks {

/// All bytes of a file. Nothing where it cannot be opened: OpenCV says so in its own way.
std::optional<std::string> contentOf(const std::string& path);

/// Throws cv::Exception, StsParseError, with the path and what is wrong.
[[noreturn]] void refuse(const std::string& path, const std::string& what);

/// Runs a check of a file; what is bad in it is refused with the path.
template <class Check> void ofFile(const std::string& path, const Check& check) {
  try {
    check();
  } catch (const BadMessage& bad) {
    refuse(path, bad.what());
  }
}

/// How many numbers a tensor of these sizes has; no dimensions stand for one. Throws BadMessage with
/// `of`, the tensor's name, for a negative size and for 2^31 numbers or more.
std::size_t volume(const std::vector<std::int64_t>& sizes, const std::string& of);

/// Throws BadMessage with `of` unless `bytes` hold `numbers` numbers of `each` bytes.
void checkBytes(std::size_t bytes, std::size_t each, std::size_t numbers, const std::string& of);

} // namespace qorocv::networks
