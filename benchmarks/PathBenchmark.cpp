#include <algorithm>
#include <map>
#include <memory>

#include "benchmarks/BenchmarkData.h"
#include "fileformat/path/DXFPathFile.h"

// Path files of 10 million points in few contours, and of as many in short ones, beside their baselines:
// copying the points in memory, reading the bytes, writing the bytes.

namespace {

using Contour = DXFPathFile::Contour;

constexpr int kPoints = 10'000'000;
constexpr int kPointsOfShortContours = 1'000'000;

DXFPathFile::Paths Split(int pointCount, int pointsPerContour)
{
    DXFPathFile::Paths paths;
    std::vector<Contour>& contours = paths[1];
    for (int begin = 0; begin < pointCount; begin += pointsPerContour) {
        Contour& contour = contours.emplace_back();
        for (int i = 0; i < pointsPerContour; ++i)
            contour.emplace_back(begin + i, 0.5 * i);
    }
    return paths;
}

struct Sample {
    Sample(int pointCount, int pointsPerContour)
        : count(pointCount),
          paths(Split(pointCount, pointsPerContour)),
          isSaved(DXFPathFile::WriteDXFPathFile(paths, {}, path))
    {}

    static const Sample& Few()
    {
        static const Sample kSample(kPoints, kPoints / 4);
        return kSample;
    }
    static const Sample& Short()
    {
        static const Sample kSample(kPointsOfShortContours, 10);
        return kSample;
    }

    int count;
    DXFPathFile::Paths paths;
    bench::OutputDirectory directory;
    QString path = directory.File();
    bool isSaved;
};

void CountPoints(benchmark::State& state, int pointCount)
{
    state.counters["point"] = benchmark::Counter(static_cast<double>(state.iterations()) * pointCount,
                                                 benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Read(benchmark::State& state, const Sample& sample)
{
    for (auto _ : state) {
        DXFPathFile::Paths paths;
        std::map<int, QString> names;
        if (!sample.isSaved || !DXFPathFile::ReadDXFPathFile(paths, names, sample.path))
            return state.SkipWithError("cannot read");
        benchmark::DoNotOptimize(paths);
    }
    CountPoints(state, sample.count);
}

void Write(benchmark::State& state, const Sample& sample)
{
    const bench::OutputDirectory directory;
    for (auto _ : state) {
        if (!DXFPathFile::WriteDXFPathFile(sample.paths, {}, directory.File()))
            return state.SkipWithError("cannot write");
    }
    CountPoints(state, sample.count);
}

void CopyPoints(benchmark::State& state)
{
    for (auto _ : state) {
        DXFPathFile::Paths copy = Sample::Few().paths;
        benchmark::DoNotOptimize(copy);
    }
    CountPoints(state, kPoints);
}
// All bytes into fresh memory, as whoever keeps them has to.
void ReadAllBytes(benchmark::State& state)
{
    for (auto _ : state) {
        QFile file(Sample::Few().path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return state.SkipWithError("cannot read");
        const std::unique_ptr<char[]> bytes(new char[static_cast<std::size_t>(file.size())]);
        benchmark::DoNotOptimize(file.read(bytes.get(), file.size()));
    }
    CountPoints(state, kPoints);
}
void ReadBytes(benchmark::State& state)
{
    bench::ReadBytes(state, Sample::Few().path, kPoints);
    state.counters.clear();
    CountPoints(state, kPoints);
}
void ReadFewContours(benchmark::State& state)
{
    Read(state, Sample::Few());
}
void ReadShortContours(benchmark::State& state)
{
    Read(state, Sample::Short());
}
void WriteBytes(benchmark::State& state)
{
    bench::WriteBytes(state, Sample::Few().path, kPoints);
    state.counters.clear();
    CountPoints(state, kPoints);
}
void WriteFewContours(benchmark::State& state)
{
    Write(state, Sample::Few());
}
void WriteShortContours(benchmark::State& state)
{
    Write(state, Sample::Short());
}

} // namespace

BENCHMARK(CopyPoints)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadAllBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadFewContours)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadShortContours)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteFewContours)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteShortContours)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
