#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

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
    /// Starts anew with @p count groups, none of them moved or joined.
    void Reset(std::size_t count)
    {
        m_nodes.assign(count, Node());
        m_time = 0;
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

    /// A corner at an end of an edge: the group that it moves with, and where it lies as long as that has not
    /// moved.
    struct End {
        std::size_t group = 0;
        std::int32_t firstPosition = 0;
    };

    std::int32_t PositionOf(const End& end) const { return PositionAt(Locate(end.group), end); }

    /// Roots of two groups that meet.
    struct Meeting {
        std::size_t currentRoot = 0;
        std::size_t earlierRoot = 0;
    };

    /// Moves the earlier end's group, and all that move with it, to where the current end is.
    Meeting Snap(const End& current, const End& earlier)
    {
        const Location to = Locate(current.group), from = Locate(earlier.group);
        const std::int32_t target = PositionAt(to, current);
        if (target != PositionAt(from, earlier))
            Move(from.root, target);
        return {to.root, from.root};
    }

    /// Lets two groups move together from now on.
    void Join(const Meeting& meeting)
    {
        std::size_t larger = Locate(meeting.currentRoot).root, smaller = Locate(meeting.earlierRoot).root;
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

    static std::int32_t PositionAt(const Location& location, const End& end)
    {
        return location.position == kNotMoved ? end.firstPosition : location.position;
    }

    void Move(std::size_t root, std::int32_t position)
    {
        m_nodes[root].position = position;
        m_nodes[root].movedAt = ++m_time;
    }

    struct Node {
        std::int32_t position = kNotMoved;
        std::int32_t parent = kRoot;
        std::uint32_t size = 1;
        std::uint32_t joinedAt = 0; // joined to the parent
        std::uint32_t movedAt = 0;  // noted here; 0 is never
    };

    std::vector<Node> m_nodes;
    std::uint32_t m_time = 0;
};

} // namespace kr::stl
