#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "tests/common/Directory.h"
#include "tests/reliability/Formats.h"
#include "tests/reliability/StoppedClock.h"

// The same file gives the same result, however often and on however many threads.

namespace {

using namespace test;

constexpr int kRepeats = 100;

class Repeat : public testing::TestWithParam<Reader> {
protected:
    QString NewSample(const Directory& directory) const
    {
        const QString path = directory.Path(QString::fromLatin1(GetParam().fileName));
        GetParam().writeSample(path);
        return path;
    }
    /// How many of the reads give something else.
    int Differences(const QString& path, const QByteArray& expected, int count) const
    {
        int differences = 0;
        for (int i = 0; i < count; ++i)
            differences += GetParam().read(path) == expected ? 0 : 1;
        return differences;
    }

    Directory m_directory;
    QString m_path = NewSample(m_directory);
    QByteArray m_expected = GetParam().read(m_path);
};

/// OpenCASCADE takes its time, and the turns that its readers take are tested elsewhere.
int RepeatsOf(const Reader& reader, int whereItTakesLong)
{
    return reader.work == Work::OpenCascade ? whereItTakesLong : kRepeats;
}

class RepeatWrite : public testing::TestWithParam<Writer> {};

INSTANTIATE_TEST_SUITE_P(EveryReader, Repeat, testing::ValuesIn(AllReaders()), NameOfFormat());
INSTANTIATE_TEST_SUITE_P(EveryWriter, RepeatWrite, testing::ValuesIn(Writers()), NameOfFormat());

} // namespace

TEST_P(Repeat, HundredReadsGiveTheSame)
{
    ASSERT_FALSE(m_expected.isEmpty());
    EXPECT_EQ(Differences(m_path, m_expected, RepeatsOf(GetParam(), 10)), 0);
}

TEST_P(Repeat, EightThreadsReadFilesOfTheirOwnAsOneDoes)
{
    constexpr std::size_t kThreads = 8;
    const int count = RepeatsOf(GetParam(), 3);
    std::array<Directory, kThreads> directories;
    std::array<QString, kThreads> paths;
    for (std::size_t i = 0; i < kThreads; ++i)
        paths[i] = NewSample(directories[i]);
    std::array<int, kThreads> differences = {};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] { differences[i] = Differences(paths[i], m_expected, count); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(differences, (std::array<int, kThreads>{}));
}

TEST_P(Repeat, TwoThreadsReadOneFileAsOneDoes)
{
    const int count = RepeatsOf(GetParam(), 3);
    int differences = 0;
    std::thread other([&] { differences = Differences(m_path, m_expected, count); });
    EXPECT_EQ(Differences(m_path, m_expected, count), 0);
    other.join();
    EXPECT_EQ(differences, 0);
}

TEST(StoppedClock, IsTheOneThatWritersLookAt)
{
    const StoppedClock clock;
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("model.stl"));
    ASSERT_TRUE(Writers().front().write(path));
    EXPECT_TRUE(Directory::Read(path).left(80).contains("-03-2021 "));
}

TEST_P(RepeatWrite, HundredFilesOfOneMomentAreTheSameBytes)
{
    const StoppedClock clock;
    const Directory directory;
    const QString path = directory.Path(QString::fromLatin1(GetParam().fileName));
    ASSERT_TRUE(GetParam().write(path));
    const QByteArray expected = Directory::Read(path);
    EXPECT_FALSE(expected.isEmpty());
    int differences = 0;
    for (int i = 0; i < kRepeats; ++i) {
        EXPECT_TRUE(GetParam().write(path));
        differences += Directory::Read(path) == expected ? 0 : 1;
    }
    EXPECT_EQ(differences, 0);
}

TEST_P(RepeatWrite, EightThreadsWriteTheBytesThatOneWrites)
{
    const StoppedClock clock;
    const Directory directory;
    const auto path = [&](std::size_t i) {
        return directory.Path(QString::number(i) + QString::fromLatin1(GetParam().fileName));
    };
    ASSERT_TRUE(GetParam().write(path(0)));
    std::vector<std::thread> threads;
    for (std::size_t i = 1; i <= 8; ++i) {
        threads.emplace_back([&, i] {
            for (int repeat = 0; repeat < 20; ++repeat)
                static_cast<void>(GetParam().write(path(i)));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t i = 1; i <= 8; ++i)
        EXPECT_EQ(Directory::Read(path(i)), Directory::Read(path(0))) << i;
}
