#pragma once

#include <vector>

#include <QString>

#include <sys/resource.h>
#include <time.h>

// What PeerComparison runs: every job of every engine, this library's among them.

namespace peers {

struct Outcome {
    double seconds = 0;
    double peakBytes = 0; // beyond what the process held before
    long vertices = 0;    // -1 for a failure
};

inline double CpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + 1e-9 * double(now.tv_nsec);
}

inline double PeakBytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) * 1024;
}

/// @param work  returns the number of vertices, 1 for a save, or -1
template<class Work>
Outcome Measure(Work work)
{
    Outcome outcome;
    const double peakBefore = PeakBytes(), before = CpuSeconds();
    outcome.vertices = work();
    outcome.seconds = CpuSeconds() - before;
    outcome.peakBytes = PeakBytes() - peakBefore;
    return outcome;
}

enum class Job { LoadBinarySTL, LoadTextSTL, LoadOBJ, Load3MF, SaveBinarySTL, SaveTextSTL, SaveOBJ, Save3MF };

/// One engine's way to do a job. What is saved comes from a binary STL file, or from a package when it
/// becomes one; loading it is not measured. It goes to OutputOf() its path.
struct Entry {
    Job job;
    const char* engine;
    Outcome (*run)(const QString& path);
};

/// This library is the first engine of each job.
std::vector<Entry> STLEntries();
std::vector<Entry> OBJEntries();
std::vector<Entry> ThreeMFEntries();

inline QString OutputOf(const QString& path)
{
    return path + QStringLiteral(".out");
}

} // namespace peers
