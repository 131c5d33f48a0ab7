#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "core/common/LargePages_p.h"

namespace kr::stl {

/// Groups of corners that move together while edges are snapped.
///
/// A snap moves one group to a position and then joins it with another that stays. Writing the position into
/// each corner would cost a fan of n facets n * n / 2 writes; so groups form a forest in which the smaller is
/// hung below the larger, and a move is noted at the root only. A note counts for a group that hung there
/// before it was made, not for one that came later, which the times tell. Each look-up and join takes as many
/// steps as the logarithm of the group count.
class SnapGroups {
public:
    explicit SnapGroups(std::size_t count) : m_nodes(count)
    {
        std::fill(m_nodes.begin(), m_nodes.end(), Node());
    }

    static constexpr std::int32_t kNotMoved = -1;

    /// Where a group belongs, and where it lies.
    struct Location {
        std::size_t root = 0; ///< of all groups that move with it, until the next join
        std::int32_t position =
            kNotMoved; ///< that it was last moved to; kNotMoved while it is where it was at first
    };

    Location Locate(std::size_t group) const
    {
        Location location{group, kNotMoved};
        std::uint32_t joinedAt = 0;
        for (;;) {
            const Node& node = m_nodes[location.root];
            // Joins above happened later than all moves below, so the highest valid note is the latest.
            if (node.movedAt > joinedAt)
                location.position = node.position;
            if (node.parent == kRoot)
                return location;
            joinedAt = node.joinedAt;
            location.root = std::size_t(node.parent);
        }
    }

    /// Moves all groups of the root.
    void Move(std::size_t root, std::int32_t position)
    {
        m_nodes[root].position = position;
        m_nodes[root].movedAt = ++m_time;
    }

    /// Lets two groups move together from now on.
    void Join(std::size_t a, std::size_t b)
    {
        std::size_t larger = Locate(a).root, smaller = Locate(b).root;
        if (larger == smaller)
            return;
        if (m_nodes[larger].size < m_nodes[smaller].size)
            std::swap(larger, smaller);
        m_nodes[smaller].parent = std::int32_t(larger);
        m_nodes[smaller].joinedAt = ++m_time;
        m_nodes[larger].size += m_nodes[smaller].size;
    }

private:
    static constexpr std::int32_t kRoot = -1;

    struct Node {
        std::int32_t position = kNotMoved;
        std::int32_t parent = kRoot;
        std::uint32_t size = 1;
        std::uint32_t joinedAt = 0; // joined to the parent
        std::uint32_t movedAt = 0;  // noted here; 0 is never
    };

    Scratch<Node> m_nodes;
    std::uint32_t m_time = 0;
};

} // namespace kr::stl
