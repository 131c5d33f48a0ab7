#include <algorithm>
#include <atomic>
#include <limits>

#include <gtest/gtest.h>

#include "tests/common/Directory.h"
#include "tests/common/WatchedNew.h"
#include "tests/path/PathBytes.h"

namespace {

using test::PathBytes;

std::atomic<std::size_t> largestRequest{0};

bool NoteRequest(std::size_t size, const void*)
{
    largestRequest = std::max<std::size_t>(largestRequest, size);
    return true;
}

constexpr std::size_t kReadingItself = std::size_t(256) * 1024;

bool IsRead(const QByteArray& bytes)
{
    const test::Directory directory;
    const QString path = directory.Write(bytes);
    DXFPathFile::Paths paths;
    std::map<int, QString> names;
    largestRequest = 0;
    test::WatchNew(NoteRequest);
    return DXFPathFile::ReadDXFPathFile(paths, names, path);
}

} // namespace

TEST(PathMemory, ClaimsAreComparedWithTheFileFirst)
{
    const QByteArray someBytes(1000, '\0');
    for (const int count : {100'000, 100'000'000, std::numeric_limits<int>::max()}) {
        EXPECT_FALSE(IsRead(PathBytes().Integers({count}).Text(someBytes))) << "sets";
        EXPECT_LT(largestRequest, kReadingItself);
        EXPECT_FALSE(IsRead(PathBytes().Integers({1, 5, count}).Text(someBytes))) << "name";
        EXPECT_LT(largestRequest, kReadingItself);
        EXPECT_FALSE(IsRead(PathBytes().Integers({1, 5, 0, count}).Text(someBytes))) << "contours";
        EXPECT_LT(largestRequest, kReadingItself);
        EXPECT_FALSE(IsRead(PathBytes().Integers({1, 5, 0, 1, count}).Text(someBytes))) << "points";
        EXPECT_LT(largestRequest, kReadingItself);
    }
}

TEST(PathMemory, ContourTakesAsMuchAsItsPoints)
{
    const QByteArray points(1'600'000, '\0');
    EXPECT_TRUE(IsRead(PathBytes().Integers({1, 5, 0, 1, 100'000}).Text(points)));
    EXPECT_EQ(largestRequest, 1'600'000u);
}
