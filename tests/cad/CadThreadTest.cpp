#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <tbb/global_control.h>
#include <tbb/task_arena.h>

#include "tests/cad/CadFiles.h"
#include "tests/cad/CadLoadSupport.h"
#include "tests/cad/CadSummary.h"
#include "tests/common/Directory.h"

// The same file gives the same meshes, however many threads work for a load and however many load.

namespace {

using namespace test;

class CadThreads : public testing::Test {
protected:
    CadThreads()
    {
        const SampleParts parts = MakeSampleParts();
        for (const char* const name : {"whole.step", "parts.iges"})
            m_paths.append(m_directory.Path(QString::fromLatin1(name)));
        EXPECT_TRUE(WriteSTEP(m_paths[0], {parts.whole}));
        EXPECT_TRUE(WriteIGES(m_paths[1], {parts.pin, parts.sheet, parts.ball, parts.pair, parts.sheet}));
    }

    Directory m_directory;
    QStringList m_paths;
};

} // namespace

TEST_F(CadThreads, TwentyLoadsOfAFileGiveTheSameMeshes)
{
    for (const QString& path : m_paths) {
        const CadSummary first = LoadSummary(path);
        ASSERT_GE(first.meshes.size(), 5u);
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(LoadSummary(path), first) << i;
    }
}

TEST_F(CadThreads, AnyNumberOfWorkersGivesTheSameMeshes)
{
    for (const QString& path : m_paths) {
        const CadSummary first = LoadSummary(path);
        for (const int workerCount : {1, 2, 8}) {
            // Both are needed for more workers than there are cores.
            const tbb::global_control limit(tbb::global_control::max_allowed_parallelism,
                                            static_cast<std::size_t>(workerCount));
            tbb::task_arena arena(workerCount);
            for (int i = 0; i < 5; ++i)
                arena.execute([&] { EXPECT_EQ(LoadSummary(path), first) << workerCount; });
        }
    }
}

TEST_F(CadThreads, LoadsOnSeveralThreadsGiveTheSameMeshes)
{
    const CadSummary expected[] = {LoadSummary(m_paths[0]), LoadSummary(m_paths[1])};
    std::vector<std::thread> threads;
    std::atomic<int> differenceCount{0};
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 3; ++i) {
                const int file = (thread + i) % 2;
                differenceCount += LoadSummary(m_paths[file]) == expected[file] ? 0 : 1;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(differenceCount, 0);
}

// A load that ends by an exception must leave its turn to the others.
TEST_F(CadThreads, LoadsThatThrowDoNotHinderOthers)
{
    const CadSummary expected = LoadSummary(m_paths[0]);
    std::atomic<int> failureCount{0}, differenceCount{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 3; ++i)
                if (thread % 2 == 0)
                    failureCount += EndsInStandardFailure([&] { LoadSummary(m_paths[0], 0); }) ? 1 : 0;
                else
                    differenceCount += LoadSummary(m_paths[0]) == expected ? 0 : 1;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failureCount, 6);
    EXPECT_EQ(differenceCount, 0);
    EXPECT_EQ(OpenDocumentCount(), 0);
}
