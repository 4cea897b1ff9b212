#include "digest.h"

#include <array>
#include <cstdint>

namespace qorfaces {

namespace {

// As FIPS 180-4 names and writes them: both digests take blocks of 16 words, big-endian, and turn
// a state of words over with each.

constexpr std::size_t kBlock = 64; // bytes
constexpr std::size_t kLength = 8; // of the message in bits, at the end of its last block

using Block = std::array<std::uint32_t, 16>;

std::uint32_t turnedLeft(std::uint32_t word, unsigned bits) {
  return (word << bits) | (word >> (32U - bits));
}

std::uint32_t turnedRight(std::uint32_t word, unsigned bits) {
  return turnedLeft(word, 32U - bits);
}

Block wordsOf(std::string_view bytes) {
  Block words{};
  for (std::size_t i = 0; i < kBlock; ++i) {
    words[i / 4] = (words[i / 4] << 8U) | static_cast<unsigned char>(bytes[i]);
  }
  return words;
}

struct Sha256 {
  std::array<std::uint32_t, 8> state{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                     0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  void add(const Block& block);
};

constexpr std::array<std::uint32_t, 64> kSha256Words{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

void Sha256::add(const Block& block) {
  std::array<std::uint32_t, 64> w{};
  for (std::size_t t = 0; t < w.size(); ++t) {
    if (t < block.size()) {
      w[t] = block[t];
      continue;
    }
    const std::uint32_t early = w[t - 15];
    const std::uint32_t late = w[t - 2];
    w[t] = w[t - 16] + (turnedRight(early, 7) ^ turnedRight(early, 18) ^ (early >> 3U)) + w[t - 7] +
           (turnedRight(late, 17) ^ turnedRight(late, 19) ^ (late >> 10U));
  }
  auto [a, b, c, d, e, f, g, h] = state;
  for (std::size_t t = 0; t < w.size(); ++t) {
    const std::uint32_t first = h + (turnedRight(e, 6) ^ turnedRight(e, 11) ^ turnedRight(e, 25)) +
                                ((e & f) ^ (~e & g)) + kSha256Words[t] + w[t];
    const std::uint32_t second = (turnedRight(a, 2) ^ turnedRight(a, 13) ^ turnedRight(a, 22)) +
                                 ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const std::array<std::uint32_t, 8> sums{a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < sums.size(); ++i) {
    state[i] += sums[i];
  }
}

struct Sha1 {
  std::array<std::uint32_t, 5> state{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
  void add(const Block& block);
};

void Sha1::add(const Block& block) {
  std::array<std::uint32_t, 80> w{};
  for (std::size_t t = 0; t < w.size(); ++t) {
    w[t] = t < block.size() ? block[t] : turnedLeft(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
  }
  auto [a, b, c, d, e] = state;
  for (std::size_t t = 0; t < w.size(); ++t) {
    const std::uint32_t mixed = t < 20   ? ((b & c) ^ (~b & d)) + 0x5a827999U
                                : t < 40 ? (b ^ c ^ d) + 0x6ed9eba1U
                                : t < 60 ? ((b & c) ^ (b & d) ^ (c & d)) + 0x8f1bbcdcU
                                         : (b ^ c ^ d) + 0xca62c1d6U;
    const std::uint32_t next = turnedLeft(a, 5) + mixed + e + w[t];
    e = d;
    d = c;
    c = turnedLeft(b, 30);
    b = a;
    a = next;
  }
  const std::array<std::uint32_t, 5> sums{a, b, c, d, e};
  for (std::size_t i = 0; i < sums.size(); ++i) {
    state[i] += sums[i];
  }
}

template <class Hash> std::string digestOf(std::string_view bytes) {
  Hash hash;
  std::size_t done = 0;
  for (; bytes.size() - done >= kBlock; done += kBlock) {
    hash.add(wordsOf(bytes.substr(done, kBlock)));
  }
  // The rest, a bit of one, zeros, and the length.
  std::string rest(bytes.substr(done));
  rest += '\x80';
  rest.resize((rest.size() + kLength + kBlock - 1) / kBlock * kBlock - kLength, '\0');
  for (std::uint64_t length = std::uint64_t{bytes.size()} * 8, i = 0; i < kLength; ++i) {
    rest += static_cast<char>(static_cast<unsigned char>(length >> (56U - 8U * i)));
  }
  for (std::size_t i = 0; i < rest.size(); i += kBlock) {
    hash.add(wordsOf(std::string_view(rest).substr(i, kBlock)));
  }
  std::string digits;
  for (const std::uint32_t word : hash.state) {
    for (unsigned shift = 32; shift > 0; shift -= 4) {
      digits += "0123456789abcdef"[(word >> (shift - 4)) & 0xFU];
    }
  }
  return digits;
}

} // namespace

std::string sha256(std::string_view bytes) {
  return digestOf<Sha256>(bytes);
}

std::string sha1(std::string_view bytes) {
  return digestOf<Sha1>(bytes);
}

} // namespace qorfaces
