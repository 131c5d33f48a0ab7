#include "core/mesh/FaceGeometry_p.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kr {

namespace {

const Vector3D<float>& CornerOf(const TriangleFace& face, int corner, const Points& vertices)
{
    return vertices[std::size_t(face[corner])];
}

bool IsFinite(const Vector3D<double>& vector)
{
    return std::isfinite(vector.x) && std::isfinite(vector.y) && std::isfinite(vector.z);
}

Vector3D<float> UnitVector(const Vector3D<double>& vector)
{
    const double length = std::sqrt(vector.x * vector.x + vector.y * vector.y + vector.z * vector.z);
    if (!(length > 0))
        return {};
    return {float(vector.x / length), float(vector.y / length), float(vector.z / length)};
}

long long EdgeKey(int a, int b)
{
    return (static_cast<long long>(std::min(a, b)) << 32) + std::max(a, b);
}

// A face that names a vertex twice runs along one edge twice, and is on it once all the same.
void AppendEdges(const TriangleFace& face, std::vector<long long>& edges)
{
    const std::size_t first = edges.size();
    for (int corner = 0; corner < 3; ++corner) {
        const int a = face[corner], b = face[(corner + 1) % 3];
        const long long edge = EdgeKey(a, b);
        const auto begin = edges.begin() + std::ptrdiff_t(first);
        if (a != b && std::find(begin, edges.end(), edge) == edges.end())
            edges.push_back(edge);
    }
}

} // namespace

Points FaceNormals(const Points& vertices, const Faces& faces)
{
    Points normals(faces.size());
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const TriangleFace& face = faces[i];
        if (IsInside(face, vertices.size()))
            Vector3D<float>::CalcNormal(CornerOf(face, 0, vertices), CornerOf(face, 1, vertices),
                                        CornerOf(face, 2, vertices), normals[i]);
    }
    return normals;
}

Points VertexNormals(const Points& vertices, const Faces& faces)
{
    // The area vector is the normal weighted by area already. Sums in double: a float sum over a fan of
    // thousands of thin faces would lean towards its first ones.
    std::vector<Vector3D<double>> sums(vertices.size());
    for (const TriangleFace& face : faces) {
        if (!IsInside(face, vertices.size()))
            continue;
        const Vector3D<double> area = CalcAreaVector(CornerOf(face, 0, vertices), CornerOf(face, 1, vertices),
                                                     CornerOf(face, 2, vertices));
        if (!IsFinite(area))
            continue;
        for (const int vertex : face.v)
            sums[std::size_t(vertex)] += area;
    }
    Points normals(vertices.size());
    std::transform(sums.begin(), sums.end(), normals.begin(), UnitVector);
    return normals;
}

Faces FaceNeighbours(const Faces& faces, std::size_t vertexCount)
{
    Faces neighbours(faces.size(), TriangleFace(-1, -1, -1));
    std::map<long long, std::vector<std::size_t>>
        unpaired; // by edge: half-edges 3 * face + edge, the latest last
    for (std::size_t i = 0; i < 3 * faces.size(); ++i) {
        const TriangleFace& face = faces[i / 3];
        if (!IsInside(face, vertexCount))
            continue;
        std::vector<std::size_t>& others = unpaired[EdgeKey(face.v[i % 3], face.v[(i + 1) % 3])];
        const auto mate =
            std::find_if(others.rbegin(), others.rend(), [=](std::size_t j) { return j / 3 != i / 3; });
        if (mate == others.rend()) {
            others.push_back(i);
            continue;
        }
        neighbours[i / 3].v[i % 3] = int(*mate / 3);
        neighbours[*mate / 3].v[*mate % 3] = int(i / 3);
        others.erase(std::prev(mate.base()));
    }
    return neighbours;
}

std::map<long long, int> EdgeFaceCounts(const Faces& faces, std::size_t vertexCount)
{
    std::vector<long long> edges;
    edges.reserve(3 * faces.size());
    for (const TriangleFace& face : faces)
        if (IsInside(face, vertexCount))
            AppendEdges(face, edges);
    // Sorted keys enter the map at its end, each in constant time.
    std::sort(edges.begin(), edges.end());
    std::map<long long, int> counts;
    for (const long long edge : edges)
        ++counts.try_emplace(counts.end(), edge, 0)->second;
    return counts;
}

} // namespace kr
