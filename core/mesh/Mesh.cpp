#include "core/mesh/Mesh.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/common/SignedVolume_p.h"
#include "core/mesh/FaceGeometry_p.h"
#include "core/mesh/VertexMerge_p.h"

namespace {

using kr::IsInside;
using Point = Vector3D<float>;

template<class Element>
int CountOf(const std::vector<Element>& list)
{
    return int(std::min(list.size(), std::size_t(std::numeric_limits<int>::max())));
}

bool IsFinite(const Point& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

template<class Element>
void Append(std::vector<Element>& list, const std::vector<Element>& added)
{
    if (&list == &added) { // growing would pull the source away
        const std::vector<Element> copy = added;
        list.insert(list.end(), copy.begin(), copy.end());
        return;
    }
    list.insert(list.end(), added.begin(), added.end());
}

bool NamesVertexTwice(const TriangleFace& face)
{
    // Bitwise or: three comparisons cost less than two branches.
    return bool(int(face.v[0] == face.v[1]) | int(face.v[1] == face.v[2]) | int(face.v[2] == face.v[0]));
}

// Drops the faces for which `isDropped` holds, and the texture faces beside them. Most meshes lose none: they
// are read once and nothing is written.
template<class IsDropped>
void DropFaces(std::vector<TriangleFace>& faces, std::vector<TriangleFace>& textureFaces, IsDropped isDropped)
{
    const auto firstDropped = std::find_if(faces.begin(), faces.end(), isDropped);
    if (firstDropped == faces.end())
        return;
    const bool hasTextureFaces = textureFaces.size() == faces.size();
    auto kept = std::size_t(firstDropped - faces.begin());
    for (std::size_t i = kept; i < faces.size(); ++i) {
        if (isDropped(faces[i]))
            continue;
        faces[kept] = faces[i];
        if (hasTextureFaces)
            textureFaces[kept] = textureFaces[i];
        ++kept;
    }
    faces.resize(kept);
    if (hasTextureFaces)
        textureFaces.resize(kept);
}

// Faces with an index outside the list keep their indices; the list is no longer than before, so they stay
// outside.
void Renumber(std::vector<TriangleFace>& faces, const kr::VertexNumbers& numbers)
{
    for (TriangleFace& face : faces)
        if (IsInside(face, numbers.size()))
            face = TriangleFace(numbers[std::size_t(face[0])], numbers[std::size_t(face[1])],
                                numbers[std::size_t(face[2])]);
}

std::vector<Point> CopyNormals(const std::vector<Point*>& normals, std::size_t vertexCount)
{
    std::vector<Point> copies(vertexCount);
    for (std::size_t i = 0; i < std::min(vertexCount, normals.size()); ++i)
        if (normals[i])
            copies[i] = *normals[i];
    return copies;
}

// Of vertices that became one the first gives the normal. Numbers never grow, and a new number is one more
// than all before it, so the list is packed in place.
void PackFirsts(std::vector<Point>& normals, const kr::VertexNumbers& numbers)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        if (std::size_t(numbers[i]) == kept)
            normals[kept++] = normals[i];
    normals.resize(kept);
}

// In a mesh whose faces stand in no order each vertex is a wait for memory, unless it is asked for in time.
constexpr std::size_t kFacesAhead = 16;

void PrefetchCorners(const std::vector<TriangleFace>& faces, std::size_t face,
                     const std::vector<Point>& vertices)
{
    if (face < faces.size() && IsInside(faces[face], vertices.size()))
        for (const int vertex : faces[face].v)
            __builtin_prefetch(&vertices[std::size_t(vertex)]);
}

} // namespace

Mesh::Mesh(float mergeDistanceMm) : m_mergeDistanceMm(mergeDistanceMm) {}

void Mesh::AddVertexAndFaces(const std::vector<Point>& vertices, const std::vector<TriangleFace>& faces)
{
    Append(m_vertices, vertices);
    Append(m_faces, faces);
    TakeCounts();
}

void Mesh::Cleanup()
{
    m_vertices.clear();
    m_faces.clear();
    m_texCoords.clear();
    m_textureFaces.clear();
    m_volume = 0;
    TakeCounts();
    Provide(false, false);
}

void Mesh::ValidateVertexAndFaces(std::vector<TriangleFace>& faces, const std::vector<Point>& vertices)
{
    std::vector<TriangleFace> noTextureFaces;
    const std::size_t vertexCount = vertices.size();
    DropFaces(faces, noTextureFaces, [=](const TriangleFace& face) { return !IsInside(face, vertexCount); });
}

void Mesh::PostProcess(bool mergeVertices, bool dropRepeatedCorners, bool provideNormals,
                       bool provideNeighbours, const std::vector<Point*>* vertexNormals,
                       std::map<long long, int>* edgeFaceCounts)
{
    std::vector<Point> givenNormals;
    if (vertexNormals) // copied first: they may stand in the list that is dropped next
        givenNormals = CopyNormals(*vertexNormals, m_vertices.size());
    Provide(provideNormals, provideNeighbours);
    if (mergeVertices) {
        const kr::VertexNumbers numbers = kr::MergeCloseVertices(m_vertices, m_mergeDistanceMm);
        Renumber(m_faces, numbers);
        if (vertexNormals)
            PackFirsts(givenNormals, numbers);
    }
    if (dropRepeatedCorners) {
        const std::size_t vertexCount = m_vertices.size();
        DropFaces(m_faces, m_textureFaces, [=](const TriangleFace& face) {
            return NamesVertexTwice(face) && IsInside(face, vertexCount);
        });
    }
    TakeCounts();
    if (vertexNormals && provideNormals)
        m_vertexNormals.Set(std::move(givenNormals));
    if (edgeFaceCounts)
        *edgeFaceCounts = kr::EdgeFaceCounts(m_faces, m_vertices.size());
}

void Mesh::PostProcessFromVertexBuffer(const std::vector<Point>* vertexBuffer, bool mergeVertices,
                                       bool dropRepeatedCorners, bool provideNormals, bool provideNeighbours,
                                       const std::vector<Point*>* vertexNormals,
                                       std::map<long long, int>* edgeFaceCounts)
{
    if (vertexBuffer)
        m_vertices = *vertexBuffer;
    PostProcess(mergeVertices, dropRepeatedCorners, provideNormals, provideNeighbours, vertexNormals,
                edgeFaceCounts);
}

void Mesh::PostProcessMergeRawVertexBuffer()
{
    const std::size_t countBefore = m_vertices.size();
    const kr::VertexNumbers numbers = kr::MergeEqualVertices(m_vertices);
    if (m_vertices.size() != countBefore)
        Renumber(m_faces, numbers);
    TakeCounts();
    Provide(false, false);
}

double Mesh::CalcuateVolume() const
{
    const Point* const vertices = m_vertices.data();
    const std::size_t vertexCount = m_vertices.size();
    kr::SignedVolume volume;
    for (std::size_t i = 0; i < m_faces.size(); ++i) {
        const TriangleFace& face = m_faces[i];
        PrefetchCorners(m_faces, i + kFacesAhead, m_vertices);
        if (IsInside(face, vertexCount))
            volume.Add(vertices[face.v[0]], vertices[face.v[1]], vertices[face.v[2]]);
    }
    return volume.Value();
}

const std::vector<Vector3D<float>>& Mesh::GetFaceNormals() const
{
    return m_faceNormals.Get(
        [this] { return m_providesNormals ? kr::FaceNormals(m_vertices, m_faces) : kr::Points(); });
}

const std::vector<Vector3D<float>>& Mesh::GetVertexNormals() const
{
    return m_vertexNormals.Get(
        [this] { return m_providesNormals ? kr::VertexNormals(m_vertices, m_faces) : kr::Points(); });
}

const std::vector<TriangleFace>& Mesh::GetFaceNeighbours() const
{
    return m_neighbours.Get([this] {
        return m_providesNeighbours ? kr::FaceNeighbours(m_faces, m_vertices.size()) : kr::Faces();
    });
}

MeshBoundingBox Mesh::GetBoundingBox() const
{
    constexpr float kBeyond = std::numeric_limits<float>::infinity();
    Point low(kBeyond, kBeyond, kBeyond), high(-kBeyond, -kBeyond, -kBeyond);
    for (const Point& point : m_vertices) {
        if (!IsFinite(point))
            continue;
        low = {std::min(low.x, point.x), std::min(low.y, point.y), std::min(low.z, point.z)};
        high = {std::max(high.x, point.x), std::max(high.y, point.y), std::max(high.z, point.z)};
    }
    return low.x > high.x ? MeshBoundingBox() : MeshBoundingBox{low, high, false};
}

void Mesh::TakeCounts()
{
    m_vertexCount = CountOf(m_vertices);
    m_faceCount = CountOf(m_faces);
}

void Mesh::Provide(bool normals, bool neighbours)
{
    m_providesNormals = normals;
    m_providesNeighbours = neighbours;
    m_faceNormals.Reset();
    m_vertexNormals.Reset();
    m_neighbours.Reset();
}
