#include "platform/platform.h"
#include "scoped_locale.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

namespace qorocv {
namespace {

constexpr char kSeparator = static_cast<char>(std::filesystem::path::preferred_separator);

TEST(Utf16Length, IsZeroForNull) {
  EXPECT_EQ(utf16Length(nullptr), 0U);
}

TEST(Utf16Length, CountsOnlyTheTerminatorOfAnEmptyText) {
  EXPECT_EQ(utf16Length(""), 1U);
}

TEST(Utf16Length, CountsOneUnitForEachAsciiCharacter) {
  EXPECT_EQ(utf16Length("model.bin"), 10U);
}

TEST(Utf16Length, CountsOneUnitForATwoByteCharacter) {
  EXPECT_EQ(utf16Length("\xC3\xA9"), 2U);                 // é
  EXPECT_EQ(utf16Length("\xD0\x96\xD1\x83\xD0\xBA"), 4U); // Жук
}

TEST(Utf16Length, CountsOneUnitForAThreeByteCharacter) {
  EXPECT_EQ(utf16Length("\xE4\xB8\xAD\xE6\x96\x87"), 3U); // 中文
}

TEST(Utf16Length, CountsTwoUnitsForAFourByteCharacter) {
  EXPECT_EQ(utf16Length("\xF0\x9F\x98\x80"), 3U); // 😀
  EXPECT_EQ(utf16Length("a\xF0\x9F\x98\x80"
                        "b"),
            5U);
}

TEST(Utf16Length, AcceptsTheFirstAndLastCharacterOfEveryByteCount) {
  EXPECT_EQ(utf16Length("\x01\x7F"), 3U);
  EXPECT_EQ(utf16Length("\xC2\x80\xDF\xBF"), 3U);
  EXPECT_EQ(utf16Length("\xE0\xA0\x80\xEF\xBF\xBF"), 3U);
  EXPECT_EQ(utf16Length("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"), 5U);
}

TEST(Utf16Length, AcceptsTheCharactersOnBothSidesOfTheSurrogates) {
  EXPECT_EQ(utf16Length("\xED\x9F\xBF\xEE\x80\x80"), 3U);
}

TEST(Utf16Length, CountsAStrayContinuationByteAsOneUnit) {
  EXPECT_EQ(utf16Length("a\x80"
                        "b"),
            4U);
}

TEST(Utf16Length, CountsACharacterCutShortByTheEndAsOneUnit) {
  EXPECT_EQ(utf16Length("\xC3"), 2U);
  EXPECT_EQ(utf16Length("\xE2\x82"), 2U);
  EXPECT_EQ(utf16Length("\xF0\x9F\x98"), 2U);
}

TEST(Utf16Length, KeepsTheCharacterThatInterruptsAnother) {
  EXPECT_EQ(utf16Length("\xE2\x82"
                        "a"),
            3U);
  EXPECT_EQ(utf16Length("\xE2\xE2\x82\xAC"), 3U);
}

TEST(Utf16Length, CountsEachByteThatNoCharacterBeginsWith) {
  EXPECT_EQ(utf16Length("\xC0\xAF"), 3U);
  EXPECT_EQ(utf16Length("\xF5\x80\x80\x80"), 5U);
  EXPECT_EQ(utf16Length("\xFE\xFF"), 3U);
  EXPECT_EQ(utf16Length("\xF8\x88\x80\x80\x80"), 6U);
}

TEST(Utf16Length, CountsOneUnitForEachTruncatedSequenceInARow) {
  // E1 80 | E2 | F0 91 92 | F1 BF | 41
  EXPECT_EQ(utf16Length("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"), 6U);
}

TEST(Utf8ToLocale, IsEmptyForNull) {
  EXPECT_EQ(utf8ToLocale(nullptr, 16), "");
}

TEST(Utf8ToLocale, IsEmptyForAnEmptyText) {
  EXPECT_EQ(utf8ToLocale("", 16), "");
}

TEST(Utf8ToLocale, KeepsAsciiInTheCLocale) {
  const ScopedLocale locale("C");
  ASSERT_TRUE(locale.isCurrent());
  EXPECT_EQ(utf8ToLocale("dir/model-1.bin", 64), "dir/model-1.bin");
}

TEST(Utf8ToLocale, IsEmptyForABufferWithoutRoomForACharacter) {
  EXPECT_EQ(utf8ToLocale("model", 0), "");
  EXPECT_EQ(utf8ToLocale("model", 1), "");
}

TEST(Utf8ToLocale, LeavesRoomForTheTerminatorWhenItCuts) {
  EXPECT_EQ(utf8ToLocale("model", 2), "m");
  EXPECT_EQ(utf8ToLocale("model", 5), "mode");
}

TEST(Utf8ToLocale, FillsABufferThatFitsExactly) {
  EXPECT_EQ(utf8ToLocale("model", 6), "model");
}

TEST(Utf8ToLocalePath, IsEmptyForNull) {
  EXPECT_EQ(utf8ToLocalePath(nullptr), "");
}

TEST(Utf8ToLocalePath, KeepsAWholeAsciiPath) {
  const std::string path(1000, 'p');
  EXPECT_EQ(utf8ToLocalePath(path.c_str()), path);
}

TEST(PathBesideModule, ReplacesTheModulesNameAndExtension) {
  const std::filesystem::path module = std::filesystem::path("dir") / "library.bin";
  EXPECT_EQ(pathBesideModule(module, "names", "txt"),
            std::string("dir") + kSeparator + "names.txt");
}

TEST(PathBesideModule, AddsTheExtensionToANameThatHasADot) {
  const std::filesystem::path module = std::filesystem::path("dir") / "library.bin";
  EXPECT_EQ(pathBesideModule(module, "names.old", "txt"),
            std::string("dir") + kSeparator + "names.old.txt");
}

TEST(PathBesideModule, KeepsDotsInTheDirectory) {
  const std::filesystem::path module = std::filesystem::path("v1.2") / "library";
  EXPECT_EQ(pathBesideModule(module, "names", "txt"),
            std::string("v1.2") + kSeparator + "names.txt");
}

TEST(PathBesideModule, IsUtf8ForADirectoryAndANameOutsideAscii) {
  const std::string directory = "\xD0\x96\xE4\xB8\xAD\xF0\x9F\x98\x80"; // Ж中😀
  const std::filesystem::path module = std::filesystem::u8path(directory) / "library.bin";
  EXPECT_EQ(pathBesideModule(module, "\xC3\xA9", "\xD0\x96"),
            directory + kSeparator + "\xC3\xA9.\xD0\x96");
}

TEST(PathBesideModule, IsABareNameForAModuleWithoutADirectory) {
  EXPECT_EQ(pathBesideModule("library.bin", "names", "txt"), "names.txt");
  EXPECT_EQ(pathBesideModule("", "names", "txt"), "names.txt");
}

TEST(OwnModulePath, IsTheAbsolutePathOfThisProgramsFile) {
  const std::filesystem::path path = ownModulePath();
  EXPECT_TRUE(path.is_absolute());
  EXPECT_TRUE(std::filesystem::is_regular_file(path));
  EXPECT_EQ(path.stem(), "platform_tests");
}

TEST(OpensDirectory, holdsOfADirectoryAloneAndOnlyWhereItDoes) {
  const testing::TemporaryDirectory directory;
  const std::string file = (directory / "file").string();
  std::ofstream(file) << "content";
  const bool opens = std::ifstream(directory.path().string()).is_open();
  EXPECT_EQ(opensDirectory(directory.path().string()), opens);
  EXPECT_FALSE(opensDirectory(file));
  EXPECT_FALSE(opensDirectory((directory / "nowhere").string()));
  EXPECT_FALSE(opensDirectory(""));
}

TEST(FileStamp, IsNoneWhereThereIsNoFile) {
  EXPECT_FALSE(fileStamp("no such file"));
}

TEST(FileStamp, StaysWhileTheFileIsLeftAlone) {
  const testing::TemporaryDirectory directory;
  const std::string path = (directory / "file").string();
  std::ofstream(path) << "content";
  EXPECT_TRUE(fileStamp(path));
  EXPECT_TRUE(fileStamp(path) == fileStamp(path));
  EXPECT_EQ(fileStamp(path)->size, 7U);
}

TEST(FileStamp, IsAnotherForAnotherFile) {
  const testing::TemporaryDirectory directory;
  const std::string path = (directory / "file").string();
  const std::string other = (directory / "other").string();
  std::ofstream(path) << "content";
  std::ofstream(other) << "content";
  EXPECT_FALSE(fileStamp(path) == fileStamp(other));
}

TEST(FileStamp, TellsWhenTheFileWasWritten) {
  const testing::TemporaryDirectory directory;
  const std::string path = (directory / "file").string();
  std::ofstream(path) << "content";
  // A whole second: the standard library of some systems sets no finer time.
  const auto second =
      std::chrono::floor<std::chrono::seconds>(std::filesystem::last_write_time(path));
  std::filesystem::last_write_time(path, second);
  const std::int64_t before = fileStamp(path)->written;
  std::filesystem::last_write_time(path, second - std::chrono::hours(1));
  EXPECT_EQ(before - fileStamp(path)->written, 3'600'000'000'000);
}

} // namespace
} // namespace qorocv
