#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

#include <QStringList>

#include "core/mesh/Mesh.h"
#include "fileformat/cad/STEPAndIGESFile.h"

namespace test {

/// Usual controls of the tessellation.
constexpr double kDeflection = 1;
constexpr double kAngle = 20;

/// The meshes of a load, deleted in the end as their host has to.
class CadMeshes {
public:
    CadMeshes() = default;
    CadMeshes(const QString& fileName, double deflection = kDeflection, double angle = kAngle,
              bool prefixFileName = true)
    {
        m_isLoaded = STEPAndIGESFile::LoadFile(fileName, m_meshes, deflection, angle, prefixFileName);
    }
    ~CadMeshes()
    {
        for (Mesh* const mesh : m_meshes)
            delete mesh;
    }
    CadMeshes(const CadMeshes&) = delete;
    CadMeshes& operator=(const CadMeshes&) = delete;

    bool IsLoaded() const { return m_isLoaded; }
    std::vector<Mesh*>& All() { return m_meshes; }
    const std::vector<Mesh*>& All() const { return m_meshes; }
    const Mesh& operator[](std::size_t i) const { return *m_meshes.at(i); }
    std::size_t Count() const { return m_meshes.size(); }

    QStringList Names() const
    {
        QStringList names;
        for (const Mesh* const mesh : m_meshes)
            names.append(mesh->GetObjectName());
        return names;
    }

private:
    bool m_isLoaded = false;
    std::vector<Mesh*> m_meshes;
};

/// Every edge is run along as often in one direction as in the other. Triangles at the pole of a sphere may
/// have two corners in one vertex.
inline bool IsClosed(const Mesh& mesh)
{
    std::map<std::pair<int, int>, int> balance;
    for (const TriangleFace& face : *mesh.GetFacesVecPtr())
        for (int corner = 0; corner < 3; ++corner) {
            const auto [from, to] = std::pair(face[corner], face[(corner + 1) % 3]);
            balance[std::minmax({from, to})] += from < to ? 1 : from > to ? -1 : 0;
        }
    return std::all_of(balance.begin(), balance.end(), [](const auto& edge) { return edge.second == 0; });
}

/// Counts as the lists are long, faces of vertices there are.
inline bool IsWhole(const Mesh& mesh)
{
    const auto isVertex = [&](int index) { return index >= 0 && index < mesh.GetVertexNum(); };
    const auto& faces = *mesh.GetFacesVecPtr();
    return mesh.GetVerticesVecPtr()->size() == static_cast<std::size_t>(mesh.GetVertexNum()) &&
           faces.size() == static_cast<std::size_t>(mesh.GetFaceNum()) &&
           std::all_of(faces.begin(), faces.end(), [&](const TriangleFace& face) {
               return isVertex(face[0]) && isVertex(face[1]) && isVertex(face[2]);
           });
}

inline std::array<float, 3> Coordinates(const Vector3D<float>& point)
{
    return {point.x, point.y, point.z};
}

/// How many vertices lie where an earlier one lies.
inline std::size_t RepeatedVertexCount(const std::vector<Vector3D<float>>& vertices)
{
    std::map<std::array<float, 3>, int> seen;
    for (const Vector3D<float>& vertex : vertices)
        ++seen[Coordinates(vertex)];
    return vertices.size() - seen.size();
}

inline double AreaOf(const Mesh& mesh)
{
    const auto& vertices = *mesh.GetVerticesVecPtr();
    double area = 0;
    for (const TriangleFace& face : *mesh.GetFacesVecPtr()) {
        std::array<std::array<double, 3>, 2> sides{};
        const auto first = Coordinates(vertices.at(static_cast<std::size_t>(face[0])));
        for (std::size_t side = 0; side < 2; ++side) {
            const int index = face[static_cast<int>(side) + 1];
            const auto corner = Coordinates(vertices.at(static_cast<std::size_t>(index)));
            for (std::size_t i = 0; i < 3; ++i)
                sides[side][i] = double(corner[i]) - double(first[i]);
        }
        const auto& [a, b] = sides;
        area +=
            std::hypot(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]) / 2;
    }
    return area;
}

} // namespace test
