#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "core/common/HalfEdgePairing_p.h"
#include "core/common/LargePages_p.h"
#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"
#include "fileformat/stl/CornerNumbers_p.h"

namespace kr::stl {

/// A box that grows around points; points that are not finite are passed over.
struct CornerBox {
    Vector3D<float> minimum;
    Vector3D<float> maximum;
    bool isEmpty = true;

    void Add(const Vector3D<float>& point);
};

/// The triangle soup while it is stitched. Corner 3 * t + c is corner c of facet t; half-edge h starts from
/// corner h.
struct Soup {
    Scratch<Vector3D<float>>
        corners; ///< only until each corner has its position, which then tells where it lies
    std::size_t facetCount = 0;
    CornerBox removedCorners;             ///< corners of the facets that were removed
    float firstEdgeExtent = 0;            ///< extent of the file's very first edge
    std::vector<TriangleFace> positionOf; ///< for each facet the position numbers of its corners
    PositionList positions;
    HalfEdgeLinks links;
    std::vector<std::int32_t>
        partedPositions;      ///< share their place with others that have zeros of other signs
    bool isReordered = false; ///< position numbers do not stand in first-met order any more

    std::int32_t& PositionAt(HalfEdge corner) { return positionOf[std::size_t(corner / 3)][corner % 3]; }
    std::int32_t PositionAt(HalfEdge corner) const { return positionOf[std::size_t(corner / 3)][corner % 3]; }

    const Vector3D<float>& PointOf(std::int32_t position) const
    {
        return positions.positions[std::size_t(position)].point;
    }
    const Vector3D<float>& PointAt(std::size_t facet, int corner) const
    {
        return PointOf(positionOf[facet][corner]);
    }
    const Vector3D<float>& PointAt(HalfEdge corner) const { return PointOf(PositionAt(corner)); }

    /// Lets the corner lie at another position. Two corners of a facet that meet make a loop; that one of
    /// them may move on is not told.
    void MoveCorner(HalfEdge corner, std::int32_t position)
    {
        TriangleFace& facet = positionOf[std::size_t(corner / 3)];
        std::int32_t& current = facet[corner % 3];
        if (current == position)
            return;
        --positions.positions[std::size_t(current)].cornerCount;
        ++positions.positions[std::size_t(position)].cornerCount;
        links.hasLoops |= facet[0] == position || facet[1] == position || facet[2] == position;
        current = position;
        isReordered = true;
    }
};

/// The largest of |dx|, |dy|, |dz| over an edge with finite ends.
inline float LargestDifference(const Vector3D<float>& a, const Vector3D<float>& b)
{
    const float dx = std::fabs(b.x - a.x), dy = std::fabs(b.y - a.y), dz = std::fabs(b.z - a.z);
    const float larger = dx > dy ? dx : dy;
    return larger > dz ? larger : dz;
}

/// The same for any edge; infinite when an end is not finite or the ends lie too far apart.
inline float EdgeExtent(const Vector3D<float>& a, const Vector3D<float>& b)
{
    // A difference that is infinite or NaN makes the product NaN.
    const float sum = std::fabs(b.x - a.x) + std::fabs(b.y - a.y) + std::fabs(b.z - a.z);
    return sum * 0.0f == 0.0f ? LargestDifference(a, b) : std::numeric_limits<float>::infinity();
}

/// A corner on a walk around its fan, and the side on which the walk leaves the corner's facet: through the
/// corner's own half-edge (it starts there) or through the previous one (it ends there).
struct FanStep {
    HalfEdge corner = kNoCorner;
    bool leavesThroughOwnEdge = false;

    static constexpr HalfEdge kNoCorner = -1;
    bool IsValid() const { return corner != kNoCorner; }
    HalfEdge EdgeToCross() const { return leavesThroughOwnEdge ? corner : PreviousInFacet(corner); }
};

/// The matching corner across the edge, set to leave on its far side; not valid when the edge is unlinked.
///
///       own edge          The corner's two sides lead to two neighbours, so the corners of a fan form a path
///     ------------>       or a ring: a walk that never turns back meets each corner once and ends at a
///   corner    facet       border or where it began. Facets wound against each other swap the sides.
///     <------------
///     previous edge
inline FanStep CrossEdge(const FanStep& step, const Mate* mates)
{
    const Mate mate = mates[step.EdgeToCross()];
    if (!mate.IsLinked())
        return {};
    // The corner is at the start of its own edge; an opposite partner has it at its end, where the next edge
    // starts.
    const bool isAtPartnersEnd = step.leavesThroughOwnEdge != mate.RunsSameWay();
    return {isAtPartnersEnd ? NextInFacet(mate.Partner()) : mate.Partner(), isAtPartnersEnd};
}

/// Links the half-edges that exact matching left over, within a tolerance (TolerantLinks_p.cpp).
void LinkWithinTolerance(Soup& soup);

/// Turns facets over until each piece is wound like its first facet (Winding_p.cpp).
void MakeWindingConsistent(Soup& soup);

/// The signed volume of the soup (Winding_p.cpp).
double VolumeOf(const Soup& soup);

/// Gives every fan of corners one vertex, in first-met order, and hands over faces and vertices; the soup's
/// own lists are used up (FanNumbers_p.cpp).
/// @param turnOver  number as if corners 0 and 1 of every facet were swapped
void NumberFans(Soup& soup, bool turnOver, std::vector<TriangleFace>& faces,
                std::vector<Vector3D<float>>& vertices);

} // namespace kr::stl
