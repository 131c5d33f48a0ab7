#include "apps/krmodel/EdgeLists.h"

#include <algorithm>

namespace krmodel {

namespace {

/// Calls @p take with the smaller vertex and the side, for each side of each facet.
template<class Take>
void ForEachSide(const std::vector<TriangleFace>& facets, const Take& take)
{
    for (std::size_t i = 0; i < facets.size(); ++i) {
        const TriangleFace& facet = facets[i];
        if (facet.v[0] < 0)
            continue;
        for (int corner = 0; corner < 3; ++corner) {
            const int from = facet.v[corner], to = facet.v[(corner + 1) % 3];
            take(std::size_t(std::min(from, to)), HalfEdge{std::max(from, to), int(i), from < to});
        }
    }
}

} // namespace

EdgeLists::EdgeLists(const std::vector<TriangleFace>& facets, std::size_t vertexCount)
    : m_starts(vertexCount + 2, 0)
{
    // Two places further on, so that filling the lists moves each start to where it belongs.
    ForEachSide(facets, [&](std::size_t vertex, const HalfEdge&) { ++m_starts[vertex + 2]; });
    for (std::size_t i = 1; i < m_starts.size(); ++i)
        m_starts[i] += m_starts[i - 1];
    m_sides.resize(m_starts.back());
    ForEachSide(facets,
                [&](std::size_t vertex, const HalfEdge& side) { m_sides[m_starts[vertex + 1]++] = side; });
    m_starts.pop_back();
    for (std::size_t vertex = 0; vertex < vertexCount; ++vertex)
        std::sort(m_sides.data() + m_starts[vertex], m_sides.data() + m_starts[vertex + 1]);
}

} // namespace krmodel
