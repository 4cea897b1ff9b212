// Damaged forms of a model's file: bits turned over, parts lost, repeated or exchanged.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace qorocv::testing {

class ModelMutations {
public:
  explicit ModelMutations(std::string good) : good_(std::move(good)) {
    std::size_t letters = 0;
    for (std::size_t i = 0; i < good_.size(); ++i) {
      const auto c = static_cast<unsigned char>(good_[i]);
      letters = std::isalpha(c) != 0 || c == '_' ? letters + 1 : 0;
      const bool afterSpace = i > 0 && (good_[i - 1] == ' ' || good_[i - 1] == '\n');
      if (std::isdigit(c) != 0 && afterSpace) {
        numbers_.push_back(i);
      }
      if (letters == kWord) {
        words_.push_back(i);
      }
    }
  }

  /// The damage of this number, always the same.
  std::string damaged(std::uint32_t number) const {
    std::mt19937 random(number);
    std::string bytes = good_;
    const auto kind = random() % 10;
    if (kind < 3) { // a bit
      flip(bytes, place(random), random);
    } else if (kind == 3) { // several
      for (auto flips = 2 + random() % 15; flips > 0; --flips) {
        flip(bytes, place(random), random);
      }
    } else if (kind == 4) { // another byte, in a number often one of another size
      static const std::string kBytes("\0\1\2\x7f\x80\xff-09.", 10);
      const auto which = random() % 16;
      bytes[place(random)] =
          which < kBytes.size() ? kBytes[which] : static_cast<char>(random() % 256);
    } else if (kind == 5) { // the end is gone
      bytes.resize(random() % 2 == 0 ? place(random) : bytes.size() - 1 - random() % 64);
    } else if (kind == 6) { // two parts changed places
      const std::size_t length = std::min<std::size_t>(1 + random() % 64, bytes.size() / 2);
      const std::size_t first = std::min(place(random), bytes.size() - length);
      const std::size_t second = std::min(place(random), bytes.size() - length);
      const std::string part = bytes.substr(first, length);
      bytes.replace(first, length, bytes, second, length);
      bytes.replace(second, length, part);
    } else if (kind == 7 && !numbers_.empty()) { // another number where one stands in letters
      static const char* const kNumbers[] = {"0",    "1",     "-1",         "2",          "7",
                                             "1000", "65536", "2147483647", "4294967295", "1e30"};
      const std::size_t first = numbers_[random() % numbers_.size()];
      const std::size_t end = bytes.find_first_not_of("0123456789", first);
      bytes.replace(first, end - first, kNumbers[random() % std::size(kNumbers)]);
    } else if (kind == 8) { // lines changed places
      const auto [first, length] = line(random);
      const auto [second, otherLength] = line(random);
      const std::string part = bytes.substr(first, length);
      const std::string other = bytes.substr(second, otherLength);
      bytes.replace(std::max(first, second), first > second ? length : otherLength,
                    first > second ? other : part);
      bytes.replace(std::min(first, second), first > second ? otherLength : length,
                    first > second ? part : other);
    } else { // a part is missing or there twice, in every other file a line
      const bool isLine = random() % 2 == 0;
      const auto [first, length] =
          isLine ? line(random) : std::pair(place(random), std::size_t{1 + random() % 64});
      const std::string part = bytes.substr(first, length);
      if (random() % 2 == 0) {
        bytes.erase(first, part.size());
      } else {
        bytes.insert(first, part);
      }
    }
    return bytes;
  }

private:
  static constexpr std::size_t kWord = 4; // letters that seldom stand together by chance

  static void flip(std::string& bytes, std::size_t at, std::mt19937& random) {
    bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ (1U << (random() % 8)));
  }

  /// Anywhere, or near a name: most of a network is weights, which may be anything.
  std::size_t place(std::mt19937& random) const {
    if (random() % 4 == 0 || words_.empty()) {
      return random() % good_.size();
    }
    const std::size_t word = words_[random() % words_.size()];
    const std::size_t at = word + random() % 96;
    return std::min(at < 32 ? at : at - 32, good_.size() - 1);
  }

  /// Begin and length of a line, or of what lies between two bytes that end lines in text.
  std::pair<std::size_t, std::size_t> line(std::mt19937& random) const {
    const std::size_t at = place(random);
    const std::size_t before = at == 0 ? std::string::npos : good_.rfind('\n', at - 1);
    const std::size_t first = before == std::string::npos ? 0 : before + 1;
    const std::size_t end = good_.find('\n', at);
    return {first, end == std::string::npos ? good_.size() - first : end + 1 - first};
  }

  std::string good_;
  std::vector<std::size_t> words_;   // where each is
  std::vector<std::size_t> numbers_; // the same, of those in letters
};

} // namespace qorocv::testing
