#pragma once

#include <cstddef>
#include <cstdint>

#include "core/common/LargePages_p.h"
#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"

namespace kr::stl {

inline bool IsFinite(const Vector3D<float>& point)
{
    // Finite numbers times 0 are 0; infinity and NaN give NaN.
    return point.x * 0.0f + point.y * 0.0f + point.z * 0.0f == 0.0f;
}

/// A place where corners of the soup lie.
struct Position {
    Vector3D<float> point;    ///< of the corner that was met first
    std::int32_t cornerCount; ///< corners that lie there
};

struct PositionList {
    Scratch<Position> positions;
    std::size_t count = 0;
    bool hasMixedZeros = false; ///< somewhere 0 and -0 meet: a corner's bits are not those of its position
};

/// Gives each corner the number of its position, counted from 0 in the order in which facets and corners
/// first meet them. Corners are at one position when their coordinates are equal as numbers (-0 equals 0); a
/// corner that is not finite has a position of its own.
/// @param corners  three a facet
/// @param numbers  receives facetCount triples
PositionList NumberPositions(const Vector3D<float>* corners, std::size_t facetCount, TriangleFace* numbers);

} // namespace kr::stl
