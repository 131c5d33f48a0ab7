#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "fileformat/stl/STLFile.h"
#include "fuzz/Require.h"
#include "tests/stl/PlainStitcher.h"

// STLFile::StitchTriangleSoup over any soup, compared with plain stitching. The first byte chooses how the
// others are read: as raw coordinates, or a byte a corner on a small grid, where edges meet in every way.

namespace {

using fuzz::Require;
using Point = Vector3D<float>;

// Plain stitching takes quadratic time.
constexpr std::size_t kMostCorners = 300;

// So many edges near one another are compared across the borders of cells; plain stitching compares all.
constexpr int kMostCompared = 64;

// Low six bits: a point of a 4 x 4 x 4 grid. High two bits: as it is, beside it, with negative zeros, or not
// a number.
Point GridPoint(std::uint8_t byte, float step)
{
    Point point(float(byte & 3), float(byte >> 2 & 3), float(byte >> 4 & 3));
    switch (byte >> 6) {
    case 1:
        point += Point(step, step / 2, -step);
        break;
    case 2:
        point = Point(point.x == 0 ? -0.0f : point.x, point.y == 0 ? -0.0f : point.y, point.z);
        break;
    case 3:
        point.x =
            byte & 1 ? std::numeric_limits<float>::quiet_NaN() : -std::numeric_limits<float>::infinity();
        break;
    default:
        break;
    }
    return point;
}

std::vector<Point> ReadCorners(const std::uint8_t* data, std::size_t size)
{
    constexpr float kSteps[] = {1e-6f, 1e-3f, 0.1f, 0.4f};
    const std::uint8_t choice = data[0];
    std::vector<Point> corners;
    if (choice & 1) {
        corners.resize(std::min((size - 1) / sizeof(Point), kMostCorners));
        if (!corners.empty())
            std::memcpy(corners.data(), data + 1, corners.size() * sizeof(Point));
        return corners;
    }
    for (std::size_t i = 1; i < size && corners.size() < kMostCorners; ++i)
        corners.push_back(GridPoint(data[i], kSteps[choice >> 1 & 3]));
    return corners;
}

template<class T>
bool HaveSameBytes(const std::vector<T>& a, const std::vector<T>& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::vector<Point> corners = ReadCorners(data, size);
    const std::vector<Point> fileNormals(corners.size() / 3, Point(0, 0, 1));
    std::vector<Point> normals = fileNormals, vertices;
    std::vector<TriangleFace> faces;
    STLFile::StitchTriangleSoup(corners, normals, faces, vertices);
    for (const TriangleFace& face : faces)
        for (const int vertex : face.v)
            Require(vertex >= 0 && std::size_t(vertex) < vertices.size());
    const PlainStitchResult plain = StitchPlainly(corners, fileNormals);
    if (corners.size() < 3 || plain.waitingEdges > kMostCompared)
        return 0;
    Require(HaveSameBytes(faces, plain.faces));
    Require(HaveSameBytes(vertices, plain.vertices));
    Require(HaveSameBytes(normals, plain.normals));
    return 0;
}
