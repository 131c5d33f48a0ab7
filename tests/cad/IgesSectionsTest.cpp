#include <QBuffer>
#include <QByteArray>

#include <gtest/gtest.h>

#include "fileformat/cad/IgesSections_p.h"

// Which IGES files are whole.

namespace {

/// The lines of a file, 80 columns each, in their sections.
class IgesLines {
public:
    IgesLines& Lines(char section, int count, const QByteArray& content = "1,2,3;")
    {
        for (int i = 1; i <= count; ++i)
            m_lines += content.leftJustified(72) + section + QByteArray::number(i).rightJustified(7);
        return *this;
    }
    IgesLines& Line(const QByteArray& line)
    {
        m_lines += line;
        return *this;
    }
    IgesLines& Terminate(const QByteArray& counts) { return Lines('T', 1, counts); }

    QByteArray Bytes(const QByteArray& lineEnd = "\n") const { return m_lines.join(lineEnd) + lineEnd; }

private:
    QByteArrayList m_lines;
};

bool IsWhole(QByteArray bytes)
{
    QBuffer file(&bytes);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return kr::cad::AreIgesSectionsWhole(file);
}

bool IsWhole(const IgesLines& lines)
{
    return IsWhole(lines.Bytes());
}

IgesLines Sections(int start = 1, int global = 3, int directory = 4, int parameters = 12)
{
    return IgesLines().Lines('S', start).Lines('G', global).Lines('D', directory).Lines('P', parameters);
}

const QByteArray kCounts = "S      1G      3D      4P     12";

QByteArray Usual(const QByteArray& lineEnd = "\n")
{
    return Sections().Terminate(kCounts).Bytes(lineEnd);
}

TEST(IgesSections, AcceptsAFileWhoseTerminateRecordCountsItsLines)
{
    EXPECT_TRUE(IsWhole(Usual()));
}

TEST(IgesSections, AcceptsCountsWithZerosInFront)
{
    EXPECT_TRUE(IsWhole(Sections().Terminate("S0000001G0000003D0000004P0000012")));
}

TEST(IgesSections, AcceptsAnyLineEnds)
{
    for (const char* const lineEnd : {"\n", "\r\n", "\r", "\n\n"})
        EXPECT_TRUE(IsWhole(Usual(lineEnd))) << QByteArray(lineEnd).toHex().constData();
}

TEST(IgesSections, AcceptsRecordsWithoutLineEnds)
{
    const QByteArray bytes = Usual("");
    ASSERT_EQ(bytes.size(), 21 * 80);
    EXPECT_TRUE(IsWhole(bytes));
    EXPECT_FALSE(IsWhole(bytes.left(20 * 80)));
}

TEST(IgesSections, AcceptsALastLineWithoutItsEnd)
{
    EXPECT_TRUE(IsWhole(Usual().chopped(1)));
    EXPECT_TRUE(IsWhole(Usual("\r\n").chopped(2)));
}

TEST(IgesSections, AcceptsLongerLinesWhateverStandsBehindTheColumns)
{
    EXPECT_TRUE(IsWhole(Usual("          \n")));
    EXPECT_TRUE(IsWhole(Usual(" T      9\n")));
}

TEST(IgesSections, AcceptsNumbersOfLinesAnywhereInTheirColumns)
{
    const QByteArray numbered = Sections().Bytes() + kCounts.leftJustified(72) + "T1\n";
    EXPECT_TRUE(IsWhole(numbered));
}

TEST(IgesSections, AcceptsWhatFollowsTheTerminateRecord)
{
    EXPECT_TRUE(IsWhole(Usual() + "\x1a"));
    EXPECT_TRUE(IsWhole(Usual() + Sections().Bytes()));
}

TEST(IgesSections, PassesOverBlankLines)
{
    EXPECT_TRUE(IsWhole("\n   \n" + Usual() + "\n"));
    const QByteArray blank = QByteArray(80, ' ') + "\n";
    EXPECT_TRUE(IsWhole(blank + Usual()));
}

TEST(IgesSections, CountsLinesThatLettersOfSeveralBytesMakeLongerWithTheirSection)
{
    const QByteArray start = QByteArray("\xc3\xa4\xc3\xb6").leftJustified(74) + "S      1";
    const QByteArray global = QByteArray("\xc3\xa4,TTTT").leftJustified(73) + "G      2";
    const IgesLines lines = IgesLines().Line(start).Lines('G', 1).Line(global).Lines('G', 1);
    EXPECT_TRUE(IsWhole(IgesLines(lines).Lines('D', 4).Lines('P', 12).Terminate(kCounts)));
    EXPECT_FALSE(IsWhole(IgesLines(lines).Lines('G', 1).Lines('D', 4).Lines('P', 12).Terminate(kCounts)));
}

TEST(IgesSections, CountsLinesWhoseNumberIsNoneWithTheSectionBefore)
{
    const QByteArray line = QByteArray(72, 'x') + "T 1 of 7";
    EXPECT_TRUE(IsWhole(Sections(1, 3, 4, 11).Line(line).Terminate(kCounts)));
}

TEST(IgesSections, RefusesAFileWithoutTerminateRecord)
{
    EXPECT_FALSE(IsWhole(Sections()));
    EXPECT_FALSE(IsWhole(QByteArray()));
    EXPECT_FALSE(IsWhole(QByteArray("\n")));
    EXPECT_FALSE(IsWhole(QByteArray("no IGES file")));
}

TEST(IgesSections, RefusesAnyCutOfAFile)
{
    const QByteArray bytes = Usual();
    // With the first digit of the terminate record's own number all is there.
    const int whole = bytes.size() - 1;
    for (int size = 0; size < whole; ++size)
        ASSERT_FALSE(IsWhole(bytes.left(size))) << size;
    EXPECT_TRUE(IsWhole(bytes.left(whole)));
}

TEST(IgesSections, RefusesCountsThatAreNotThoseOfTheSections)
{
    EXPECT_FALSE(IsWhole(Sections(2).Terminate(kCounts)));
    EXPECT_FALSE(IsWhole(Sections(1, 2).Terminate(kCounts)));
    EXPECT_FALSE(IsWhole(Sections(1, 3, 6).Terminate(kCounts)));
    EXPECT_FALSE(IsWhole(Sections(1, 3, 4, 11).Terminate(kCounts)));
    EXPECT_FALSE(IsWhole(Sections(1, 3, 4, 13).Terminate(kCounts)));
}

TEST(IgesSections, RefusesCountsThatAreNoNumbers)
{
    EXPECT_FALSE(IsWhole(Sections().Terminate("")));
    EXPECT_FALSE(IsWhole(Sections().Terminate("S      1G      3D      4P     ")));
    EXPECT_FALSE(IsWhole(Sections().Terminate("S      1G      3D      4P    +12")));
    EXPECT_FALSE(IsWhole(Sections().Terminate("S      1G      3D      4P    1 2")));
    EXPECT_FALSE(IsWhole(IgesLines().Terminate("S       G       D       P       ")));
}

TEST(IgesSections, RefusesCountsInAnotherOrder)
{
    EXPECT_FALSE(IsWhole(Sections().Terminate("S      1G      3P     12D      4")));
}

TEST(IgesSections, ReadsLinesAcrossTheBlocksOfLargeFiles)
{
    // 81 bytes a line: the ends of the blocks fall into every part of one.
    const QByteArray counts = "S      1G      3D   2000P   9000";
    const IgesLines lines = Sections(1, 3, 2000, 9000);
    for (const char* const lineEnd : {"\n", "\r\n", ""})
        EXPECT_TRUE(IsWhole(IgesLines(lines).Terminate(counts).Bytes(lineEnd)));
    EXPECT_FALSE(IsWhole(IgesLines(lines).Lines('P', 1).Terminate(counts)));
}

} // namespace
