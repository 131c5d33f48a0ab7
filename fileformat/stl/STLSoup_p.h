#pragma once

#include <cstddef>

#include "core/common/LargePages_p.h"
#include "core/math/Vector3D.h"

namespace kr::stl {

/// The corner points of a file's facets, three a facet in file order, sharing nothing. Of the normals only
/// their number matters: they are computed anew from the corners.
struct TriangleSoup {
    Scratch<Vector3D<float>> corners; ///< room for at least cornerCount
    std::size_t cornerCount = 0;
    std::size_t normalCount = 0;

    std::size_t FacetCount() const { return cornerCount / 3; }
};

} // namespace kr::stl
