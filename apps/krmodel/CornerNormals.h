#pragma once

#include <vector>

#include "apps/krmodel/Scene.h"

namespace krmodel {

/// A normal for each corner of each face, smooth across gentle edges and broken at creases: around a vertex,
/// the faces that hang together by edges without a crease share the sum of their normals, weighted by area.
/// Linear in the number of faces, however many meet in one vertex.
class CornerNormals {
public:
    explicit CornerNormals(const Scene& scene);

    /// Unit length; the zero vector where the faces have no area.
    Eigen::Vector3f At(int face, int corner) const;

private:
    int GroupOf(int corner);
    void JoinGentleEdges(const Scene& scene, const std::vector<Eigen::Vector3f>& faceNormals);
    void JoinAcross(const Scene& scene, int face, int other, int vertex);

    /// Corner 3 * face + i belongs to the group of the corner named here; a group's first corner names
    /// itself.
    std::vector<int> m_parents;
    std::vector<Eigen::Vector3f> m_sums;
};

} // namespace krmodel
