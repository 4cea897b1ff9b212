// Whole files into memory.
#include "picture_file.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <numeric>

namespace qorfaces {
namespace {

using qorocv::testing::TemporaryDirectory;

TEST(ReadFile, givesEveryByteOfAFileOfSeveralBlocks) {
  const TemporaryDirectory directory;
  const std::string path = (directory / "file").string();
  std::vector<unsigned char> bytes(200000);
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
  writeFile(path, bytes);
  EXPECT_EQ(readFile(path), bytes);
}

TEST(ReadFile, givesNothingOfAnEmptyFile) {
  const TemporaryDirectory directory;
  const std::string path = (directory / "file").string();
  writeFile(path, {});
  EXPECT_TRUE(readFile(path).empty());
}

TEST(ReadFile, givesNothingOfWhatIsNotThere) {
  const TemporaryDirectory directory;
  EXPECT_TRUE(readFile((directory / "nowhere").string()).empty());
}

TEST(ReadFile, givesNothingOfADirectory) {
  const TemporaryDirectory directory;
  EXPECT_TRUE(readFile(directory.path().string()).empty());
}

} // namespace
} // namespace qorfaces
