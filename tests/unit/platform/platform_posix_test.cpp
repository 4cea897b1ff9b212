#include "platform/platform.h"
#include "scoped_locale.h"

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace qorocv {
namespace {

std::string repeated(const std::string& text, int count) {
  std::string result;
  for (int index = 0; index < count; ++index) {
    result += text;
  }
  return result;
}

TEST(PosixUtf16Length, CountsEachByteOfAnEncodedSurrogate) {
  EXPECT_EQ(utf16Length("\xED\xA0\x80"), 4U);
  // Eight bytes of surrogates, the last one cut short, then A.
  EXPECT_EQ(utf16Length("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"), 10U);
}

TEST(PosixUtf16Length, CountsEachByteOfAnOverlongForm) {
  EXPECT_EQ(utf16Length("\xE0\x80\x80"), 4U);
  EXPECT_EQ(utf16Length("\xF0\x80\x80\x80"), 5U);
  EXPECT_EQ(utf16Length("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"), 10U);
}

TEST(PosixUtf16Length, CountsEachByteOfAValueAboveTheLastCharacter) {
  EXPECT_EQ(utf16Length("\xF4\x90\x80\x80"), 5U);
  // F4 | 91 | 92 | 93 | FF | 41 | 80 | BF | 42
  EXPECT_EQ(utf16Length("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"), 10U);
}

class PosixUtf8Locale : public testing::TestWithParam<const char*> {
protected:
  void SetUp() override { ASSERT_TRUE(locale.isCurrent()) << GetParam(); }

private:
  ScopedLocale locale{GetParam()};
};

TEST_P(PosixUtf8Locale, KeepsTheBytesOfCyrillicChineseAndEmoji) {
  EXPECT_EQ(utf8ToLocale("\xD0\x96", 64), "\xD0\x96");
  EXPECT_EQ(utf8ToLocale("\xE4\xB8\xAD\xE6\x96\x87", 64), "\xE4\xB8\xAD\xE6\x96\x87");
  EXPECT_EQ(utf8ToLocale("\xF0\x9F\x98\x80", 64), "\xF0\x9F\x98\x80");
}

TEST_P(PosixUtf8Locale, KeepsBothTurkishLettersI) {
  EXPECT_EQ(utf8ToLocale("Ii\xC4\xB0\xC4\xB1", 64), "Ii\xC4\xB0\xC4\xB1");
}

TEST_P(PosixUtf8Locale, WritesTheReplacementCharacterForEachMalformedPart) {
  EXPECT_EQ(utf8ToLocale("a\xFFz", 64), "a\xEF\xBF\xBDz");
  EXPECT_EQ(utf8ToLocale("\xE2\x82", 64), "\xEF\xBF\xBD");
  EXPECT_EQ(utf8ToLocale("\xED\xA0\x80", 64), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST_P(PosixUtf8Locale, CutsBeforeACharacterThatDoesNotFit) {
  EXPECT_EQ(utf8ToLocale("a\xD0\x96", 3), "a");
  EXPECT_EQ(utf8ToLocale("\xE4\xB8\xAD\xE6\x96\x87", 6), "\xE4\xB8\xAD");
  EXPECT_EQ(utf8ToLocale("\xF0\x9F\x98\x80", 4), "");
}

TEST_P(PosixUtf8Locale, KeepsACharacterThatFitsExactly) {
  EXPECT_EQ(utf8ToLocale("a\xD0\x96", 4), "a\xD0\x96");
  EXPECT_EQ(utf8ToLocale("\xE4\xB8\xAD\xE6\x96\x87", 7), "\xE4\xB8\xAD\xE6\x96\x87");
  EXPECT_EQ(utf8ToLocale("\xF0\x9F\x98\x80", 5), "\xF0\x9F\x98\x80");
}

TEST_P(PosixUtf8Locale, AddsNothingAfterTheCutEvenIfItWouldFit) {
  EXPECT_EQ(utf8ToLocale("\xD0\x96"
                         "a",
                         2),
            "");
}

TEST_P(PosixUtf8Locale, NeverCutsAPath) {
  const std::string chinese = repeated("\xE4\xB8\xAD", 500);
  EXPECT_EQ(utf8ToLocalePath(chinese.c_str()), chinese);
  const std::string emoji = repeated("\xF0\x9F\x98\x80", 500);
  EXPECT_EQ(utf8ToLocalePath(emoji.c_str()), emoji);
}

TEST_P(PosixUtf8Locale, HasABufferOfSixBytesForEachUnit) {
  // The C library keeps the six bytes of the original definition of UTF-8.
  EXPECT_EQ(localBufferSize(0), 0U);
  EXPECT_EQ(localBufferSize(3), 18U);
}

/// The locale's name in the letters that a test's name may have.
std::string localeLabel(const testing::TestParamInfo<const char*>& parameter) {
  std::string label;
  for (const char* letter = parameter.param; *letter != '\0'; ++letter) {
    if (std::isalnum(static_cast<unsigned char>(*letter)) != 0) {
      label.push_back(*letter);
    }
  }
  return label;
}

INSTANTIATE_TEST_SUITE_P(Locales, PosixUtf8Locale,
                         testing::Values("C.UTF-8", "de_DE.UTF-8", "tr_TR.UTF-8"), localeLabel);

class PosixLatin1Locale : public testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(locale.isCurrent()); }

private:
  ScopedLocale locale{"de_DE.ISO-8859-1"};
};

TEST_F(PosixLatin1Locale, WritesOneByteForEachCharacterItHas) {
  EXPECT_EQ(utf8ToLocale("caf\xC3\xA9", 64), "caf\xE9");
  EXPECT_EQ(utf8ToLocalePath("caf\xC3\xA9"), "caf\xE9");
}

TEST_F(PosixLatin1Locale, IsEmptyForATextWithACharacterItLacks) {
  EXPECT_EQ(utf8ToLocale("\xD0\x96", 64), "");
  EXPECT_EQ(utf8ToLocale("caf\xC3\xA9\xD0\x96", 64), "");
  EXPECT_EQ(utf8ToLocale("\xF0\x9F\x98\x80", 64), "");
}

TEST_F(PosixLatin1Locale, IsEmptyForAMalformedTextAsItLacksTheReplacementCharacter) {
  EXPECT_EQ(utf8ToLocale("a\xFFz", 64), "");
}

TEST_F(PosixLatin1Locale, IgnoresACharacterItLacksBehindTheCut) {
  EXPECT_EQ(utf8ToLocale("ab\xD0\x96", 3), "ab");
  EXPECT_EQ(utf8ToLocale("ab\xD0\x96", 4), "");
}

TEST_F(PosixLatin1Locale, HasABufferOfOneByteForEachUnit) {
  EXPECT_EQ(localBufferSize(3), 3U);
}

TEST(PosixCLocale, IsEmptyForATextOutsideAscii) {
  const ScopedLocale locale("C");
  ASSERT_TRUE(locale.isCurrent());
  EXPECT_EQ(utf8ToLocale("\xD0\x96", 64), "");
  EXPECT_EQ(utf8ToLocale("caf\xC3\xA9", 64), "");
}

TEST(PosixCLocale, HasABufferOfOneByteForEachUnit) {
  const ScopedLocale locale("C");
  ASSERT_TRUE(locale.isCurrent());
  EXPECT_EQ(localBufferSize(3), 3U);
}

// BIG5-HKSCS has Ê both alone (88 66) and with a macron that follows it (88 62).
TEST(PosixBig5Locale, WritesACharacterThatTheEncodingHeldBack) {
  const ScopedLocale locale("zh_HK");
  ASSERT_TRUE(locale.isCurrent());
  EXPECT_EQ(utf8ToLocale("\xC3\x8A", 64), "\x88\x66");
  EXPECT_EQ(utf8ToLocale("\xC3\x8A\xCC\x84", 64), "\x88\x62");
  EXPECT_EQ(utf8ToLocale("\xC3\x8A", 2), "");
}

TEST(PosixPathBesideModule, IsInTheRootForAModuleThere) {
  EXPECT_EQ(pathBesideModule("/library.so", "names", "txt"), "/names.txt");
}

TEST(PosixPathBesideModule, IsInTheModulesDirectory) {
  EXPECT_EQ(pathBesideModule("/usr/lib/library.so.1", "names", "txt"), "/usr/lib/names.txt");
}

TEST(PosixPathBesideModule, WritesTheDotBeforeAnEmptyExtension) {
  EXPECT_EQ(pathBesideModule("/usr/lib/library.so", "names", ""), "/usr/lib/names.");
}

// In Turkish the small letter of I has no dot.
class ClassicLocaleOfThreadTest : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(turkish_.isCurrent());
    ASSERT_NE(std::tolower('I'), 'i');
  }

private:
  ScopedLocale turkish_{"tr_TR.ISO-8859-9"};
};

TEST_F(ClassicLocaleOfThreadTest, foldsCaseAsInTheCLocale) {
  const ClassicLocaleOfThread classic;
  EXPECT_EQ(std::tolower('I'), 'i');
}

TEST_F(ClassicLocaleOfThreadTest, givesTheThreadItsLocaleBackAtItsEnd) {
  { const ClassicLocaleOfThread classic; }
  EXPECT_NE(std::tolower('I'), 'i');
}

TEST_F(ClassicLocaleOfThreadTest, leavesOtherThreadsTheirLocale) {
  const ClassicLocaleOfThread classic;
  int elsewhere = 0;
  std::thread([&elsewhere] { elsewhere = std::tolower('I'); }).join();
  EXPECT_NE(elsewhere, 'i');
}

TEST(PosixIsNamedPipe, holdsWhileThePipeIsThere) {
  const std::string pipe =
      std::filesystem::temp_directory_path() / ("qorocv460-pipe-" + std::to_string(getpid()));
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_TRUE(isNamedPipe(pipe));
  EXPECT_EQ(unlink(pipe.c_str()), 0);
  EXPECT_FALSE(isNamedPipe(pipe));
}

TEST(PosixIsNamedPipe, isFalseOfWhateverIsNone) {
  EXPECT_FALSE(isNamedPipe("/tmp"));
  EXPECT_FALSE(isNamedPipe("/proc/self/exe"));
  EXPECT_FALSE(isNamedPipe(""));
}

} // namespace
} // namespace qorocv
