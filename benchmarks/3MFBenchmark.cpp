#include <quazip.h>
#include <quazipfile.h>
#include <zlib.h>

#include "benchmarks/BenchmarkData.h"
#include "fileformat/3mf/Model3MF.h"

// Whole loads and saves of a million facets, beside what cannot be done without: inflating or deflating the
// text of the model part.

namespace {

struct Sample {
    Mesh mesh = bench::Torus(1000, 500);
    QTemporaryDir directory;
    QString path = directory.filePath(QStringLiteral("torus.3mf"));

    Sample() : isSaved(Save(path)) {}
    bool isSaved;

    bool Save(const QString& fileName)
    {
        Model3MF::ModelObjectInfo object;
        object.mesh = &mesh;
        return Model3MF().SaveFile(fileName, {object}, {0, 0, 0});
    }

    static Sample& Get()
    {
        static Sample sample;
        return sample;
    }
};

void CountFacets(benchmark::State& state)
{
    bench::CountFacets(state, Sample::Get().mesh.GetFaceNum());
}

QByteArray ReadModelPart()
{
    QuaZipFile entry(Sample::Get().path, QStringLiteral("3D/3dmodel.model"));
    if (!entry.open(QIODevice::ReadOnly))
        return {};
    QByteArray text(static_cast<int>(entry.size()), Qt::Uninitialized);
    return entry.read(text.data(), text.size()) == text.size() ? text : QByteArray();
}

void InflateByQuaZip(benchmark::State& state)
{
    if (!Sample::Get().isSaved)
        return state.SkipWithError("cannot save");
    for (auto _ : state) {
        if (ReadModelPart().isEmpty())
            return state.SkipWithError("cannot read");
    }
    CountFacets(state);
}

void Load(benchmark::State& state)
{
    for (auto _ : state) {
        Model3MF package;
        const bool isLoaded = package.LoadFile(Sample::Get().path);
        for (const Mesh* const mesh : package.GetObjects())
            delete mesh;
        if (!isLoaded)
            return state.SkipWithError("cannot load");
    }
    CountFacets(state);
}

void DeflateByZlib(benchmark::State& state)
{
    QByteArray text = ReadModelPart();
    QByteArray deflated(static_cast<int>(compressBound(static_cast<uLong>(text.size()))), '\0');
    for (auto _ : state) {
        z_stream stream = {};
        deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
        stream.next_in = reinterpret_cast<Bytef*>(text.data());
        stream.avail_in = static_cast<uInt>(text.size());
        stream.next_out = reinterpret_cast<Bytef*>(deflated.data());
        stream.avail_out = static_cast<uInt>(deflated.size());
        const bool isDone = deflate(&stream, Z_FINISH) == Z_STREAM_END;
        deflateEnd(&stream);
        if (!isDone)
            return state.SkipWithError("cannot deflate");
    }
    CountFacets(state);
}

void Save(benchmark::State& state)
{
    const bench::OutputDirectory directory;
    for (auto _ : state) {
        if (!Sample::Get().Save(directory.File()))
            return state.SkipWithError("cannot save");
    }
    CountFacets(state);
}

} // namespace

BENCHMARK(InflateByQuaZip)->Unit(benchmark::kMillisecond);
BENCHMARK(Load)->Unit(benchmark::kMillisecond);
BENCHMARK(DeflateByZlib)->Unit(benchmark::kMillisecond);
BENCHMARK(Save)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
