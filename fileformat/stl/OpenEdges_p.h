#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <Eigen/Core>

#include "fileformat/stl/Soup_p.h"

namespace kr::stl {

/// The box around the soup: minimum corner, extents.
using SoupBox = std::array<Eigen::Vector3f, 2>;

/// The half-edges without a partner, in order.
using OpenEdges = std::vector<HalfEdge>;

/// A set of half-edges or corners, in one bit each: small enough to stay in the cache.
class HalfEdgeSet {
public:
    explicit HalfEdgeSet(std::size_t halfEdgeCount) : m_words((halfEdgeCount + 63) / 64) {}

    void Add(HalfEdge h) { m_words[std::size_t(h) / 64] |= BitOf(h); }
    bool Has(HalfEdge h) const { return (m_words[std::size_t(h) / 64] & BitOf(h)) != 0; }

private:
    static std::uint64_t BitOf(HalfEdge h) { return std::uint64_t(1) << (std::size_t(h) % 64); }

    Scratch<std::uint64_t> m_words;
};

/// Links the open edges whose ends fall into the same cells, counted in steps of @p tolerance from the box's
/// minimum corner, and lets their ends meet. What stays open stays in the list (CellLinks_p.cpp).
void LinkWithinCells(Soup& soup, OpenEdges& openEdges, const SoupBox& box, float tolerance);

/// Links the open edges whose ends differ by less than the reach on each axis, however the cells' borders
/// run, and lets their ends meet (NearLinks_p.cpp).
void LinkWithinReach(Soup& soup, const OpenEdges& openEdges, float reach);

} // namespace kr::stl
