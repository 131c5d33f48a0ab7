#include <random>

#include <QBuffer>
#include <QImage>
#include <QUuid>

#include "benchmarks/BenchmarkData.h"
#include "core/mesh/MeshTextureInfo.h"
#include "fileformat/texture/TextureFile.h"

// Texture files of 2048 x 2048 pixels, beside what Qt takes to encode and decode the same picture alone.

namespace {

constexpr int kSide = 2048;

// Grain in large soft shapes, as in photographs of surfaces: a PNG file of some 4 MB.
QImage Surface()
{
    std::mt19937 random(1);
    QImage image(kSide, kSide, QImage::Format_RGB32);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const double shape = 100 + 60 * std::sin(x * 0.011 + 3 * std::sin(y * 0.007));
            const int level = static_cast<int>(shape) + static_cast<int>(random() % 4);
            image.setPixel(x, y, qRgb(level, level * 3 / 4, level / 2));
        }
    }
    return image;
}

struct Sample {
    Sample()
    {
        MeshTextureInfo info;
        isReady = info.load(image, false, false, false, 0) && texture.Load(&info, {}, QUuid()) &&
                  texture.SaveFile(path) && image.save(&m_buffer, "PNG");
    }
    static const Sample& Get()
    {
        static const Sample kSample;
        return kSample;
    }

    QImage image = Surface();
    TextureFile texture;
    bench::OutputDirectory directory;
    QString path = directory.File();
    QByteArray png;
    bool isReady = false;

private:
    QBuffer m_buffer{&png};
};

void EncodePng(benchmark::State& state)
{
    for (auto _ : state) {
        QByteArray png;
        QBuffer buffer(&png);
        if (!buffer.open(QIODevice::WriteOnly) || !Sample::Get().image.save(&buffer, "PNG"))
            return state.SkipWithError("cannot encode");
    }
    state.counters["PNG bytes"] = Sample::Get().png.size();
}
void Save(benchmark::State& state)
{
    const bench::OutputDirectory directory;
    for (auto _ : state) {
        if (!Sample::Get().isReady || !Sample::Get().texture.SaveFile(directory.File()))
            return state.SkipWithError("cannot save");
    }
}
void DecodePng(benchmark::State& state)
{
    for (auto _ : state) {
        if (QImage::fromData(Sample::Get().png).isNull())
            return state.SkipWithError("cannot decode");
    }
}
void Load(benchmark::State& state)
{
    for (auto _ : state) {
        TextureFile texture;
        if (!texture.LoadFile(Sample::Get().path))
            return state.SkipWithError("cannot load");
    }
}

} // namespace

BENCHMARK(EncodePng)->Unit(benchmark::kMillisecond);
BENCHMARK(Save)->Unit(benchmark::kMillisecond);
BENCHMARK(DecodePng)->Unit(benchmark::kMillisecond);
BENCHMARK(Load)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
