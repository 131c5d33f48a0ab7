#pragma once

#include <cstddef>
#include <cstdint>

#include "core/common/LargePages_p.h"
#include "core/math/TriangleFace.h"

namespace kr {

/// Half-edge h = 3 * facet + edge runs from corner `edge` of its facet to corner (edge + 1) mod 3. The same
/// number names the corner that it starts from.
using HalfEdge = std::int32_t;

/// The largest number of facets whose half-edges have numbers.
constexpr std::size_t kMaxFacets = 0x7fffffff / 3;

constexpr HalfEdge NextInFacet(HalfEdge h)
{
    return h % 3 == 2 ? h - 2 : h + 1;
}
constexpr HalfEdge PreviousInFacet(HalfEdge h)
{
    return h % 3 == 0 ? h + 2 : h - 1;
}

/// What a half-edge is linked to, in 32 bits:
///   -1          nothing
///   m >= 0      half-edge m, which runs the opposite way: both facets are wound alike
///   -2 - m      half-edge m, which runs the same way: the facets are wound against each other
class Mate {
public:
    constexpr Mate() = default;
    static constexpr Mate Opposite(HalfEdge partner) { return Mate(partner); }
    static constexpr Mate SameWay(HalfEdge partner) { return Mate(-2 - partner); }

    constexpr bool IsLinked() const { return m_code != -1; }
    constexpr bool RunsSameWay() const { return m_code < -1; }
    /// The partner's number; -1 when there is none.
    constexpr HalfEdge Partner() const { return m_code < -1 ? -2 - m_code : m_code; }
    /// The same partner after one of the two facets was turned over.
    constexpr Mate Turned() const { return IsLinked() ? Mate(-2 - m_code) : *this; }

    friend constexpr bool operator==(Mate a, Mate b) { return a.m_code == b.m_code; }

private:
    explicit constexpr Mate(std::int32_t code) : m_code(code) {}

    std::int32_t m_code = -1;
};

static_assert(sizeof(Mate) == 4, "one word a half-edge");

/// The half-edges of a mesh, each linked to the one that runs along it in a neighbouring facet.
struct HalfEdgeLinks {
    Scratch<Mate> mates;           ///< one a half-edge
    std::size_t unlinkedCount = 0; ///< half-edges without a partner
    std::size_t sameWayCount = 0;  ///< pairs that run the same way in both facets
    bool hasLoops = false;         ///< some facet names a vertex twice

    /// Links two half-edges without a partner.
    void Link(HalfEdge a, HalfEdge b, bool isOpposite)
    {
        mates[std::size_t(a)] = isOpposite ? Mate::Opposite(b) : Mate::SameWay(b);
        mates[std::size_t(b)] = isOpposite ? Mate::Opposite(a) : Mate::SameWay(a);
        unlinkedCount -= 2;
        sameWayCount += !isOpposite;
    }
};

/// A half-edge while it looks for its partner.
struct EdgeRecord {
    std::int32_t lower;
    std::int32_t upper; ///< ~upper when the half-edge runs from the upper vertex to the lower one
    HalfEdge halfEdge;

    bool RunsUp() const { return upper >= 0; }
    std::int32_t UpperVertex() const { return upper >= 0 ? upper : ~upper; }
};

/// Pairs half-edges between the same two vertices, in either direction. Half-edges are taken in order (facet
/// by facet, edge 0, 1, 2); each takes the latest one before it that is still unpaired and not of its own
/// facet. So of three facets on an edge the first two are neighbours, and of four the first two and the last
/// two. Half-edges from a vertex to itself pair among themselves, as opposite ones.
///
/// Linear time as long as no vertex has very many unpaired edges at once; n log n at most.
/// @param faces    faceCount of them, at most kMaxFacets; every index in 0..vertexCount-1
/// @param records  memory to work in, 3 * faceCount or more; afterwards of no meaning
HalfEdgeLinks PairHalfEdges(const TriangleFace* faces, std::size_t faceCount, std::size_t vertexCount,
                            Scratch<EdgeRecord>& records);
/// The same, with memory of its own.
HalfEdgeLinks PairHalfEdges(const TriangleFace* faces, std::size_t faceCount, std::size_t vertexCount);

} // namespace kr
