#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "fileformat/stl/NearEdgeGrid_p.h"
#include "fileformat/stl/OpenEdges_p.h"
#include "fileformat/stl/SnapGroups_p.h"

// Each open edge is compared with the earlier ones as these lay when they were filed, and linking it moves
// ends of edges to come: here the moves cannot wait.
//
//   \  |  /    A facet's corner at the end of an open edge is one end of a path of corners, from facet to
//    \ | /     facet across linked edges to the next open edge. All corners of a path have one place and
//   __\|/__    move together, so each path is a group (SnapGroups). Linking two open edges joins their
//   path -->   groups at both ends. The new positions are written into the soup once, at the end.

namespace kr::stl {

namespace {

// A half-edge that had no partner at first, and the corners at its two ends.
struct OpenEdge {
    HalfEdge halfEdge;
    SnapGroups::End start;
    SnapGroups::End end;

    std::int32_t Facet() const { return halfEdge / 3; }
};

class NearLinker {
public:
    NearLinker(Soup& soup, const OpenEdges& openEdges)
        : m_soup(soup),
          m_mates(soup.links.mates.data()),
          m_openHalfEdges(openEdges),
          m_openEdges(openEdges.size())
    {
        for (std::size_t i = 0; i < openEdges.size(); ++i) {
            const HalfEdge h = openEdges[i];
            m_openEdges[i] = {h, {kNoGroup, soup.PositionAt(h)}, {kNoGroup, soup.PositionAt(NextInFacet(h))}};
        }
        CollectGroups();
    }

    /// The nearest of the earlier edges is taken, of equally near ones the latest.
    void Link(float reach)
    {
        NearEdgeGrid grid(m_openEdges.size(), reach);
        for (std::size_t i = 0; i < m_openEdges.size(); ++i) {
            const EdgeEnds ends = EndsOf(m_openEdges[i]);
            const float extent = EdgeExtent(ends.start, ends.end);
            if (extent < reach || !std::isfinite(extent))
                continue;
            std::optional<NearEdge> nearest;
            grid.ForEachNear(ends, [&](std::size_t j, const EdgeEnds& other) {
                if (!IsLinked(m_openEdges[j]) && m_openEdges[i].Facet() != m_openEdges[j].Facet())
                    ConsiderPartner(ends, j, other, reach, nearest);
            });
            if (nearest)
                LinkEdges(m_openEdges[i], m_openEdges[nearest->openEdge], nearest->isOpposite);
            else
                grid.Insert(i, ends);
        }
    }

    /// Writes the new positions into the soup.
    void ApplyMoves()
    {
        for (std::size_t group = 0; group < m_groupStarts.size() - 1; ++group) {
            const std::int32_t position = m_groups.Locate(group).position;
            if (position != SnapGroups::kNotMoved)
                for (std::size_t n = m_groupStarts[group]; n < m_groupStarts[group + 1]; ++n)
                    m_soup.MoveCorner(m_groupCorners[n], position);
        }
    }

private:
    static constexpr std::size_t kNoGroup = std::size_t(-1);

    struct NearEdge {
        std::size_t openEdge;
        bool isOpposite;
        float distance;
    };

    bool IsLinked(const OpenEdge& edge) const { return m_mates[edge.halfEdge].IsLinked(); }
    EdgeEnds EndsOf(const OpenEdge& edge) const
    {
        return {m_soup.PointOf(m_groups.PositionOf(edge.start)),
                m_soup.PointOf(m_groups.PositionOf(edge.end))};
    }

    void CollectGroups()
    {
        for (OpenEdge& edge : m_openEdges) {
            if (edge.start.group == kNoGroup)
                edge.start.group = AddGroup({edge.halfEdge, false});
            if (edge.end.group == kNoGroup)
                edge.end.group = AddGroup({NextInFacet(edge.halfEdge), true});
        }
        m_groups.Reset(m_groupStarts.size());
        m_groupStarts.push_back(m_groupCorners.size());
    }

    // Walks a path from one of its ends and tells the open edge at the other: a path has two ends and an open
    // edge too, so there are as many groups as open edges. Ends because a path that begins at an open edge
    // cannot run into a ring.
    std::size_t AddGroup(FanStep step)
    {
        const std::size_t group = m_groupStarts.size();
        m_groupStarts.push_back(m_groupCorners.size());
        m_groupCorners.push_back(step.corner);
        while (m_mates[step.EdgeToCross()].IsLinked()) {
            step = CrossEdge(step, m_mates);
            m_groupCorners.push_back(step.corner);
        }
        OpenEdge& farEdge = OpenEdgeOf(step.EdgeToCross());
        (step.leavesThroughOwnEdge ? farEdge.start : farEdge.end).group = group;
        return group;
    }

    OpenEdge& OpenEdgeOf(HalfEdge openHalfEdge)
    {
        const auto found = std::lower_bound(m_openHalfEdges.begin(), m_openHalfEdges.end(), openHalfEdge);
        return m_openEdges[std::size_t(found - m_openHalfEdges.begin())];
    }

    static void ConsiderPartner(const EdgeEnds& ends, std::size_t j, const EdgeEnds& other, float reach,
                                std::optional<NearEdge>& nearest)
    {
        const float opposite = std::max(EdgeExtent(ends.start, other.end), EdgeExtent(ends.end, other.start));
        const float sameWay = std::max(EdgeExtent(ends.start, other.start), EdgeExtent(ends.end, other.end));
        const float distance = std::min(opposite, sameWay);
        const bool isNearer = !nearest || distance < nearest->distance ||
                              (distance == nearest->distance && j > nearest->openEdge);
        if (distance < reach && isNearer)
            nearest = NearEdge{j, opposite <= sameWay, distance};
    }

    void LinkEdges(const OpenEdge& current, const OpenEdge& earlier, bool isOpposite)
    {
        const auto atStart = m_groups.Snap(current.start, isOpposite ? earlier.end : earlier.start);
        const auto atEnd = m_groups.Snap(current.end, isOpposite ? earlier.start : earlier.end);
        m_groups.Join(atStart);
        m_groups.Join(atEnd);
        m_soup.links.Link(current.halfEdge, earlier.halfEdge, isOpposite);
    }

    Soup& m_soup;
    const Mate* m_mates;
    const OpenEdges& m_openHalfEdges;
    std::vector<OpenEdge> m_openEdges;      // one for each of them
    std::vector<HalfEdge> m_groupCorners;   // group by group; a corner is in one group at most
    std::vector<std::size_t> m_groupStarts; // where each group's corners begin, and the end of all
    SnapGroups m_groups;
};

} // namespace

void LinkWithinReach(Soup& soup, const OpenEdges& openEdges, float reach)
{
    if (openEdges.empty() || !(reach > 0) || !std::isfinite(reach))
        return;
    NearLinker linker(soup, openEdges);
    linker.Link(reach);
    linker.ApplyMoves();
}

} // namespace kr::stl
