#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include <sys/resource.h>

#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include "benchmarks/ImageBenchmarkData.h"
#include "core/common/LargePages_p.h"
#include "core/mesh/Mesh.h"
#include "fileformat/image/ImageFile.h"

// A relief of 2048 x 2048 pixels, 16.8 million faces, beside what cannot be saved: Qt's decoding, and filling
// as much memory as the result takes.

namespace {

constexpr int kSide = bench::kReliefSide;
constexpr std::size_t kVertexCount = std::size_t(2) * kSide * kSide;
constexpr std::size_t kFaceCount = 2 * kVertexCount - 4;

// Hills with a little noise, which compress as scans and height maps do.
QImage Hills()
{
    std::mt19937 random(1);
    QImage image(kSide, kSide, QImage::Format_RGB32);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            const double hill = std::sin(x * 0.011) * std::cos(y * 0.007) + std::sin((x + 2 * y) * 0.003);
            const int level = static_cast<int>(128 + 60 * hill) + static_cast<int>(random() % 4);
            image.setPixel(x, y, qRgb(level, level, level));
        }
    return image;
}

void CountFaces(benchmark::State& state)
{
    state.counters["face"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * static_cast<double>(kFaceCount),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void DecodePicture()
{
    QImage image = QImageReader(bench::PictureOfHills()).read();
    benchmark::DoNotOptimize(image.bits());
}

// The most memory the process has had so far, as a multiple of the relief. Run one relief alone for it.
double PeakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    constexpr double kReliefBytes = 12.0 * (double(kVertexCount) + double(kFaceCount));
    return static_cast<double>(usage.ru_maxrss) * 1024 / kReliefBytes;
}

enum class Pages { Usual, Large };

void FillLists(Pages pages)
{
    std::vector<Vector3D<float>> vertices;
    std::vector<TriangleFace> faces;
    if (pages == Pages::Large) {
        kr::ReserveLarge(vertices, kVertexCount);
        kr::ReserveLarge(faces, kFaceCount);
    }
    vertices.assign(kVertexCount, {1, 2, 3});
    faces.assign(kFaceCount, {1, 2, 3});
    benchmark::DoNotOptimize(vertices.data());
    benchmark::DoNotOptimize(faces.data());
    benchmark::ClobberMemory();
}

void Decode(benchmark::State& state)
{
    for (auto _ : state)
        DecodePicture();
    CountFaces(state);
}

void DecodeAndFill(benchmark::State& state, Pages pages)
{
    for (auto _ : state) {
        DecodePicture();
        FillLists(pages);
    }
    CountFaces(state);
}

void MakeRelief(benchmark::State& state, int blurRadius)
{
    for (auto _ : state) {
        Mesh mesh(0.03F);
        if (!ImageFile::LoadFile(bench::PictureOfHills(), mesh, 100, 80, blurRadius, true, 1, 5, 100))
            return state.SkipWithError("cannot load");
        benchmark::DoNotOptimize(mesh.GetVolume());
    }
    state.counters["peak"] = PeakMemory();
    CountFaces(state);
}

} // namespace

QString bench::PictureOfHills()
{
    static const QTemporaryDir kDirectory;
    static const QString kPath = kDirectory.filePath(QStringLiteral("hills.png"));
    static const bool kIsSaved = Hills().save(kPath);
    return kIsSaved ? kPath : QString();
}

BENCHMARK(Decode)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DecodeAndFill, OnUsualPages, Pages::Usual)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DecodeAndFill, OnLargePages, Pages::Large)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(MakeRelief, Plain, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(MakeRelief, Blurred, 5)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
