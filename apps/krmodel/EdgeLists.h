#pragma once

#include <cstddef>
#include <vector>

#include "core/math/TriangleFace.h"

namespace krmodel {

/// The side of a facet, as seen from its vertex of the smaller number.
struct HalfEdge {
    int other;      ///< the vertex of the larger number
    int facet;      ///< its index
    bool isForward; ///< the facet goes from the smaller number to the larger one

    bool operator<(const HalfEdge& right) const
    {
        return other != right.other ? other < right.other : facet < right.facet;
    }
};

/// The sides of facets, those of one edge side by side. They are put into a list for each vertex, by
/// counting; what is left to sort are the few sides that begin in one vertex.
class EdgeLists {
public:
    /// @param facets  of one with (-1, -1, -1) the sides do not take part; all other indices are below
    ///     @p vertexCount and different
    EdgeLists(const std::vector<TriangleFace>& facets, std::size_t vertexCount);

    /// Calls @p visit with the smaller vertex and the range of sides of each edge.
    template<class Visit>
    void ForEachEdge(const Visit& visit) const
    {
        for (std::size_t vertex = 0; vertex + 1 < m_starts.size(); ++vertex) {
            const HalfEdge* side = m_sides.data() + m_starts[vertex];
            const HalfEdge* const end = m_sides.data() + m_starts[vertex + 1];
            while (side != end) {
                const HalfEdge* const first = side;
                while (side != end && side->other == first->other)
                    ++side;
                visit(int(vertex), first, side);
            }
        }
    }

private:
    std::vector<std::size_t> m_starts; ///< in m_sides, by vertex; one more
    std::vector<HalfEdge> m_sides;
};

} // namespace krmodel
