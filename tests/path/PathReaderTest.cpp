#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/common/Directory.h"
#include "tests/path/PathBytes.h"
#include "tests/path/PlainPathFile.h"

namespace {

using test::Directory;
using test::PathBytes;
using test::Paths;
using test::Point;
using Names = std::map<int, QString>;

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

class PathReader : public testing::Test {
protected:
    /// Reads a file of these bytes into maps that hold something already.
    bool Read(const QByteArray& bytes) { return ReadFile(m_directory.Write(bytes)); }
    bool ReadFile(const QString& path)
    {
        m_paths = {{77, {{{1, 1}}}}};
        m_names = {{77, QStringLiteral("old")}};
        return DXFPathFile::ReadDXFPathFile(m_paths, m_names, path);
    }
    bool FailsEmpty(const QByteArray& bytes) { return !Read(bytes) && m_paths.empty() && m_names.empty(); }

    Directory m_directory;
    Paths m_paths;
    Names m_names;
};

} // namespace

TEST_F(PathReader, ReadsFieldByField)
{
    ASSERT_TRUE(Read(test::SmallFile()));
    EXPECT_EQ(m_paths, test::SmallPaths());
    EXPECT_EQ(m_names, (Names{{-7, QString::fromUtf8("A\xC3\x84")}, {9, QString()}}));
}

TEST_F(PathReader, CountOfZeroGivesEmptyMaps)
{
    ASSERT_TRUE(Read(QByteArray(4, '\0')));
    EXPECT_TRUE(m_paths.empty());
    EXPECT_TRUE(m_names.empty());
}

TEST_F(PathReader, EveryNumberComesBackBitForBit)
{
    using Limits = std::numeric_limits<double>;
    const Paths paths = {{1, {{{-0.0, Limits::denorm_min()}, {Limits::infinity(), -Limits::infinity()}}}},
                         {2, {{{Limits::quiet_NaN(), Limits::max()}, {Limits::lowest(), 0.1}}}}};
    const QString path = m_directory.Path(QStringLiteral("numbers.path"));
    ASSERT_TRUE(DXFPathFile::WriteDXFPathFile(paths, {}, path));
    ASSERT_TRUE(ReadFile(path));
    EXPECT_TRUE(test::HaveSameBits(m_paths, paths));
}

TEST_F(PathReader, EmptyContoursAndSetsComeBackEmpty)
{
    ASSERT_TRUE(Read(PathBytes().Integers({2, 3, 0, 2, 0, 0, 4, 0, 0})));
    EXPECT_EQ(m_paths, (Paths{{3, {{}, {}}}, {4, {}}}));
    EXPECT_EQ(m_names, (Names{{3, QString()}, {4, QString()}}));
}

TEST_F(PathReader, LastOfSetsWithTheSameIdReplacesTheOthers)
{
    const PathBytes bytes = PathBytes()
                                .Integers({3, 5, 4})
                                .Text("QQA=")
                                .Integers({1, 1})
                                .Reals({1, 2})
                                .Integers({6, 0, 0, 5, 4})
                                .Text("QgA=")
                                .Integers({1, 1})
                                .Reals({3, 4});
    ASSERT_TRUE(Read(bytes));
    EXPECT_EQ(m_paths, (Paths{{5, {{{3, 4}}}}, {6, {}}}));
    EXPECT_EQ(m_names, (Names{{5, QStringLiteral("B")}, {6, QString()}}));
}

TEST_F(PathReader, LaterSetWithoutNameOrContoursReplacesToo)
{
    const PathBytes bytes =
        PathBytes().Integers({2, 5, 4}).Text("QQA=").Integers({1, 1}).Reals({1, 2}).Integers({5, 0, 0});
    ASSERT_TRUE(Read(bytes));
    EXPECT_EQ(m_paths, (Paths{{5, {}}}));
    EXPECT_EQ(m_names, (Names{{5, QString()}}));
}

TEST_F(PathReader, SetsMayStandInAnyOrder)
{
    ASSERT_TRUE(Read(PathBytes().Integers({3, kMost, 0, 0, kLeast, 0, 0, 0, 0, 0})));
    EXPECT_EQ(m_paths, (Paths{{kLeast, {}}, {0, {}}, {kMost, {}}}));
}

TEST_F(PathReader, NothingFollowsANegativeCount)
{
    for (const int negative : {-1, -12, kLeast}) {
        ASSERT_TRUE(Read(PathBytes().Integers({negative})));
        EXPECT_TRUE(m_paths.empty());
        ASSERT_TRUE(Read(PathBytes().Integers({2, 1, negative, negative, 2, 0, 1, negative})));
        EXPECT_EQ(m_paths, (Paths{{1, {}}, {2, {{}}}}));
        EXPECT_EQ(m_names, (Names{{1, QString()}, {2, QString()}}));
    }
}

TEST_F(PathReader, PassesOverWhatStandsBehindTheLastSet)
{
    ASSERT_TRUE(Read(QByteArray(test::SmallFile()) + "surplus"));
    EXPECT_EQ(m_paths, test::SmallPaths());
}

TEST_F(PathReader, TruncationAtEveryByteFailsWithEmptyMaps)
{
    const QByteArray whole = test::SmallFile();
    ASSERT_EQ(whole.size(), 96);
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_TRUE(FailsEmpty(whole.left(size))) << size;
    EXPECT_TRUE(Read(whole));
}

TEST_F(PathReader, EveryChangeOfOneByteReadsAsFieldByField)
{
    const QByteArray whole = test::SmallFile();
    for (int i = 0; i < whole.size(); ++i) {
        for (int change = 1; change < 256; change += change < 8 ? 1 : 37) {
            QByteArray bytes = whole;
            bytes[i] = static_cast<char>(bytes[i] ^ change);
            const auto expected = test::ReadPathsPlainly(bytes);
            ASSERT_EQ(Read(bytes), expected.has_value()) << i << ' ' << change;
            EXPECT_TRUE(test::HaveSameBits(m_paths, expected ? expected->paths : Paths()));
            EXPECT_EQ(m_names, expected ? expected->names : Names());
        }
    }
}

TEST_F(PathReader, CountsBeyondTheFileFail)
{
    for (const int count : {1, 1000, kMost}) {
        EXPECT_TRUE(FailsEmpty(PathBytes().Integers({count}))) << "sets";
        EXPECT_TRUE(FailsEmpty(PathBytes().Integers({1, 5, count}))) << "name";
        EXPECT_TRUE(FailsEmpty(PathBytes().Integers({1, 5, 0, count}))) << "contours";
        EXPECT_TRUE(FailsEmpty(PathBytes().Integers({1, 5, 0, 1, count}))) << "points";
    }
}

TEST_F(PathReader, FailureInTheLastSetLeavesNothingOfTheOthers)
{
    EXPECT_TRUE(FailsEmpty(PathBytes().Integers({2, 1, 0, 0, 2, 0, 1})));
}

TEST_F(PathReader, DecodesNamesOfOddByteCounts)
{
    ASSERT_TRUE(Read(PathBytes().Integers({1, 5, 4}).Text("QQBC").Integers({0})));
    EXPECT_EQ(m_names, (Names{{5, QStringLiteral("AB")}}));
}

TEST_F(PathReader, EmptiesTheMapsForAFileThatCannotBeOpened)
{
    EXPECT_FALSE(ReadFile(m_directory.Path(QStringLiteral("missing"))));
    EXPECT_TRUE(m_paths.empty());
    EXPECT_TRUE(m_names.empty());
    EXPECT_FALSE(ReadFile(QString()));
    EXPECT_TRUE(m_paths.empty());
}

TEST_F(PathReader, RefusesWhatIsNoPlainFile)
{
    EXPECT_FALSE(ReadFile(m_directory.Path(QString()))) << "a directory";
    const QString pipe = m_directory.Path(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_FALSE(ReadFile(pipe));
    EXPECT_FALSE(ReadFile(QStringLiteral("/dev/zero")));
}

TEST_F(PathReader, FileNameMayBeOneOfTheNames)
{
    Names names = {{3, m_directory.Write(test::SmallFile())}};
    EXPECT_TRUE(DXFPathFile::ReadDXFPathFile(m_paths, names, names[3]));
    EXPECT_EQ(m_paths, test::SmallPaths());
}

TEST_F(PathReader, ReadsContoursOfMoreThanABlock)
{
    Paths paths;
    for (const std::size_t count : {4095u, 4096u, 4097u, 16384u, 16385u, 50000u}) {
        DXFPathFile::Contour contour;
        for (std::size_t i = 0; i < count; ++i)
            contour.emplace_back(static_cast<double>(i), -static_cast<double>(count));
        paths[static_cast<int>(count)] = {contour, {}, contour};
    }
    const QString path = m_directory.Path(QStringLiteral("large.path"));
    ASSERT_TRUE(DXFPathFile::WriteDXFPathFile(paths, {}, path));
    ASSERT_TRUE(ReadFile(path));
    EXPECT_EQ(m_paths, paths);
}

TEST(PathFileThreads, ReadAndWriteDifferentFilesAtOnce)
{
    const Directory directory;
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&directory, number] {
            const QString path = directory.Path(QString::number(number));
            for (int round = 0; round < 50; ++round) {
                const Paths written = {{number, {DXFPathFile::Contour(1000, Point(number, round))}}};
                Paths paths;
                Names names;
                EXPECT_TRUE(DXFPathFile::WriteDXFPathFile(written, {{number, "name"}}, path));
                EXPECT_TRUE(DXFPathFile::ReadDXFPathFile(paths, names, path));
                EXPECT_EQ(paths, written);
                EXPECT_EQ(names, (Names{{number, QStringLiteral("name")}}));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}
