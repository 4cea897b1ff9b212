// With the examples of FIPS 180-4, and lengths around those of a block.
#include "digest.h"

#include <gtest/gtest.h>

#include <string>

namespace qorfaces {
namespace {

const std::string kTwoBlocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";

TEST(Digest, ofSha256IsThatOfItsExamples) {
  EXPECT_EQ(sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(sha256(kTwoBlocks), "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(sha256(std::string(1000000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Digest, ofSha1IsThatOfItsExamples) {
  EXPECT_EQ(sha1(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
  EXPECT_EQ(sha1("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_EQ(sha1(kTwoBlocks), "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
  EXPECT_EQ(sha1(std::string(1000000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST(Digest, isThatOfSha256sumAroundTheLengthOfABlock) {
  EXPECT_EQ(sha256(std::string(55, 'q')),
            "85528b5baff5639cb8e7daca79d085ac29ac0978e873ed7527158616b2b6c379");
  EXPECT_EQ(sha256(std::string(56, 'q')),
            "f8ce2f8d6990c639668fe404262f35ed72d8bb145ad6bae786af7284447386df");
  EXPECT_EQ(sha256(std::string(63, 'q')),
            "9b49777003a4143d8c3f4d3002eb631c6bda8b030a3ccc87f8a21d5f61c89e87");
  EXPECT_EQ(sha256(std::string(64, 'q')),
            "ee8e658590c9a5e119400a774415a01db104de1ee6e2c29ec69aa73ef46544d2");
  EXPECT_EQ(sha256(std::string(65, 'q')),
            "2b6c3f7f12b1b12fc5409626dc4e5302d8d37082cbeddea7755eac43aba039c8");
}

} // namespace
} // namespace qorfaces
