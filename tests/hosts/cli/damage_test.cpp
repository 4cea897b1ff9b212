// Which words of the picture codecs tell of damage.
#include "damage.h"

#include <gtest/gtest.h>

namespace qorfaces {
namespace {

TEST(TellsOfDamage, knowsAnEndThatComesTooEarly) {
  EXPECT_TRUE(tellsOfDamage("Premature end of JPEG file\n"));
}

TEST(TellsOfDamage, knowsWrongDataAmongOtherLines) {
  EXPECT_TRUE(tellsOfDamage("loading data from : model05.yaml\n"
                            "Corrupt JPEG data: bad Huffman code\n"));
}

TEST(TellsOfDamage, takesOtherWarningsForNone) {
  EXPECT_FALSE(tellsOfDamage("libpng warning: iCCP: known incorrect sRGB profile\n"));
  EXPECT_FALSE(tellsOfDamage("Warning: unknown JFIF revision number 2.01\n"));
  EXPECT_FALSE(tellsOfDamage(""));
}

} // namespace
} // namespace qorfaces
