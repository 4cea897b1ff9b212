// The numbers that a fuzzer's bytes stand for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

namespace qorocv::fuzzing {

class FuzzInput {
public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  /// The next number, of any value that its type has; zeros where the bytes end.
  template <typename Number> Number take() {
    Number number{};
    const std::size_t taken = std::min(sizeof number, size_);
    std::memcpy(&number, data_, taken);
    data_ += taken;
    size_ -= taken;
    return number;
  }

  /// A number of `first` to `last`, from one byte.
  int takeFrom(int first, int last) { return first + take<std::uint8_t>() % (last - first + 1); }

  /// What is left, as text.
  std::string rest() const { return {reinterpret_cast<const char*>(data_), size_}; }

private:
  const std::uint8_t* data_;
  std::size_t size_;
};

/// Changes a byte, takes some out or doubles some, as often as the input says.
inline std::string edited(std::string content, FuzzInput& input) {
  for (int edits = input.takeFrom(1, 8); edits > 0 && !content.empty(); --edits) {
    const std::size_t at = input.take<std::uint32_t>() % content.size();
    const std::size_t length = input.take<std::uint8_t>();
    switch (input.takeFrom(0, 2)) {
    case 0:
      content[at] = input.take<char>();
      break;
    case 1:
      content.erase(at, length);
      break;
    default:
      content.insert(at, content.substr(at, length));
      break;
    }
  }
  return content;
}

/// Ends the process where a promise is not kept.
inline void require(bool kept, const char* promise) {
  if (!kept) {
    std::cerr << "not kept: " << promise << std::endl;
    std::abort();
  }
}

} // namespace qorocv::fuzzing

/// What a fuzzer calls with every input; gives 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
