#pragma once

#include <optional>
#include <vector>

#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"

namespace kr::image {

struct HeightField;

/// The vertices of the solid under a field of heights: the top row by row; then the bottom, its border first.
std::vector<Vector3D<float>> ReliefVertices(const HeightField& field);

/// The faces of such a solid of @p columns * @p rows vertices on top: top, bottom, walls.
std::vector<TriangleFace> ReliefFaces(int columns, int rows);

/// The volume inside these faces: what Mesh::CalcuateVolume() gives, to the last bit, without a look at the
/// lists.
/// @return nothing when a coordinate is not finite: faces would have to be left out
std::optional<double> ReliefVolume(const HeightField& field);

} // namespace kr::image
