#include <string>

#include <gtest/gtest.h>

#include "tests/common/Bytes.h"
#include "tests/obj/OBJLoadSupport.h"

// What makes a line, for OBJ files and libraries alike. The name of a group shows the bytes of a line.

namespace {

using test::Bytes;
using test::LoadedObj;
using test::LoadObj;
using test::Point;
using test::Points;

using Names = std::vector<std::string>;

constexpr int kLongestLine = 1'048'575;

Names NamesIn(const QByteArray& text)
{
    return LoadObj(text).GroupNames();
}

Points VerticesIn(const QByteArray& text)
{
    return LoadObj(text).Vertices();
}

// A vertex in a line of so many bytes.
QByteArray LongVertex(int size)
{
    return QByteArray("v 7 8 9").leftJustified(size, ' ');
}

} // namespace

TEST(OBJLine, EndsAtALineFeed)
{
    EXPECT_EQ(NamesIn("usemtl a\nusemtl b\n\nusemtl c"), (Names{"a", "b", "c"}));
}

TEST(OBJLine, LosesCarriageReturnsWhereverTheyStand)
{
    EXPECT_EQ(NamesIn("usemtl a\r\nus\remtl\r b\rc\r\r\n\rusemtl d\r"), (Names{"a", "bc", "d"}));
    EXPECT_EQ(VerticesIn("v 1 2 3\r\nv 4 5 6\r\n"), (Points{{1, 2, 3}, {4, 5, 6}}));
}

TEST(OBJLine, DoesNotEndAtACarriageReturn)
{
    EXPECT_EQ(VerticesIn("v 1 2 3\rv 4 5 6\r"), (Points{{1, 2, 0}}));
}

TEST(OBJLine, EndsAtANul)
{
    EXPECT_EQ(NamesIn(Bytes("usemtl a\0usemtl b\0\0\nusemtl c\n")), (Names{"a", "b", "c"}));
}

TEST(OBJLine, EndsAtANulBehindABackslashToo)
{
    EXPECT_EQ(NamesIn(Bytes("usemtl a\\\0usemtl b\n")), (Names{"a", "b"}));
}

TEST(OBJLine, IsReadWithoutALineFeedAtTheEnd)
{
    EXPECT_EQ(VerticesIn("v 1 2 3"), (Points{{1, 2, 3}}));
    EXPECT_EQ(VerticesIn("v 1 2 3\\"), (Points{{1, 2, 3}}));
    EXPECT_EQ(VerticesIn("v 1 2 3\\\n"), (Points{{1, 2, 3}}));
}

TEST(OBJLine, IsJoinedByABackslashAtItsEnd)
{
    EXPECT_EQ(VerticesIn("v 1 2\\\n 3\n"), (Points{{1, 2, 3}}));
    EXPECT_EQ(VerticesIn("v\\\n 1\\\r\n 2 \\\n 3\nv 4 5 6\n"), (Points{{1, 2, 3}, {4, 5, 6}}));
}

TEST(OBJLine, IsJoinedThoughBlanksTabsOrReturnsFollowTheBackslash)
{
    EXPECT_EQ(VerticesIn("v 1 2\\  \n3\n"), (Points{{1, 2, 3}}));
    EXPECT_EQ(NamesIn("usemtl \\\t\r\na\n"), (Names{"\ta"}));
}

TEST(OBJLine, IsJoinedThoughOtherBytesThatAreNoVisibleAsciiFollowTheBackslash)
{
    EXPECT_EQ(NamesIn("usemtl a\\\xC3\xA4\nb\n"), (Names{"a\xC3\xA4"
                                                         "b"}));
    EXPECT_EQ(NamesIn("usemtl a\\\x01\x7F\nb\n"), (Names{"a\x01\x7F"
                                                         "b"}));
}

TEST(OBJLine, IsNotJoinedWhenAVisibleCharacterFollowsTheBackslash)
{
    EXPECT_EQ(NamesIn("usemtl a\\b\nusemtl a\\!\nusemtl a\\~\nusemtl c\n"),
              (Names{"a\\b", "a\\!", "a\\~", "c"}));
    EXPECT_EQ(VerticesIn("v 1 2 3 \\ x\nv 4 5 6\n"), (Points{{1, 2, 3}, {4, 5, 6}}));
}

TEST(OBJLine, KeepsABackslashBeforeAVisibleCharacter)
{
    EXPECT_EQ(NamesIn("usemtl wood\\oak.png\nusemtl \\a\n"), (Names{"wood\\oak.png", "\\a"}));
}

TEST(OBJLine, KeepsOneBackslashOfMany)
{
    EXPECT_EQ(NamesIn("usemtl a\\\\\\b\\\\c\n"), (Names{"a\\b\\c"}));
}

TEST(OBJLine, DropsABackslashBeforeABlank)
{
    EXPECT_EQ(NamesIn("usemtl\\ a\\ \\ \\\t\n\nusemtl b\\ "), (Names{"b"}));
    EXPECT_EQ(NamesIn("usemtl\\ a\\ !\n"), (Names{}));
    EXPECT_EQ(VerticesIn("v\\ 1\\ 2 3\n"), (Points{{1, 2, 3}}));
}

TEST(OBJLine, KeepsTheBackslashThatJoinedALineWithoutALeadingBlank)
{
    EXPECT_EQ(NamesIn("usemtl a\\\nb\n"), (Names{"a\\b"}));
    EXPECT_EQ(NamesIn("usemtl a\\\n\\\n\\\nb\n"), (Names{"a\\b"}));
    EXPECT_EQ(VerticesIn("v 1 2 \\\n3\n"), (Points{{1, 2, 0}}));
    EXPECT_EQ(VerticesIn("v 1 2\\\n3\n"), (Points{}));
}

TEST(OBJLine, LosesTheBackslashBeforeAJoinedLineWithALeadingBlankOrTab)
{
    EXPECT_EQ(NamesIn("usemtl\\\n b\n"), (Names{"b"}));
    EXPECT_EQ(NamesIn("usemtl a\\\n\tb\n"), (Names{"a\tb"}));
}

TEST(OBJLine, EndsBehindAJoinedLineThatIsEmpty)
{
    EXPECT_EQ(NamesIn("usemtl a\\\n\nusemtl b\n"), (Names{"a", "b"}));
}

TEST(OBJLine, OfACommentIsJoinedAsAnyOther)
{
    EXPECT_EQ(NamesIn("# old: \\\nusemtl a\nusemtl b\n"), (Names{"b"}));
}

TEST(OBJLine, IsACommentOnlyWhenItsFirstCharacterIsAHash)
{
    EXPECT_EQ(VerticesIn("#v 1 2 3\n# v 4 5 6\nv 7 8 9\n"), (Points{{7, 8, 9}}));
    EXPECT_EQ(VerticesIn(" # v 1 2\nv 1 2 3 # 5\nv 4 6 8 #\n"), (Points{{1, 2, 3}, {4, 6, 8}}));
    EXPECT_EQ(NamesIn("usemtl #a\nusemtl b#\n"), (Names{"#a", "b#"}));
}

TEST(OBJLine, OfBlanksAloneSaysNothing)
{
    const LoadedObj obj = LoadObj("\n   \n\t\n \t \n\r\n");
    EXPECT_TRUE(obj.Vertices().empty());
    EXPECT_TRUE(obj.groups.empty());
}

TEST(OBJLine, IsSplitAtBlanksAlone)
{
    EXPECT_EQ(VerticesIn("v\t1\t2\t3\nv 1\t2 3\n v  4   5 6  \n"), (Points{{4, 5, 6}}));
    EXPECT_EQ(VerticesIn("\tv 1 2 3\nv\xC2\xA0"
                         "1 2 3 4\nv\x0B 1 2 3\n"),
              (Points{}));
}

TEST(OBJLine, LosesAByteOrderMarkAtItsBegin)
{
    EXPECT_EQ(NamesIn("\xEF\xBB\xBFusemtl a\n\xEF\xBB\xBFusemtl b\n\xEF\xBB\xBF# c\n\xEF\xBB\xBF\n"),
              (Names{"a", "b"}));
}

TEST(OBJLine, KeepsAnyOtherByteOrderMark)
{
    EXPECT_EQ(NamesIn("usemtl \xEF\xBB\xBF"
                      "a\n"),
              (Names{"\xEF\xBB\xBF"
                     "a"}));
    EXPECT_EQ(NamesIn("\xEF\xBB\xBF\xEF\xBB\xBFusemtl a\n \xEF\xBB\xBFusemtl b\n"), (Names{}));
}

TEST(OBJLine, IsUtf8WithReplacementsForWhatIsNot)
{
    EXPECT_EQ(NamesIn("usemtl W\xC3\xBCrfel\xF0\x9F\x93\xA6\n"), (Names{"W\xC3\xBCrfel\xF0\x9F\x93\xA6"}));
    EXPECT_EQ(NamesIn("usemtl a\xFF"
                      "b\n"),
              (Names{"a\xEF\xBF\xBD"
                     "b"}));
    EXPECT_EQ(NamesIn("usemtl \xC3\n"), (Names{"\xEF\xBF\xBD"}));
}

TEST(OBJLine, KeepsEveryByteOfALongName)
{
    for (const int size : {990, 999, 1000, 1001, 1002, 1990, 2002, 131'072, 500'000}) {
        std::string name;
        for (int i = 0; i < size; ++i)
            name += char('a' + i % 26);
        EXPECT_EQ(NamesIn("usemtl " + QByteArray::fromStdString(name) + "\nusemtl b\n"), (Names{name, "b"}));
    }
}

TEST(OBJLine, MayHave1048575Bytes)
{
    EXPECT_EQ(VerticesIn("v 1 2 3\n" + LongVertex(kLongestLine) + "\nv 4 5 6\n"),
              (Points{{1, 2, 3}, {7, 8, 9}, {4, 5, 6}}));
}

TEST(OBJLine, WithOneByteMoreEndsTheReading)
{
    const LoadedObj obj =
        LoadObj("v 1 2 3\nusemtl a\n" + LongVertex(kLongestLine + 1) + "\nv 4 5 6\nusemtl b\n");
    EXPECT_EQ(obj.Vertices(), (Points{{1, 2, 3}}));
    EXPECT_EQ(obj.GroupNames(), (Names{"a"}));
    EXPECT_EQ(obj.mesh.GetVertexNum(), 1);
}

TEST(OBJLine, ThatIsACommentEndsTheReadingToo)
{
    EXPECT_EQ(VerticesIn("v 1 2 3\n" + QByteArray(kLongestLine, '#') + "\nv 4 5 6\n").size(), 2U);
    EXPECT_EQ(VerticesIn("v 1 2 3\n" + QByteArray(kLongestLine + 1, '#') + "\nv 4 5 6\n").size(), 1U);
}

TEST(OBJLine, IsMeasuredWithAllThatIsJoinedToIt)
{
    const QByteArray half = LongVertex(kLongestLine / 2) + "\\\n" + QByteArray(kLongestLine / 2 + 1, ' ');
    EXPECT_EQ(VerticesIn(half + "\nv 4 5 6\n").size(), 2U);
    EXPECT_EQ(VerticesIn(half + " \nv 4 5 6\n").size(), 0U);
}

TEST(OBJLine, IsMeasuredWithoutWhatIsLost)
{
    const QByteArray longest = LongVertex(kLongestLine);
    EXPECT_EQ(VerticesIn(longest + "\r\r\r\nv 4 5 6\n").size(), 2U);
    EXPECT_EQ(VerticesIn(longest + "\\\n\nv 4 5 6\n").size(), 2U);
    EXPECT_EQ(VerticesIn(QByteArray(2 * kLongestLine, '\r') + "v 4 5 6\n").size(), 1U);
    EXPECT_EQ(VerticesIn("v 1 2 3" + QByteArray(2 * kLongestLine, '\\') + "\n\nv 4 5 6\n").size(), 2U);
}

TEST(OBJLine, IsMeasuredWithTheBackslashThatIsKept)
{
    const QByteArray line = LongVertex(kLongestLine - 2);
    EXPECT_EQ(VerticesIn(line + "\\x\nv 4 5 6\n").size(), 2U);
    EXPECT_EQ(VerticesIn(line + " \\x\nv 4 5 6\n").size(), 0U);
}

TEST(OBJLine, IsMeasuredInBytes)
{
    const QByteArray line = LongVertex(kLongestLine - 1);
    EXPECT_EQ(VerticesIn(line + "\x7F\nv 4 5 6\n").size(), 2U);
    EXPECT_EQ(VerticesIn(line + "\xC3\xA4\nv 4 5 6\n").size(), 0U);
}

TEST(OBJLine, ThatEndsAtANulIsMeasuredByItself)
{
    EXPECT_EQ(VerticesIn(LongVertex(kLongestLine) + Bytes("\0") + LongVertex(kLongestLine)).size(), 2U);
}

// Whoever looked for the end of the block from each of these lines would take hours.
TEST(OBJLine, MayEndAtANulVeryManyTimesInARow)
{
    const QByteArray nuls(16 << 20, '\0');
    EXPECT_EQ(VerticesIn(nuls + "v 1 2 3" + nuls), (Points{{1, 2, 3}}));
    EXPECT_TRUE(test::LoadMtl(nuls).empty());
}

TEST(OBJLine, MayBeShortVeryManyTimesBesideALongOne)
{
    const QByteArray block = QByteArray("x\n").repeated(32'768) + QByteArray(65'536, 'x');
    EXPECT_EQ(VerticesIn(block.repeated(128) + "\nv 1 2 3"), (Points{{1, 2, 3}}));
}
