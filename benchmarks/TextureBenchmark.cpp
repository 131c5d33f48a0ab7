#include <cstdint>
#include <map>
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

// Large soft shapes, with grain of so many levels on them as photographs of surfaces have.
QImage Surface(unsigned grain)
{
    std::mt19937 random(1);
    QImage image(kSide, kSide, QImage::Format_RGB32);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const double shape = 100 + 60 * std::sin(x * 0.011 + 3 * std::sin(y * 0.007));
            const int level = static_cast<int>(shape) + static_cast<int>(random() % grain);
            image.setPixel(x, y, qRgb(level, level * 3 / 4, level / 2));
        }
    }
    return image;
}

struct Sample {
    explicit Sample(unsigned grain) : image(Surface(grain))
    {
        MeshTextureInfo info;
        isReady = info.load(image, false, false, false, 0) && texture.Load(&info, {}, QUuid()) &&
                  texture.SaveFile(path) && image.save(&m_buffer, "PNG");
    }
    static const Sample& Get(benchmark::State& state)
    {
        static std::map<std::int64_t, Sample> samples;
        const std::int64_t grain = state.range(0);
        return samples.try_emplace(grain, static_cast<unsigned>(grain)).first->second;
    }

    QImage image;
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
    const Sample& sample = Sample::Get(state);
    for (auto _ : state) {
        QByteArray png;
        QBuffer buffer(&png);
        if (!buffer.open(QIODevice::WriteOnly) || !sample.image.save(&buffer, "PNG"))
            return state.SkipWithError("cannot encode");
    }
    state.counters["PNG bytes"] = sample.png.size();
}
void Save(benchmark::State& state)
{
    const Sample& sample = Sample::Get(state);
    const bench::OutputDirectory directory;
    for (auto _ : state) {
        if (!sample.isReady || !sample.texture.SaveFile(directory.File()))
            return state.SkipWithError("cannot save");
    }
}
void DecodePng(benchmark::State& state)
{
    const Sample& sample = Sample::Get(state);
    for (auto _ : state) {
        if (QImage::fromData(sample.png).isNull())
            return state.SkipWithError("cannot decode");
    }
}
void Load(benchmark::State& state)
{
    const Sample& sample = Sample::Get(state);
    for (auto _ : state) {
        TextureFile texture;
        if (!texture.LoadFile(sample.path))
            return state.SkipWithError("cannot load");
    }
}

} // namespace

BENCHMARK(EncodePng)->ArgName("grain")->Arg(1)->Arg(4)->Arg(32)->Unit(benchmark::kMillisecond);
BENCHMARK(Save)->ArgName("grain")->Arg(1)->Arg(4)->Arg(32)->Unit(benchmark::kMillisecond);
BENCHMARK(DecodePng)->ArgName("grain")->Arg(1)->Arg(4)->Arg(32)->Unit(benchmark::kMillisecond);
BENCHMARK(Load)->ArgName("grain")->Arg(1)->Arg(4)->Arg(32)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
