#include "arithmetic/base64.h"

#include <gtest/gtest.h>

#include <string>

namespace qorocv {
namespace {

/// The bytes; "refused" where the text stands for none.
std::string decoded(const std::string& text, std::size_t size) {
  std::string bytes(size, '?');
  const bool isDecoded = decodeBase64(text, reinterpret_cast<std::uint8_t*>(bytes.data()), size);
  return isDecoded ? bytes : "refused";
}

TEST(Base64, hasFourCharactersForThreeBytes) {
  EXPECT_EQ(base64Length(0), 0U);
  EXPECT_EQ(base64Length(1), 4U);
  EXPECT_EQ(base64Length(3), 4U);
  EXPECT_EQ(base64Length(4), 8U);
}

TEST(Base64, decodesTheVectorsOfItsStandard) {
  EXPECT_EQ(decoded("", 0), "");
  EXPECT_EQ(decoded("Zg==", 1), "f");
  EXPECT_EQ(decoded("Zm8=", 2), "fo");
  EXPECT_EQ(decoded("Zm9v", 3), "foo");
  EXPECT_EQ(decoded("Zm9vYg==", 4), "foob");
  EXPECT_EQ(decoded("Zm9vYmE=", 5), "fooba");
  EXPECT_EQ(decoded("Zm9vYmFy", 6), "foobar");
}

TEST(Base64, decodesTheWholeAlphabet) {
  std::string text;
  std::string bytes;
  for (unsigned first = 0; first < 64; first += 4) {
    constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    text.append(alphabet + first, 4);
    const unsigned bits = first << 18U | (first + 1) << 12U | (first + 2) << 6U | (first + 3);
    for (const unsigned shift : {16U, 8U, 0U}) {
      bytes += static_cast<char>(bits >> shift & 0xFFU);
    }
  }
  EXPECT_EQ(decoded(text, bytes.size()), bytes);
}

TEST(Base64, refusesEveryOtherCharacter) {
  for (int c = 0; c < 256; ++c) {
    const auto character = static_cast<char>(c);
    const bool isDigit = std::isalnum(c) != 0 || character == '+' || character == '/';
    std::string text = "Zm9vYmFy";
    text[5] = character;
    EXPECT_EQ(decoded(text, 6) != "refused", isDigit) << c;
  }
}

TEST(Base64, refusesPaddingInPlaceOfDigits) {
  EXPECT_EQ(decoded("Zm9v=m9v", 6), "refused");
  EXPECT_EQ(decoded("Zm8=", 3), "refused");
}

TEST(Base64, refusesDigitsInPlaceOfPadding) {
  EXPECT_EQ(decoded("Zm8A", 2), "refused");
  EXPECT_EQ(decoded("ZgA=", 1), "refused");
  EXPECT_EQ(decoded("Zg=A", 1), "refused");
}

} // namespace
} // namespace qorocv
