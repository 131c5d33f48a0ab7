#include <cstdlib>
#include <limits>
#include <new>

#include <gtest/gtest.h>

#include "tests/common/Directory.h"
#include "tests/path/PathBytes.h"

// Every allocation by new in the program passes here.
namespace {

std::size_t largestRequest = 0;

void* Allocate(std::size_t size)
{
    largestRequest = size > largestRequest ? size : largestRequest;
    if (void* const memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return Allocate(size);
}
void* operator new[](std::size_t size)
{
    return Allocate(size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

using test::PathBytes;

constexpr std::size_t kReadingItself = std::size_t(256) * 1024;

bool IsRead(const QByteArray& bytes)
{
    const test::Directory directory;
    const QString path = directory.Write(bytes);
    DXFPathFile::Paths paths;
    std::map<int, QString> names;
    largestRequest = 0;
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
