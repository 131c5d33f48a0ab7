#include "apps/krmodel/CornerNormals.h"

#include <numeric>

#include <Eigen/Geometry>

namespace krmodel {

namespace {

// Cosine of 38 degrees: a prism of ten sides is meant to be round, an octagon is not.
constexpr float kCreaseCosine = 0.788F;

bool IsDrawn(const TriangleFace& face)
{
    return face[0] >= 0;
}

Eigen::Vector3f AreaVector(const Scene& scene, const TriangleFace& face)
{
    const auto& points = scene.points;
    const Eigen::Vector3f& a = points[size_t(face[0])];
    return (points[size_t(face[1])] - a).cross(points[size_t(face[2])] - a);
}

std::vector<Eigen::Vector3f> AreaVectors(const Scene& scene)
{
    std::vector<Eigen::Vector3f> vectors;
    vectors.reserve(scene.faces.size());
    for (const TriangleFace& face : scene.faces)
        vectors.push_back(IsDrawn(face) ? AreaVector(scene, face) : Eigen::Vector3f(Eigen::Vector3f::Zero()));
    return vectors;
}

bool IsGentle(const Eigen::Vector3f& a, const Eigen::Vector3f& b)
{
    return a.dot(b) > kCreaseCosine * std::sqrt(a.squaredNorm() * b.squaredNorm());
}

/// The first corner of the face that lies at a vertex of it.
int CornerAt(const TriangleFace& face, int vertex)
{
    if (face[0] == vertex)
        return 0;
    return face[1] == vertex ? 1 : 2;
}

} // namespace

CornerNormals::CornerNormals(const Scene& scene)
    : m_parents(3 * scene.faces.size()), m_sums(3 * scene.faces.size(), Eigen::Vector3f::Zero())
{
    const std::vector<Eigen::Vector3f> areaVectors = AreaVectors(scene);
    std::iota(m_parents.begin(), m_parents.end(), 0);
    JoinGentleEdges(scene, areaVectors);
    for (size_t corner = 0; corner < m_parents.size(); ++corner) {
        m_parents[corner] = GroupOf(int(corner));
        m_sums[size_t(m_parents[corner])] += areaVectors[corner / 3];
    }
}

Eigen::Vector3f CornerNormals::At(int face, int corner) const
{
    const Eigen::Vector3f& sum = m_sums[size_t(m_parents[3 * size_t(face) + size_t(corner)])];
    const float length = sum.norm();
    return length > 0 ? Eigen::Vector3f(sum / length) : Eigen::Vector3f(Eigen::Vector3f::Zero());
}

int CornerNormals::GroupOf(int corner)
{
    while (m_parents[size_t(corner)] != corner) {
        // Each step halves the way of the next one who asks.
        int& parent = m_parents[size_t(corner)];
        parent = m_parents[size_t(parent)];
        corner = parent;
    }
    return corner;
}

void CornerNormals::JoinGentleEdges(const Scene& scene, const std::vector<Eigen::Vector3f>& faceNormals)
{
    for (int face = 0; face < int(scene.faces.size()); ++face) {
        const TriangleFace& corners = scene.faces[size_t(face)];
        for (int edge = 0; edge < 3 && IsDrawn(corners); ++edge) {
            const int other = scene.neighbours[size_t(face)][edge];
            if (other <= face || !IsGentle(faceNormals[size_t(face)], faceNormals[size_t(other)]))
                continue;
            JoinAcross(scene, face, other, corners[edge]);
            JoinAcross(scene, face, other, corners[(edge + 1) % 3]);
        }
    }
}

void CornerNormals::JoinAcross(const Scene& scene, int face, int other, int vertex)
{
    const int cornerHere = CornerAt(scene.faces[size_t(face)], vertex);
    const int cornerThere = CornerAt(scene.faces[size_t(other)], vertex);
    m_parents[size_t(GroupOf(3 * other + cornerThere))] = GroupOf(3 * face + cornerHere);
}

} // namespace krmodel
