#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"

namespace bench {

/// A closed torus of 2 * rings * sides facets, as smooth parts of a printed model are: every edge has a
/// partner.
inline Mesh Torus(int rings, int sides)
{
    constexpr double kTwoPi = 6.283185307179586;
    std::vector<Vector3D<float>> vertices;
    std::vector<TriangleFace> faces;
    vertices.reserve(static_cast<std::size_t>(rings) * static_cast<std::size_t>(sides));
    faces.reserve(2 * vertices.capacity());
    for (int i = 0; i < rings; ++i) {
        for (int j = 0; j < sides; ++j) {
            const double around = kTwoPi * i / rings, tube = kTwoPi * j / sides;
            const double radius = 50 + 20 * std::cos(tube);
            vertices.emplace_back(static_cast<float>(radius * std::cos(around)),
                                  static_cast<float>(radius * std::sin(around)),
                                  static_cast<float>(20 * std::sin(tube)));
            const int nextRing = (i + 1) % rings * sides, nextSide = (j + 1) % sides;
            faces.emplace_back(i * sides + j, nextRing + j, nextRing + nextSide);
            faces.emplace_back(i * sides + j, nextRing + nextSide, i * sides + nextSide);
        }
    }
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces(vertices, faces);
    return mesh;
}

/// A million facets in memory and in two files.
struct Sample {
    Mesh mesh = Torus(1000, 500);
    QTemporaryDir directory;
    QString binary = directory.filePath(QStringLiteral("binary.stl"));
    QString text = directory.filePath(QStringLiteral("text.stl"));

    Sample() : isSaved(STLFile::SaveFile(binary, mesh, false, 80) && STLFile::SaveFile(text, mesh, true, 80))
    {}
    bool isSaved;

    static const Sample& Get()
    {
        static const Sample kSample;
        return kSample;
    }
};

/// Reports the time for one facet.
inline void CountFacets(benchmark::State& state, int facetCount)
{
    state.counters["facet"] = benchmark::Counter(static_cast<double>(state.iterations()) * facetCount,
                                                 benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// The baseline of all reading: the bytes of a file in large blocks, and nothing done with them.
inline void ReadBytes(benchmark::State& state, const QString& path)
{
    std::vector<char> block(std::size_t(128) * 1024);
    for (auto _ : state) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return state.SkipWithError("cannot read");
        while (file.read(block.data(), static_cast<qint64>(block.size())) > 0)
            benchmark::DoNotOptimize(block.data());
    }
    CountFacets(state, Sample::Get().mesh.GetFaceNum());
}

} // namespace bench
