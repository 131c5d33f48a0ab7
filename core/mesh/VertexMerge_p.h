#pragma once

#include <vector>

#include "core/common/LargePages_p.h"
#include "core/math/Vector3D.h"

namespace kr {

/// For each vertex as it was numbered before a merge, its number afterwards; no number grows.
using VertexNumbers = Scratch<int>;

/// Keeps of each set of vertices with equal coordinates (-0 equals 0) the first and packs the kept ones in
/// their order. A vertex that is not finite equals none. Expected time linear in the number of vertices, for
/// any input.
VertexNumbers MergeEqualVertices(std::vector<Vector3D<float>>& vertices);

/// Walks the vertices in order: each joins the earliest kept vertex within @p distance of it, or is kept
/// itself. So no vertex moves further than the distance, kept vertices lie further apart than it, chains of
/// near vertices do not collapse into one, and equal vertices stay together. A vertex that is not finite
/// joins none; a distance that is not positive merges equal vertices alone. Expected time linear in the
/// number of vertices, for any input.
VertexNumbers MergeCloseVertices(std::vector<Vector3D<float>>& vertices, float distance);

} // namespace kr
