#include "fileformat/stl/STLFile.h"

#include <cstring>

#include <gtest/gtest.h>

#include <fcntl.h>

#include "tests/stl/STLBuilders.h"

namespace {

using test::Directory;

// A directory opens like a file at the level of the system, and no read from it succeeds.
void OpenADirectory(QFile& file)
{
    const int descriptor = ::open("/", O_RDONLY | O_DIRECTORY);
    ASSERT_GE(descriptor, 0);
    ASSERT_TRUE(
        file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle));
}

} // namespace

TEST(STLSkipWhiteSpace, FindsTheWordAndStandsBehindIt)
{
    const Directory directory;
    QFile file(directory.Write("  x Solid rest"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray probe;
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 1);
    EXPECT_EQ(probe, QByteArray("Solid"));
    EXPECT_EQ(file.pos(), 9);
    EXPECT_EQ(file.readAll(), QByteArray(" rest"));
}

TEST(STLSkipWhiteSpace, ContinuesAProbe)
{
    const Directory directory;
    QFile file(directory.Write("d"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray probe("xsoli");
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 1);
    EXPECT_EQ(probe, QByteArray("solid"));
}

TEST(STLSkipWhiteSpace, ReportsTheEndOfTheFileAndOfTheSearch)
{
    const Directory directory;
    QFile file(directory.Write("ab c" + QByteArray(20'000, 'x')));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray probe;
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 2);
    EXPECT_EQ(file.pos(), 10'241 + 1);
    EXPECT_EQ(probe, QByteArray("xxxxx"));
    ASSERT_TRUE(file.seek(file.size() - 2));
    probe.clear();
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 2);
    EXPECT_EQ(probe, QByteArray("xx"));
    EXPECT_TRUE(file.atEnd());
}

TEST(STLSkipWhiteSpace, WhiteSpaceEmptiesTheProbe)
{
    const Directory directory;
    QFile file(directory.Write("so \tli"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray probe("abcde");
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 2);
    EXPECT_EQ(probe, QByteArray("li"));
}

TEST(STLSkipWhiteSpace, ReportsAFailedRead)
{
    QFile file;
    ASSERT_NO_FATAL_FAILURE(OpenADirectory(file));
    QByteArray probe;
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 0);
}

TEST(STLSkipWhiteSpace, EndsAtCarriageReturnsThatTextModeDrops)
{
    const Directory directory;
    QFile file(directory.Write("a\r\r"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QByteArray probe;
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 2);
    EXPECT_EQ(probe, QByteArray("a"));
}

TEST(STLNextToken, FillsTheBufferWithZerosAndTheToken)
{
    const Directory directory;
    QFile file(directory.Write(" ,ver.tex+1;;x"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    char buffer[16];
    std::memset(buffer, '?', sizeof buffer);
    STLFile::getNextToken(file, buffer, sizeof buffer);
    EXPECT_EQ(QByteArray(buffer, sizeof buffer), QByteArray("ver.tex+1").leftJustified(16, '\0'));
    EXPECT_EQ(file.pos(), 12);
    STLFile::getNextToken(file, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "x");
    STLFile::getNextToken(file, buffer, sizeof buffer);
    EXPECT_EQ(QByteArray(buffer, sizeof buffer), QByteArray(16, '\0'));
}

TEST(STLNextToken, CutsALongTokenOffButReadsItWhole)
{
    const Directory directory;
    QFile file(directory.Write(QByteArray(1000, 'a') + " b"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    char buffer[256];
    std::memset(buffer, '?', sizeof buffer);
    STLFile::getNextToken(file, buffer, 255);
    EXPECT_EQ(QByteArray(buffer), QByteArray(254, 'a'));
    EXPECT_EQ(buffer[255], '?');
    STLFile::getNextToken(file, buffer, 255);
    EXPECT_STREQ(buffer, "b");
}

TEST(STLNextToken, IsEmptyWhereReadingFails)
{
    QFile file;
    ASSERT_NO_FATAL_FAILURE(OpenADirectory(file));
    char buffer[] = {'?', '?', '?', '?'};
    STLFile::getNextToken(file, buffer, sizeof buffer);
    EXPECT_EQ(QByteArray(buffer, sizeof buffer), QByteArray(4, '\0'));
}

TEST(STLNextToken, TouchesNothingWithoutABuffer)
{
    const Directory directory;
    QFile file(directory.Write("abc"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    char buffer[2] = {'?', '?'};
    STLFile::getNextToken(file, buffer, 0);
    STLFile::getNextToken(file, buffer, -3);
    EXPECT_EQ(buffer[0], '?');
    EXPECT_EQ(file.pos(), 0);
    STLFile::getNextToken(file, buffer, 1);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[1], '?');
}
