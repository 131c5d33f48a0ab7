#include <atomic>
#include <cstdio>
#include <exception>
#include <thread>

#include "tests/cad/CadSummary.h"

using namespace test;

namespace {

constexpr std::size_t kThreadCount = 4;
constexpr std::size_t kLoadsPerThread = 3;
constexpr const char* kFiles[] = {"whole.step", "solids.iges", "parts.step", "faces.iges"};
constexpr std::size_t kFileCount = std::size(kFiles);

QString PathOf(const char* directory, std::size_t file)
{
    return QString::fromLocal8Bit(directory) + QLatin1Char('/') + QLatin1String(kFiles[file % kFileCount]);
}

std::vector<CadSummary> LoadOnThreads(const char* directory)
{
    std::vector<CadSummary> summaries(kThreadCount * kLoadsPerThread);
    std::atomic<bool> mayStart{false};
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < kThreadCount; ++thread)
        threads.emplace_back([&, thread] {
            while (!mayStart)
                std::this_thread::yield();
            for (std::size_t load = 0; load < kLoadsPerThread; ++load)
                summaries[thread * kLoadsPerThread + load] = LoadSummary(PathOf(directory, thread + load));
        });
    mayStart = true;
    for (std::thread& thread : threads)
        thread.join();
    return summaries;
}

} // namespace

/// Loads files of both formats on four threads at once, from the first use of OpenCASCADE in the process on,
/// and again one after another. 0 when both give the same to the last bit.
int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const std::vector<CadSummary> summaries = LoadOnThreads(argv[1]);
    int differenceCount = 0;
    for (std::size_t i = 0; i < summaries.size(); ++i) {
        const CadSummary expected = LoadSummary(PathOf(argv[1], i / kLoadsPerThread + i % kLoadsPerThread));
        const bool isSame = !expected.meshes.empty() && summaries[i] == expected;
        differenceCount += isSame ? 0 : 1;
    }
    std::printf("%zu loads, %d of them differ\n", summaries.size(), differenceCount);
    return differenceCount == 0 ? 0 : 1;
}
