#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "core/common/LargePages_p.h"
#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"

namespace kr::stl {

struct StitchedMesh {
    std::vector<TriangleFace> faces;
    std::vector<Vector3D<float>> vertices;
    /// What Mesh::CalcuateVolume() gives for these lists, to the last bit; without a value after the mesh was
    /// turned over, because its terms are others then.
    std::optional<double> volume;
};

/// The work of STLFile::StitchTriangleSoup without the normals, which nobody reads after a load.
/// @param corners      three a facet, used up
/// @param cornerCount  3 or more; a remainder is ignored
/// @param normalCount  how many normals the file gave
/// @throws std::out_of_range when fewer normals than facets remain; std::length_error for more than
/// kMaxFacets facets
StitchedMesh StitchCorners(Scratch<Vector3D<float>> corners, std::size_t cornerCount,
                           std::size_t normalCount);

} // namespace kr::stl
