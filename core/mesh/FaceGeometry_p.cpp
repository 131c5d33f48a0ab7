#include "core/mesh/FaceGeometry_p.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>

#include "core/common/HalfEdgePairing_p.h"

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

Faces NeighboursOfGoodFaces(const Faces& faces, std::size_t vertexCount)
{
    if (faces.size() > kMaxFacets)
        throw std::length_error("Mesh: too many faces for neighbours");
    const HalfEdgeLinks links = PairHalfEdges(faces.data(), faces.size(), vertexCount);
    Faces neighbours(faces.size());
    const auto facetAcross = [&](std::size_t halfEdge) {
        const Mate mate = links.mates[halfEdge];
        return mate.IsLinked() ? mate.Partner() / 3 : -1;
    };
    for (std::size_t i = 0; i < faces.size(); ++i)
        neighbours[i] = {facetAcross(3 * i), facetAcross(3 * i + 1), facetAcross(3 * i + 2)};
    return neighbours;
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
    const auto isInside = [=](const TriangleFace& face) { return IsInside(face, vertexCount); };
    if (std::all_of(faces.begin(), faces.end(), isInside))
        return NeighboursOfGoodFaces(faces, vertexCount);
    // The pairing takes good indices only: it sees a packed list, whose numbers are translated back.
    Faces good;
    std::vector<int> places;
    for (std::size_t i = 0; i < faces.size(); ++i)
        if (isInside(faces[i])) {
            good.push_back(faces[i]);
            places.push_back(int(i));
        }
    const Faces neighboursOfGood = NeighboursOfGoodFaces(good, vertexCount);
    Faces neighbours(faces.size(), TriangleFace(-1, -1, -1));
    for (std::size_t i = 0; i < good.size(); ++i)
        for (int edge = 0; edge < 3; ++edge)
            if (const int neighbour = neighboursOfGood[i][edge]; neighbour >= 0)
                neighbours[std::size_t(places[i])][edge] = places[std::size_t(neighbour)];
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
