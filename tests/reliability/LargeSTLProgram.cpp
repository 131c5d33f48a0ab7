#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iterator>
#include <vector>

#include <QString>

#include <sys/resource.h>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"

// Writes a torus into a file of more than 2 GiB, loads it, and compares: LargeSTL binary|text FILE. Prints
// what it took; the file stays.

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kRadius = 1000;
constexpr double kTubeRadius = 300;

struct Grid {
    int around; ///< points around the axis
    int across; ///< points around the tube

    std::int64_t VertexCount() const { return std::int64_t(around) * across; }
    std::int64_t FacetCount() const { return 2 * VertexCount(); }

    Vector3D<float> Point(int i, int j) const
    {
        const double turn = 2 * kPi * (i % around) / around;
        const double tube = 2 * kPi * (j % across) / across;
        const double distance = kRadius + kTubeRadius * std::cos(tube);
        return {float(distance * std::cos(turn)), float(distance * std::sin(turn)),
                float(kTubeRadius * std::sin(tube))};
    }
};

using Corners = std::array<Vector3D<float>, 3>;

template<class Write>
void ForEachFacet(const Grid& grid, const Write& write)
{
    std::vector<Vector3D<float>> near(std::size_t(grid.across) + 1), far;
    const auto fill = [&](std::vector<Vector3D<float>>& ring, int i) {
        for (int j = 0; j <= grid.across; ++j)
            ring[std::size_t(j)] = grid.Point(i, j);
    };
    fill(near, 0);
    far = near;
    for (int i = 0; i < grid.around; ++i) {
        fill(far, i + 1);
        for (std::size_t j = 0; j + 1 < near.size(); ++j) {
            write(Corners{near[j], far[j], far[j + 1]});
            write(Corners{near[j], far[j + 1], near[j + 1]});
        }
        near.swap(far);
    }
}

void WriteBinary(const Grid& grid, std::FILE* file)
{
    const char header[80] = {};
    const auto count = std::uint32_t(grid.FacetCount());
    std::fwrite(header, sizeof header, 1, file);
    std::fwrite(&count, sizeof count, 1, file);
    ForEachFacet(grid, [file](const Corners& corners) {
        char record[50] = {};
        std::memcpy(record + 12, corners.data(), sizeof corners);
        std::fwrite(record, sizeof record, 1, file);
    });
}

void WriteText(const Grid& grid, std::FILE* file)
{
    std::fputs("solid torus\n", file);
    ForEachFacet(grid, [file](const Corners& corners) {
        std::fputs("  facet normal 0.000000 0.000000 0.000000\n    outer loop\n", file);
        for (const auto& [x, y, z] : corners)
            std::fprintf(file, "      vertex %.9g %.9g %.9g\n", double(x), double(y), double(z));
        std::fputs("    endloop\n  endfacet\n", file);
    });
    std::fputs("endsolid torus\n", file);
}

/// @return bytes written; 0 when that failed
long long Write(const Grid& grid, bool isText, const char* path)
{
    std::FILE* const file = std::fopen(path, "wb");
    if (file == nullptr)
        return 0;
    (isText ? WriteText : WriteBinary)(grid, file);
    const bool isGood = std::ferror(file) == 0;
    const long long size = std::ftell(file);
    return std::fclose(file) == 0 && isGood ? size : 0;
}

/// Whether each facet has the corners that were written, in whatever order.
bool HasFacets(const Grid& grid, const Mesh& mesh)
{
    const std::vector<Vector3D<float>>& vertices = *mesh.GetVerticesVecPtr();
    auto face = mesh.GetFacesVecPtr()->begin();
    bool areSame = true;
    ForEachFacet(grid, [&](const Corners& corners) {
        const auto isCorner = [&](int vertex) {
            return std::find(corners.begin(), corners.end(), vertices[std::size_t(vertex)]) != corners.end();
        };
        areSame = areSame && std::all_of(std::begin(face->v), std::end(face->v), isCorner);
        ++face;
    });
    return areSame;
}

/// Every point of the grid is there once, every facet in its place, and the volume is that of a torus.
bool IsTorus(const Grid& grid, const Mesh& mesh)
{
    const double volume = 2 * kPi * kPi * kRadius * kTubeRadius * kTubeRadius;
    return mesh.GetVertexNum() == grid.VertexCount() && mesh.GetFaceNum() == grid.FacetCount() &&
           std::abs(mesh.GetVolume() / volume - 1) < 1e-4 && HasFacets(grid, mesh);
}

} // namespace

int main(int argc, char** argv)
{
    const bool isText = argc == 3 && std::strcmp(argv[1], "text") == 0;
    if (argc != 3 || !(isText || std::strcmp(argv[1], "binary") == 0)) {
        std::fputs("LargeSTL binary|text FILE\n", stderr);
        return 2;
    }
    const Grid grid = isText ? Grid{4500, 1200} : Grid{9000, 2400};
    const long long size = Write(grid, isText, argv[2]);
    if (size >> 31 == 0) {
        std::fprintf(stderr, "%s: cannot be written\n", argv[2]);
        return 1;
    }
    timespec begin, end;
    clock_gettime(CLOCK_MONOTONIC, &begin);
    Mesh mesh(0.03F);
    const bool isLoaded = STLFile::LoadFile(QString::fromLocal8Bit(argv[2]), mesh, false, 80, !isText);
    clock_gettime(CLOCK_MONOTONIC, &end);
    const bool isGood = isLoaded && IsTorus(grid, mesh);
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%lld bytes, %d facets, %d vertices, %.1f s, %.1f GiB: %s\n", size, mesh.GetFaceNum(),
                mesh.GetVertexNum(),
                double(end.tv_sec - begin.tv_sec) + 1e-9 * double(end.tv_nsec - begin.tv_nsec),
                double(usage.ru_maxrss) / (1 << 20), isGood ? "as written" : "not as written");
    return isGood ? 0 : 1;
}
