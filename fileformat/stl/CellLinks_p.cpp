#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "core/math/EigenVecFunc3f.h"
#include "fileformat/stl/EdgeTable_p.h"
#include "fileformat/stl/OpenEdges_p.h"
#include "fileformat/stl/SnapGroups_p.h"

// Ends that meet lie in one cell, and what moves goes to where such an end is: no corner leaves its cell
// during a pass. So edges are linked by the cells that they lie in at the beginning, and where their ends lie
// apart, the fans are settled afterwards. Few fans need it; the others are not walked.
//
//    \  a |  b /    Corners that were linked before the pass have one place and are a group: here c, and
//     \   |   /     the others from d to b. The pass has linked two edges (==) and so joined both at each
//      \  |  /      of them. Each time the group of the earlier edge, and all that was joined to it, goes to
//   d  ===*===  c   where the later one's is; after that they move together. The second joint of this fan
//      /  |  \      moves nothing any more.

namespace kr::stl {

namespace {

constexpr HalfEdge kLinked = -1; // in the place of an open edge

/// Moves the corners of fans to one place. Each fan is walked at most twice once all its edges are linked,
/// and for at most kSmallFan steps an end before, so the work follows the number of corners.
class FanSettler {
public:
    FanSettler(Soup& soup, const OpenEdges& openEdges)
        : m_soup(soup),
          m_mates(soup.links.mates.data()),
          m_wasOpen(3 * soup.facetCount),
          m_isSettled(3 * soup.facetCount)
    {
        for (const HalfEdge h : openEdges)
            m_wasOpen.Add(h);
    }

    /// Takes note of an end at which two edges were linked that lie apart there.
    /// @param first  the step from the end into the fan, away from the linked edge
    void Note(const FanStep& first)
    {
        FanStep& waiting = m_waiting[m_noteCount++ % kWaitingEnds];
        if (waiting.IsValid() && !SettleSmallRing(waiting))
            m_late.push_back(waiting);
        waiting = first;
    }

    /// Settles all fans that are not yet, after the last edge was linked.
    void SettleRest()
    {
        for (const FanStep& first : m_waiting)
            if (first.IsValid())
                Settle(first);
        for (const FanStep& first : m_late)
            Settle(first);
    }

private:
    // In most files the edges of a fan lie near one another, so that after some more links all of them are
    // linked and still in the cache.
    static constexpr std::size_t kWaitingEnds = 256;
    static constexpr std::size_t kSmallFan = 16;

    // Where two groups of a fan meet at an edge that the pass has linked.
    struct Joint {
        HalfEdge linkedBy; // the later half-edge of the two: edges were linked in its order
        SnapGroups::End current;
        SnapGroups::End earlier;
    };

    // A fan that is a ring has no more edges to be linked. Returns whether the fan is settled.
    bool SettleSmallRing(const FanStep& first)
    {
        if (m_isSettled.Has(first.corner))
            return true;
        if (Collect(first, kSmallFan).IsValid())
            return false;
        JoinAndMove();
        return true;
    }

    void Settle(const FanStep& first)
    {
        if (m_isSettled.Has(first.corner))
            return;
        constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();
        const FanStep last = Collect(first, kUnlimited);
        if (last.IsValid())
            Collect({last.corner, !last.leavesThroughOwnEdge}, kUnlimited);
        JoinAndMove();
    }

    // Lists the fan from its first corner on. Returns the step that it stops at, at a border or because there
    // are too many corners; none when the fan is a ring.
    FanStep Collect(const FanStep& first, std::size_t atMost)
    {
        m_corners.clear();
        m_joints.clear();
        m_groupStarts.assign(1, 0);
        for (FanStep step = first;;) {
            m_corners.push_back(step.corner);
            const FanStep next = CrossEdge(step, m_mates);
            if (!next.IsValid() || m_corners.size() == atMost)
                return step;
            const bool closesRing = next.corner == first.corner;
            if (m_wasOpen.Has(step.EdgeToCross()))
                AddJoint(step, next, closesRing);
            if (closesRing)
                return {};
            step = next;
        }
    }

    // A ring is collected from a joint on, so its last group ends where the first begins.
    void AddJoint(const FanStep& step, const FanStep& next, bool closesRing)
    {
        const SnapGroups::End here{m_groupStarts.size() - 1, m_soup.PositionAt(step.corner)};
        if (!closesRing)
            m_groupStarts.push_back(m_corners.size());
        const std::size_t nextGroup = closesRing ? 0 : m_groupStarts.size() - 1;
        const SnapGroups::End there{nextGroup, m_soup.PositionAt(next.corner)};
        const HalfEdge edge = step.EdgeToCross(), partner = m_mates[edge].Partner();
        m_joints.push_back(edge > partner ? Joint{edge, here, there} : Joint{partner, there, here});
    }

    void JoinAndMove()
    {
        std::sort(m_joints.begin(), m_joints.end(),
                  [](const Joint& a, const Joint& b) { return a.linkedBy < b.linkedBy; });
        m_groups.Reset(m_groupStarts.size());
        for (const Joint& joint : m_joints)
            m_groups.Join(m_groups.Snap(joint.current, joint.earlier));
        m_groupStarts.push_back(m_corners.size());
        for (std::size_t group = 0; group + 1 < m_groupStarts.size(); ++group)
            MoveCorners(m_groupStarts[group], m_groupStarts[group + 1], m_groups.Locate(group).position);
        for (const HalfEdge corner : m_corners)
            m_isSettled.Add(corner);
    }

    void MoveCorners(std::size_t begin, std::size_t end, std::int32_t position)
    {
        if (position != SnapGroups::kNotMoved)
            for (std::size_t n = begin; n < end; ++n)
                m_soup.MoveCorner(m_corners[n], position);
    }

    Soup& m_soup;
    const Mate* m_mates;
    HalfEdgeSet m_wasOpen;
    HalfEdgeSet m_isSettled; // corners
    std::array<FanStep, kWaitingEnds> m_waiting;
    std::size_t m_noteCount = 0;
    std::vector<FanStep> m_late; // waited and were not small rings yet

    // Of the fan at hand, here for the sake of their memory.
    std::vector<HalfEdge> m_corners;
    std::vector<std::size_t> m_groupStarts; // indices of corners
    std::vector<Joint> m_joints;
    SnapGroups m_groups;
};

class CellLinker {
public:
    CellLinker(Soup& soup, OpenEdges& openEdges, const SoupBox& box, float tolerance)
        : m_soup(soup),
          m_openEdges(openEdges),
          m_box(box),
          m_tolerance(tolerance),
          m_table(openEdges.size()),
          m_settler(soup, openEdges)
    {}

    /// Links the edges in order, each with the latest one before it. In blocks, so that the table's buckets
    /// are in the cache when they are looked at.
    void Link()
    {
        std::array<FiledEdge, 16> block;
        for (std::size_t first = 0; first < m_openEdges.size(); first += block.size()) {
            const std::size_t count = std::min(block.size(), m_openEdges.size() - first);
            for (std::size_t n = 0; n < count; ++n)
                File(first + n, block[n]);
            for (std::size_t n = 0; n < count; ++n)
                if (block[n].takesPart)
                    LinkOrInsert(block[n]);
        }
        m_settler.SettleRest();
    }

private:
    struct FiledEdge {
        bool takesPart = false;
        int bucket = 0;
        int openEdge = 0; // its index
        MeshEigenEdgeInfo record;
    };

    Eigen::Vector3f PointAt(HalfEdge corner) const
    {
        return EigenVecFunc3f::VectorToEigen(m_soup.PointAt(corner));
    }

    // Fills in place: a record handed back whole would be read again before its stores are through.
    void File(std::size_t openEdge, FiledEdge& filed) const
    {
        const HalfEdge h = m_openEdges[openEdge];
        filed.openEdge = int(openEdge);
        filed.record.facet = h / 3;
        filed.record.edge = h % 3;
        filed.takesPart = filed.record.update(PointAt(h), PointAt(NextInFacet(h)), m_box[0], m_tolerance);
        if (filed.takesPart) {
            filed.bucket = m_table.BucketOf(filed.record);
            m_table.Prefetch(filed.bucket);
        }
    }

    void LinkOrInsert(const FiledEdge& filed)
    {
        const EdgeTable::Partner partner =
            m_table.TakePartnerOrInsert(filed.record, filed.bucket, filed.openEdge);
        if (partner.number < 0)
            return;
        const HalfEdge current = std::exchange(m_openEdges[std::size_t(filed.openEdge)], kLinked);
        const HalfEdge earlier = std::exchange(m_openEdges[std::size_t(partner.number)], kLinked);
        m_soup.links.Link(current, earlier, partner.isOpposite);
        const HalfEdge earlierEnd = NextInFacet(earlier);
        NoteIfApart({current, false}, partner.isOpposite ? earlierEnd : earlier);
        NoteIfApart({NextInFacet(current), true}, partner.isOpposite ? earlier : earlierEnd);
    }

    void NoteIfApart(const FanStep& first, HalfEdge metCorner)
    {
        if (m_soup.PositionAt(first.corner) != m_soup.PositionAt(metCorner))
            m_settler.Note(first);
    }

    Soup& m_soup;
    OpenEdges& m_openEdges;
    const SoupBox& m_box;
    const float m_tolerance;
    EdgeTable m_table;
    FanSettler m_settler;
};

} // namespace

void LinkWithinCells(Soup& soup, OpenEdges& openEdges, const SoupBox& box, float tolerance)
{
    if (openEdges.empty() || !(tolerance > 0) || !std::isfinite(tolerance))
        return;
    CellLinker(soup, openEdges, box, tolerance).Link();
    openEdges.erase(std::remove(openEdges.begin(), openEdges.end(), kLinked), openEdges.end());
}

} // namespace kr::stl
