#include "core/common/AsciiText_p.h"

#include <gtest/gtest.h>

TEST(AsciiText, LowersTheLettersOfAsciiAlone)
{
    for (int i = 0; i < 256; ++i) {
        const char character = static_cast<char>(i);
        const char expected = i >= 'A' && i <= 'Z' ? static_cast<char>(i + 32) : character;
        EXPECT_EQ(kr::ToLowerAscii(character), expected) << i;
    }
}

TEST(AsciiText, ComparesKeywordsInAnyCase)
{
    EXPECT_TRUE(kr::EqualsIgnoringCase("VerTex", "vertex"));
    EXPECT_TRUE(kr::EqualsIgnoringCase("", ""));
    EXPECT_FALSE(kr::EqualsIgnoringCase("verte", "vertex"));
    EXPECT_FALSE(kr::EqualsIgnoringCase("vertexx", "vertex"));
    EXPECT_FALSE(kr::EqualsIgnoringCase("vertez", "vertex"));
    // These differ from letters by the bit that tells the cases apart.
    EXPECT_FALSE(kr::EqualsIgnoringCase("@", "`"));
    EXPECT_FALSE(kr::EqualsIgnoringCase("[", "{"));
}
