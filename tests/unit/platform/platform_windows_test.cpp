#include "platform/platform.h"
#include "scoped_locale.h"

#include <gtest/gtest.h>

#include <string>

namespace qorocv {
namespace {

TEST(WindowsLocalBufferSize, IsTheUnitCountInEveryLocale) {
  EXPECT_EQ(localBufferSize(0), 0U);
  EXPECT_EQ(localBufferSize(7), 7U);
  const ScopedLocale japanese("Japanese_Japan.932");
  ASSERT_TRUE(japanese.isCurrent());
  EXPECT_EQ(localBufferSize(7), 7U);
}

TEST(WindowsCLocale, WritesTheByteOfACharacterUpToFf) {
  const ScopedLocale locale("C");
  ASSERT_TRUE(locale.isCurrent());
  EXPECT_EQ(utf8ToLocale("caf\xC3\xA9", 64), "caf\xE9");
}

TEST(WindowsCLocale, IsEmptyForATextWithACharacterAboveFf) {
  const ScopedLocale locale("C");
  ASSERT_TRUE(locale.isCurrent());
  EXPECT_EQ(utf8ToLocale("a\xD0\x96", 64), "");
}

class WindowsWesternCodePage : public testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(locale.isCurrent()); }

private:
  ScopedLocale locale{"English_United States.1252"};
};

TEST_F(WindowsWesternCodePage, WritesOneByteForEachCharacterItHas) {
  EXPECT_EQ(utf8ToLocalePath("caf\xC3\xA9"), "caf\xE9");
  EXPECT_EQ(utf8ToLocalePath("\xE2\x82\xAC"), "\x80"); // €
}

TEST_F(WindowsWesternCodePage, IsEmptyForATextWithACharacterItLacks) {
  EXPECT_EQ(utf8ToLocale("a\xD0\x96", 64), "");
  EXPECT_EQ(utf8ToLocale("\xE4\xB8\xAD\xE6\x96\x87", 64), "");
  EXPECT_EQ(utf8ToLocale("\xF0\x9F\x98\x80", 64), "");
}

class WindowsJapaneseCodePage : public testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(locale.isCurrent()); }

private:
  ScopedLocale locale{"Japanese_Japan.932"};
};

// 日本 is 93 FA 96 7B there, 語 is 8C EA.
TEST_F(WindowsJapaneseCodePage, WritesTwoBytesForACharacterInALargeBuffer) {
  EXPECT_EQ(utf8ToLocale("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", 64), "\x93\xFA\x96\x7B\x8C\xEA");
}

TEST_F(WindowsJapaneseCodePage, CutsAPathThatNeedsMoreBytesThanUnits) {
  EXPECT_EQ(utf8ToLocalePath("\xE6\x97\xA5\xE6\x9C\xAC"), "\x93\xFA");
  EXPECT_EQ(utf8ToLocalePath("dir/\xE6\x97\xA5"), "dir/\x93");
}

TEST_F(WindowsJapaneseCodePage, LeavesTheFirstHalfOfACharacterThatTheTerminatorOverwrites) {
  EXPECT_EQ(utf8ToLocale("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", 4), "\x93\xFA\x96");
}

TEST(WindowsPathBesideModule, KeepsTheDirectoryAsItIsWritten) {
  EXPECT_EQ(pathBesideModule("C:\\a b\\library.dll", "names", "txt"), "C:\\a b\\names.txt");
  EXPECT_EQ(pathBesideModule("Z:/a/b/library.dll", "names", "txt"), "Z:/a/b/names.txt");
}

TEST(WindowsPathBesideModule, KeepsANetworkShare) {
  EXPECT_EQ(pathBesideModule("\\\\host\\share\\library.dll", "names", "txt"),
            "\\\\host\\share\\names.txt");
}

TEST(WindowsPathBesideModule, IsEmptyForADirectoryLongerThanTheSystemSplits) {
  const std::wstring module = L"C:\\" + std::wstring(255, L'd') + L"\\library.dll";
  EXPECT_EQ(pathBesideModule(module, "names", "txt"), "");
}

TEST(WindowsPathBesideModule, IsEmptyForAResultLongerThanTheSystemAllows) {
  const std::wstring module = L"C:\\" + std::wstring(240, L'd') + L"\\library.dll";
  // C:\, the directory and its separator are 244 units; 260 hold 15 more and the terminator.
  EXPECT_EQ(pathBesideModule(module, "names678901", "txt"),
            "C:\\" + std::string(240, 'd') + "\\names678901.txt");
  EXPECT_EQ(pathBesideModule(module, "names6789012", "txt"), "");
}

TEST(WindowsPathBesideModule, IsEmptyForADirectoryWithHalfASurrogatePair) {
  EXPECT_EQ(pathBesideModule(L"C:\\a\xD83D\\library.dll", "names", "txt"), "");
}

TEST(WindowsOwnModulePath, IsTheProgramThatTheCodeIsLinkedInto) {
  EXPECT_EQ(ownModulePath().extension(), ".exe");
}

TEST(ClassicLocaleOfThread, isTheCLocaleOnlyWhileItLives) {
  const ScopedLocale european(".1252");
  ASSERT_TRUE(european.isCurrent());
  const std::string before = std::setlocale(LC_ALL, nullptr);
  {
    const ClassicLocaleOfThread classic;
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
  }
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

TEST(WindowsNamedPipe, isWhatLiesAmongThePipes) {
  EXPECT_TRUE(isNamedPipe(R"(\\.\pipe\photograph)"));
  EXPECT_TRUE(isNamedPipe(R"(\\.\PIPE\photograph)"));
  EXPECT_FALSE(isNamedPipe(R"(\\.\pipe)"));
  EXPECT_FALSE(isNamedPipe(R"(C:\pipe\photograph)"));
  EXPECT_FALSE(isNamedPipe(""));
}

} // namespace
} // namespace qorocv
