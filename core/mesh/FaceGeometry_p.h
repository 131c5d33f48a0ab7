#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"

namespace kr {

using Points = std::vector<Vector3D<float>>;
using Faces = std::vector<TriangleFace>;

/// Whether all three indices name one of @p vertexCount vertices.
inline bool IsInside(const TriangleFace& face, std::size_t vertexCount)
{
    // As unsigned numbers negative indices lie beyond every list.
    return std::size_t(face.v[0]) < vertexCount && std::size_t(face.v[1]) < vertexCount &&
           std::size_t(face.v[2]) < vertexCount;
}

/// What the finalisation of a mesh provides; Mesh.h has the contracts.
Points FaceNormals(const Points& vertices, const Faces& faces);
Points VertexNormals(const Points& vertices, const Faces& faces);
Faces FaceNeighbours(const Faces& faces, std::size_t vertexCount);
std::map<long long, int> EdgeFaceCounts(const Faces& faces, std::size_t vertexCount);

} // namespace kr
