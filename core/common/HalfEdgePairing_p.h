#pragma once

#include <cstddef>
#include <cstdint>

#include "core/common/LargePages_p.h"
#include "core/math/TriangleFace.h"

namespace kr {

/// Half-edge h = 3 * facet + edge runs from corner `edge` of its facet to corner (edge + 1) mod 3.
using HalfEdge = std::int32_t;

/// The largest number of facets whose half-edges have numbers.
constexpr std::size_t kMaxFacets = 0x7fffffff / 3;

constexpr HalfEdge kUnlinked = -1;

constexpr HalfEdge NextInFacet(HalfEdge h)
{
    return h % 3 == 2 ? h - 2 : h + 1;
}
constexpr HalfEdge PreviousInFacet(HalfEdge h)
{
    return h % 3 == 0 ? h + 2 : h - 1;
}

/// The half-edges of a mesh, each linked to the one that runs along it in a neighbouring facet.
struct HalfEdgeLinks {
    Scratch<HalfEdge> mates;      ///< for each half-edge its partner's number, or kUnlinked
    std::size_t unlinkedCount = 0; ///< half-edges without a partner
    std::size_t sameWayCount = 0;  ///< pairs that run the same way in both facets, wound against each other
};

/// Pairs half-edges between the same two vertices, in either direction. Half-edges are taken in order (facet by facet,
/// edge 0, 1, 2); each takes the latest one before it that is still unpaired and not of its own facet. So of three
/// facets on an edge the first two are neighbours, and of four the first two and the last two.
/// Expected time linear in the number of facets as long as no vertex has very many unpaired edges; a vertex with n of
/// them costs n * log(n) at most.
/// @param faces        at most kMaxFacets; every index in 0..vertexCount-1
HalfEdgeLinks PairHalfEdges(const TriangleFace* faces, std::size_t faceCount, std::size_t vertexCount);

} // namespace kr
