#include "hexadecimal.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace qorfaces {
namespace {

TEST(Hexadecimal, hasTwoDigitsForEachByte) {
  EXPECT_EQ(inHexadecimal(std::string("\x00\x0a\x7f\x80\xff", 5)), "000a7f80ff");
}

TEST(Hexadecimal, givesTheBytesBack) {
  EXPECT_EQ(fromHexadecimal("000a7f80ff"), std::string("\x00\x0a\x7f\x80\xff", 5));
  EXPECT_EQ(fromHexadecimal(""), "");
}

TEST(Hexadecimal, refusesWhatItHasNotWritten) {
  for (const char* const digits : {"0", "0a7", "0g", "g0", " 1", "+1", "-1", "0x", "0A", "61 62"}) {
    EXPECT_THROW(fromHexadecimal(digits), std::runtime_error) << digits;
  }
}

} // namespace
} // namespace qorfaces
