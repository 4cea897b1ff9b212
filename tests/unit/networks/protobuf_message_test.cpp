// Messages in bytes and in letters, whole and damaged.
#include "make_models/protobuf_writer.h"
#include "networks/protobuf_message.h"

#include <gtest/gtest.h>

namespace qorocv {
namespace {

using testing::ProtobufWriter;

const std::vector<ProtobufSchema> kInner{{1, "size", ProtobufKind::integers}};
const std::vector<ProtobufSchema> kOuter{{1, "name", ProtobufKind::text},
                                         {2, "sizes", ProtobufKind::integers},
                                         {3, "inner", ProtobufKind::message, &kInner},
                                         {4, "weights", ProtobufKind::floats}};

TEST(ProtobufMessage, inBytesHasTheFieldsThatAreAskedFor) {
  const std::string bytes = ProtobufWriter()
                                .text(1, "first")
                                .integer(2, 300)
                                .packedIntegers(2, {1, 2})
                                .message(3, ProtobufWriter().integer(1, 7))
                                .packedNumbers(4, {1.0F, 2.0F, 3.0F})
                                .number(4, 4.0F)
                                .text(9, "nobody asks")
                                .bytes();
  const ProtobufField message = readProtobuf(bytes, kOuter);
  EXPECT_EQ(message.textOf("name"), "first");
  EXPECT_EQ(message.numbersOf("sizes"), (std::vector<std::int64_t>{300, 1, 2}));
  ASSERT_NE(message.only("inner"), nullptr);
  EXPECT_EQ(message.only("inner")->numbersOf("size"), std::vector<std::int64_t>{7});
  EXPECT_EQ(message.countOf("weights"), 4U);
  EXPECT_EQ(message.only("nobody"), nullptr);
}

TEST(ProtobufMessage, inBytesIsRefusedWhereItEndsTooEarly) {
  const std::string bytes =
      ProtobufWriter().message(3, ProtobufWriter().integer(1, 300)).text(1, "first").bytes();
  std::size_t refused = 0;
  for (std::size_t length = 1; length < bytes.size(); ++length) {
    try {
      readProtobuf(std::string_view(bytes).substr(0, length), kOuter);
    } catch (const BadMessage&) {
      ++refused;
    }
  }
  EXPECT_EQ(refused, bytes.size() - 2); // but for the end between both fields
}

TEST(ProtobufMessage, inBytesSaysWhereALengthLeadsOut) {
  try {
    readProtobuf(std::string("\x0a\x7f", 2) + "short", kOuter);
    FAIL();
  } catch (const BadMessage& bad) {
    EXPECT_STREQ(bad.what(), "byte 2: a length that leads out of its message");
  }
}

TEST(ProtobufMessage, inBytesHasNoNumberThatDoesNotEnd) {
  EXPECT_THROW(readProtobuf(std::string(1, '\x10') + std::string(11, '\xff'), kOuter), BadMessage);
}

TEST(ProtobufMessage, inLettersHasWordsNumbersTextsAndMessages) {
  const ProtobufField message = readProtobufText("name: \"a\" 'b' # and a comment {\n"
                                                 "sizes: 3; sizes: -4, sizes: [5, 0x10]\n"
                                                 "inner { size: 7 } other < word: DT_FLOAT >");
  EXPECT_EQ(message.textOf("name"), "ab");
  EXPECT_EQ(message.numbersOf("sizes"), (std::vector<std::int64_t>{3, -4, 5, 16}));
  ASSERT_NE(message.only("inner"), nullptr);
  EXPECT_EQ(message.only("inner")->numbersOf("size"), std::vector<std::int64_t>{7});
  ASSERT_NE(message.only("other"), nullptr);
  EXPECT_EQ(message.only("other")->textOf("word"), "DT_FLOAT");
}

TEST(ProtobufMessage, inLettersMayHaveBlanksBehindAMinus) {
  const ProtobufField message = readProtobufText("size: - 3 size: -\n# and a comment\n4 last: 1");
  EXPECT_EQ(message.numbersOf("size"), (std::vector<std::int64_t>{-3, -4}));
  EXPECT_EQ(message.numbersOf("last"), std::vector<std::int64_t>{1});
}

TEST(ProtobufMessage, inLettersCountsTheBytesOfEscapes) {
  const ProtobufField message = readProtobufText(R"(name: "\000\377\x41\n\"x")");
  EXPECT_EQ(message.textOf("name").size(), 6U);
}

TEST(ProtobufMessage, inLettersHasEscapesOfAtMostThreeOctalDigits) {
  EXPECT_EQ(readProtobufText(R"(name: "\1234")").textOf("name"), "S4");
  EXPECT_EQ(readProtobufText(R"(name: "\538")").textOf("name"), "+8");
}

TEST(ProtobufMessage, inLettersSaysInWhichLineItIsBad) {
  const auto complaint = [](const std::string& text) -> std::string {
    try {
      readProtobufText(text);
    } catch (const BadMessage& bad) {
      return bad.what();
    }
    return "none";
  };
  EXPECT_EQ(complaint("a: 1\nb {\n c: 2\n"), "line 4: a message that does not end");
  EXPECT_EQ(complaint("a: 1\nb: \"c\n\""), "line 2: a text that does not end");
  EXPECT_EQ(complaint("a: 1\n}"), "line 2: a word is missing");
  EXPECT_EQ(complaint("a: \"\\"), "line 1: a text that does not end");
  std::string deep;
  for (int i = 0; i < 100000; ++i) {
    deep += "a{";
  }
  EXPECT_EQ(complaint(deep), "line 1: too many messages in one another");
}

TEST(ProtobufMessage, hasNoFieldTwiceWhereItMayStandOnce) {
  const ProtobufField message = readProtobufText("a: 1 a: 2");
  EXPECT_THROW(message.only("a"), BadMessage);
}

} // namespace
} // namespace qorocv
