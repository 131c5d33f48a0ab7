#include <unordered_map>

#include <QTextStream>

#include "benchmarks/BenchmarkData.h"
#include "fileformat/obj/OBJFile.h"

// Whole loads and saves of a million facets with a texture coordinate for each vertex, beside their
// baselines: reading or writing as many bytes, and a save that leaves the work to a text stream and to maps.

namespace {

/// As many texture coordinates as vertices, numbered alike.
Mesh TexturedTorus(int rings, int sides)
{
    Mesh mesh = bench::Torus(rings, sides);
    for (int i = 0; i < rings; ++i)
        for (int j = 0; j < sides; ++j)
            mesh.GetTexCoordVecPtr()->emplace_back(static_cast<float>(i) / static_cast<float>(rings),
                                                   static_cast<float>(j) / static_cast<float>(sides));
    *mesh.GetTextureFacesVecPtr() = *mesh.GetFacesVecPtr();
    return mesh;
}

struct Sample {
    Mesh mesh = TexturedTorus(1000, 500);
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

void Save(benchmark::State& state, bool textured, bool withNormals)
{
    const bench::OutputDirectory directory;
    for (auto _ : state) {
        if (!OBJFile::SaveFile(directory.File(), Sample::Get().mesh, textured, withNormals))
            return state.SkipWithError("cannot save");
    }
    CountFacets(state);
}

// The plain way to write vertices and faces.
void WriteByTextStream(QTextStream& stream, const Mesh& mesh)
{
    std::unordered_map<int, std::size_t> numbers;
    for (const TriangleFace& face : *mesh.GetFacesVecPtr()) {
        for (const int index : face.v) {
            if (!numbers.emplace(index, numbers.size() + 1).second)
                continue;
            const Vector3D<float>& p = mesh.GetVerticesVecPtr()->at(static_cast<std::size_t>(index));
            stream << "v " << p.x << " " << p.y << " " << p.z << "\n";
        }
    }
    for (const TriangleFace& face : *mesh.GetFacesVecPtr()) {
        stream << "f";
        for (const int index : face.v)
            stream << " " << numbers[index];
        stream << "\n";
    }
}

void SaveByTextStream(benchmark::State& state)
{
    const bench::OutputDirectory directory;
    for (auto _ : state) {
        QFile file(directory.File());
        if (!file.open(QIODevice::WriteOnly))
            return state.SkipWithError("cannot write");
        QTextStream stream(&file);
        stream.setRealNumberNotation(QTextStream::FixedNotation);
        WriteByTextStream(stream, Sample::Get().mesh);
    }
    CountFacets(state);
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

} // namespace

BENCHMARK(WriteBytes)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveVerticesAndFaces)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveWithTexture)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveWithNormals)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveWithBoth)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveByTextStream)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
