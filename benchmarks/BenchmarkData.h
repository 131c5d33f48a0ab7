#pragma once

#include <cmath>
#include <unordered_map>
#include <vector>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <benchmark/benchmark.h>

#include "core/mesh/Mesh.h"

// What the benchmarks of all formats share: a mesh, baselines, and the time for one facet.

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

/// A torus with as many texture coordinates as vertices, numbered alike.
inline Mesh TexturedTorus(int rings, int sides)
{
    Mesh mesh = Torus(rings, sides);
    for (int i = 0; i < rings; ++i)
        for (int j = 0; j < sides; ++j)
            mesh.GetTexCoordVecPtr()->emplace_back(static_cast<float>(i) / static_cast<float>(rings),
                                                   static_cast<float>(j) / static_cast<float>(sides));
    *mesh.GetTextureFacesVecPtr() = *mesh.GetFacesVecPtr();
    return mesh;
}

/// Reports the time for one facet.
inline void CountFacets(benchmark::State& state, int facetCount)
{
    state.counters["facet"] = benchmark::Counter(static_cast<double>(state.iterations()) * facetCount,
                                                 benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// The baseline of all reading: the bytes of a file in large blocks, and nothing done with them.
inline void ReadBytes(benchmark::State& state, const QString& path, int facetCount)
{
    std::vector<char> block(std::size_t(128) * 1024);
    for (auto _ : state) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return state.SkipWithError("cannot read");
        while (file.read(block.data(), static_cast<qint64>(block.size())) > 0)
            benchmark::DoNotOptimize(block.data());
    }
    CountFacets(state, facetCount);
}

/// A directory for output in memory, where there is such a file system, so that no disk is measured.
class OutputDirectory {
public:
    QString File() const { return m_directory.filePath(QStringLiteral("out")); }

private:
    static QString Parent()
    {
        const QString memory = QStringLiteral("/dev/shm");
        return QDir(memory).exists() ? memory : QDir::tempPath();
    }

    QTemporaryDir m_directory{Parent() + QStringLiteral("/krcore-XXXXXX")};
};

/// The baseline of all writing: the bytes of the file @p source in blocks as a writer gathers them.
inline void WriteBytes(benchmark::State& state, const QString& source, int facetCount)
{
    constexpr qint64 kBlockSize = qint64(256) * 1024;
    QFile input(source);
    if (!input.open(QIODevice::ReadOnly))
        return state.SkipWithError("cannot read");
    const qint64 size = input.size();
    const std::vector<char> block(kBlockSize, '0');
    const OutputDirectory directory;
    for (auto _ : state) {
        QFile file(directory.File());
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
            return state.SkipWithError("cannot write");
        for (qint64 left = size; left > 0; left -= kBlockSize)
            file.write(block.data(), std::min(left, kBlockSize));
    }
    CountFacets(state, facetCount);
}

/// The plain way to write vertices and faces of an OBJ file.
inline void WriteOBJByTextStream(QIODevice& device, const Mesh& mesh)
{
    QTextStream stream(&device);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
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

} // namespace bench
