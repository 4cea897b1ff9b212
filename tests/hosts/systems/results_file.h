// What calls handed out, kept in a file for another program on another system.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace qorocv::testing {

struct CallResults {
  std::string call;
  std::uint64_t recordSize = 0;
  std::int64_t returned = 0;
  std::vector<double> records;
  std::vector<double> cropBox;
  std::vector<unsigned char> view;
  std::vector<unsigned char> mask;
  std::vector<unsigned char> cropMask;
};

/// Calls `part` with every part of the results that has a length, and `number` with the others.
template <typename Results, typename Part, typename Number>
void forEachPart(Results& results, const Part& part, const Number& number) {
  part(results.call);
  number(results.recordSize);
  number(results.returned);
  part(results.records);
  part(results.cropBox);
  part(results.view);
  part(results.mask);
  part(results.cropMask);
}

inline void writeResults(const std::string& path, const std::vector<CallResults>& all) {
  std::ofstream file(path, std::ios::binary);
  const auto number = [&](const auto& value) {
    file.write(reinterpret_cast<const char*>(&value), sizeof value);
  };
  const auto part = [&](const auto& values) {
    number(std::uint64_t{values.size()});
    file.write(reinterpret_cast<const char*>(values.data()),
               static_cast<std::streamsize>(values.size() * sizeof values[0]));
  };
  for (const CallResults& results : all) {
    forEachPart(results, part, number);
  }
}

inline std::vector<CallResults> readResults(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const auto number = [&](auto& value) {
    file.read(reinterpret_cast<char*>(&value), sizeof value);
  };
  const auto part = [&](auto& values) {
    std::uint64_t size = 0;
    number(size);
    values.resize(size);
    file.read(reinterpret_cast<char*>(values.data()),
              static_cast<std::streamsize>(size * sizeof values[0]));
  };
  std::vector<CallResults> all;
  while (file.peek() != std::ifstream::traits_type::eof()) {
    forEachPart(all.emplace_back(), part, number);
  }
  return all;
}

} // namespace qorocv::testing
