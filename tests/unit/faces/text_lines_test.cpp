#include "faces/text_lines.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

namespace qorocv {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
  const testing::TemporaryDirectory directory;
  const std::string path = (directory / "text").string();
  std::ofstream(path, std::ios::binary) << text;
  TextLines lines(path);
  std::vector<std::string> all;
  while (const auto line = lines.next()) {
    all.emplace_back(*line);
    EXPECT_EQ(lines.number(), all.size());
  }
  return all;
}

using Lines = std::vector<std::string>;

TEST(TextLines, areNoneInAnEmptyFile) {
  EXPECT_EQ(linesOf(""), Lines());
}

TEST(TextLines, comeWithoutTheirLineFeeds) {
  EXPECT_EQ(linesOf("one\n\nthree\n"), (Lines{"one", "", "three"}));
}

TEST(TextLines, comeWithoutACarriageReturnBeforeTheLineFeed) {
  EXPECT_EQ(linesOf("one\r\n\r\nthr\ree\r\n"), (Lines{"one", "", "thr\ree"}));
}

TEST(TextLines, includeALastOneWithoutLineFeed) {
  EXPECT_EQ(linesOf("one\ntwo"), (Lines{"one", "two"}));
}

TEST(TextLines, areWholeAcrossTheEndsOfTheBuffer) {
  Lines expected;
  std::string text;
  for (std::size_t length = 0; length < 2000; ++length) {
    expected.emplace_back(length, static_cast<char>('a' + length % 26));
    text += expected.back() + '\n';
  }
  EXPECT_EQ(linesOf(text), expected);
}

TEST(TextLines, areCutWhereTheyFillTheBuffer) {
  const std::string endless(1'000'000, 'x');
  std::string together;
  for (const std::string& line : linesOf(endless)) {
    EXPECT_LE(line.size(), 262'144U);
    together += line;
  }
  EXPECT_EQ(together, endless);
}

TEST(TextLines, areNoneWhereThereIsNoFile) {
  TextLines lines("no such file");
  EXPECT_FALSE(lines.isOpen());
  EXPECT_FALSE(lines.next());
}

} // namespace
} // namespace qorocv
