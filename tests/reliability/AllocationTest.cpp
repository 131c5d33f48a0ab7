#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include <QString>

#include <dlfcn.h>
#include <link.h>

#include "fileformat/stl/STLFile.h"
#include "tests/common/Directory.h"
#include "tests/common/OpenFiles.h"
#include "tests/common/WatchedNew.h"
#include "tests/reliability/Formats.h"

// Every allocation of this project's code, in turn, finds no memory. Those of other libraries do: what these
// do then is not ours to promise.

namespace {

struct Range {
    std::uintptr_t begin, end;
};

std::vector<Range> ourCode;
std::atomic<long> allocationsLeft{-1}; ///< below 0: none fails

int NoteOurCode(dl_phdr_info* info, std::size_t, void*)
{
    const QByteArray name = info->dlpi_name;
    // The program itself has no name.
    if (!name.isEmpty() && !name.contains("libKRCore"))
        return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& header = info->dlpi_phdr[i];
        if (header.p_type == PT_LOAD && (header.p_flags & PF_X) != 0)
            ourCode.push_back(
                {info->dlpi_addr + header.p_vaddr, info->dlpi_addr + header.p_vaddr + header.p_memsz});
    }
    return 0;
}

bool IsOurs(const void* caller)
{
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    for (const Range& range : ourCode) {
        if (address >= range.begin && address < range.end)
            return true;
    }
    return false;
}

bool IsEnoughFor(std::size_t, const void* caller)
{
    return allocationsLeft < 0 || !IsOurs(caller) || allocationsLeft-- != 0;
}

using namespace test;

/// Calls with the first, the second, ... allocation failing until none of ours is left to fail.
/// @param call  catches std::bad_alloc itself where it has to look at what is left behind
/// @return how many allocations failed
int FailEachAllocation(const std::function<void()>& call)
{
    ourCode.clear();
    dl_iterate_phdr(NoteOurCode, nullptr);
    WatchNew(IsEnoughFor);
    for (int count = 0;; ++count) {
        allocationsLeft = count;
        try {
            call();
        } catch (const std::bad_alloc&) {
            // One of the two promised ends; the other is a refusal.
        }
        const bool wasEnough = allocationsLeft >= 0;
        allocationsLeft = -1;
        if (wasEnough || testing::Test::HasFailure())
            return count;
    }
}

class Allocation : public testing::TestWithParam<Reader> {};
class AllocationOfWriter : public testing::TestWithParam<Writer> {};

INSTANTIATE_TEST_SUITE_P(EveryReader, Allocation, testing::ValuesIn(Readers()), NameOfFormat());
INSTANTIATE_TEST_SUITE_P(EveryWriter, AllocationOfWriter, testing::ValuesIn(Writers()), NameOfFormat());

} // namespace

// A reader that finds no memory throws, or refuses the file; Reader::read checks what it leaves behind then.
// What it allocated is freed: the leak sanitizer looks.
TEST_P(Allocation, ThatFailsEndsAReadWithoutAnOpenFile)
{
    const Directory directory;
    const QString path = directory.Path(QString::fromLatin1(GetParam().fileName));
    GetParam().writeSample(path);
    const QByteArray expected = GetParam().read(path);
    const int count = FailEachAllocation([&] {
        QByteArray result = expected;
        try {
            result = GetParam().read(path);
        } catch (const std::bad_alloc&) {
            EXPECT_FALSE(IsOpen(path));
            throw;
        }
        EXPECT_FALSE(IsOpen(path));
        EXPECT_TRUE(result.isEmpty() || result == expected);
    });
    // A texture file is Qt's work but for its fields.
    EXPECT_TRUE(count > 0 || GetParam().name == std::string("Texture"));
    EXPECT_EQ(GetParam().read(path), expected);
}

TEST_P(AllocationOfWriter, ThatFailsEndsAWriteWithoutAnOpenFile)
{
    const Directory directory;
    const QString path = directory.Path(QString::fromLatin1(GetParam().fileName));
    const int count = FailEachAllocation([&] {
        try {
            static_cast<void>(GetParam().write(path));
        } catch (const std::bad_alloc&) {
            // One of the two promised ends; the other is a refusal.
        }
        EXPECT_FALSE(IsOpen(path));
    });
    EXPECT_GT(count, 0);
    EXPECT_TRUE(GetParam().write(path));
}

TEST(AllocationOfStitching, ThatFailsThrowsAndIsForgotten)
{
    std::vector<Vector3D<float>> corners;
    for (int i = 0; i < 60; ++i)
        corners.push_back({float(i % 7), float(i % 5), float(i / 3)});
    const auto stitch = [&] {
        std::vector<Vector3D<float>> normals(20);
        std::vector<TriangleFace> faces;
        std::vector<Vector3D<float>> vertices;
        STLFile::StitchTriangleSoup(corners, normals, faces, vertices);
        return faces.size();
    };
    const std::size_t expected = stitch();
    EXPECT_GT(FailEachAllocation([&] { EXPECT_EQ(stitch(), expected); }), 0);
}
