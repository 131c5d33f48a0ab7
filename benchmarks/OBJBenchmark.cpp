#include "benchmarks/BenchmarkData.h"
#include "core/mesh/MeshTextureGroup.h"
#include "fileformat/obj/OBJFile.h"

// Whole loads and saves of a million facets with a texture coordinate for each vertex, beside their
// baselines: reading or writing as many bytes, and a save that leaves the work to a text stream and to maps.

namespace {

struct Sample {
    Mesh mesh = bench::TexturedTorus(1000, 500);
    QTemporaryDir directory;
    QString plain = directory.filePath(QStringLiteral("plain.obj"));
    QString textured = directory.filePath(QStringLiteral("textured.obj"));

    Sample()
        : isSaved(OBJFile::SaveFile(plain, mesh, false, false) &&
                  OBJFile::SaveFile(textured, mesh, true, false))
    {}
    bool isSaved;

    static const Sample& Get()
    {
        static const Sample kSample;
        return kSample;
    }
};

void CountFacets(benchmark::State& state)
{
    bench::CountFacets(state, Sample::Get().mesh.GetFaceNum());
}

void Load(benchmark::State& state, const QString& path)
{
    for (auto _ : state) {
        Mesh mesh(0.03f);
        std::vector<MeshTextureGroup> groups;
        if (!OBJFile::LoadFile(path, mesh, groups, false, 0))
            return state.SkipWithError("cannot load");
        benchmark::DoNotOptimize(mesh.GetVolume());
    }
    CountFacets(state);
}

void SaveTo(const QString& path, benchmark::State& state, bool textured, bool withNormals)
{
    for (auto _ : state) {
        if (!OBJFile::SaveFile(path, Sample::Get().mesh, textured, withNormals))
            return state.SkipWithError("cannot save");
    }
    CountFacets(state);
}

void Save(benchmark::State& state, bool textured, bool withNormals)
{
    const bench::OutputDirectory directory;
    SaveTo(directory.File(), state, textured, withNormals);
}

// Putting the text together, without what the system takes to store it.
void Compose(benchmark::State& state, bool textured, bool withNormals)
{
    SaveTo(QStringLiteral("/dev/null"), state, textured, withNormals);
}

void SaveByTextStream(benchmark::State& state)
{
    const bench::OutputDirectory directory;
    for (auto _ : state) {
        QFile file(directory.File());
        if (!file.open(QIODevice::WriteOnly))
            return state.SkipWithError("cannot write");
        bench::WriteOBJByTextStream(file, Sample::Get().mesh);
    }
    CountFacets(state);
}

void ReadBytes(benchmark::State& state)
{
    bench::ReadBytes(state, Sample::Get().plain, Sample::Get().mesh.GetFaceNum());
}
void LoadVerticesAndFaces(benchmark::State& state)
{
    Load(state, Sample::Get().plain);
}
void ReadBytesWithTexture(benchmark::State& state)
{
    bench::ReadBytes(state, Sample::Get().textured, Sample::Get().mesh.GetFaceNum());
}
void LoadWithTexture(benchmark::State& state)
{
    Load(state, Sample::Get().textured);
}
void WriteBytes(benchmark::State& state)
{
    bench::WriteBytes(state, Sample::Get().plain, Sample::Get().mesh.GetFaceNum());
}
void SaveVerticesAndFaces(benchmark::State& state)
{
    Save(state, false, false);
}
void SaveWithTexture(benchmark::State& state)
{
    Save(state, true, false);
}
void SaveWithNormals(benchmark::State& state)
{
    Save(state, false, true);
}
void SaveWithBoth(benchmark::State& state)
{
    Save(state, true, true);
}
void ComposeVerticesAndFaces(benchmark::State& state)
{
    Compose(state, false, false);
}
void ComposeWithTexture(benchmark::State& state)
{
    Compose(state, true, false);
}
void ComposeWithNormals(benchmark::State& state)
{
    Compose(state, false, true);
}
void ComposeWithBoth(benchmark::State& state)
{
    Compose(state, true, true);
}

} // namespace

BENCHMARK(ReadBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadVerticesAndFaces)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadBytesWithTexture)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadWithTexture)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveVerticesAndFaces)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveWithTexture)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveWithNormals)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveWithBoth)->Unit(benchmark::kMillisecond);
BENCHMARK(ComposeVerticesAndFaces)->Unit(benchmark::kMillisecond);
BENCHMARK(ComposeWithTexture)->Unit(benchmark::kMillisecond);
BENCHMARK(ComposeWithNormals)->Unit(benchmark::kMillisecond);
BENCHMARK(ComposeWithBoth)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveByTextStream)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
