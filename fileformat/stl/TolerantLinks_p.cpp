#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

#include "core/math/EigenVecFunc3f.h"
#include "fileformat/stl/EdgeTable_p.h"
#include "fileformat/stl/NearEdgeGrid_p.h"
#include "fileformat/stl/SnapGroups_p.h"
#include "fileformat/stl/Soup_p.h"

// Links edges whose ends lie close together and snaps the ends to one place. Only edges without a partner
// take part, so the work follows their number.
//
//            A facet's corner at the end of an open edge is one end of a path of corners, from facet to facet
//            across
//     \ | /  linked edges to the next open edge: all corners of such a path have one place and move together,
//     so each
//   ___\|/   path is a group (SnapGroups). Linking two open edges joins their groups at both ends. The new
//   places are
//       ^    written into the corners once, at the end.

namespace kr::stl {

namespace {

struct SoupMeasures {
    std::array<Eigen::Vector3f, 2> box{Eigen::Vector3f::Zero(),
                                       Eigen::Vector3f::Zero()}; // minimum corner, extents
    float diagonal = 0;
    float smallestEdge = 0;
};

SoupMeasures Measure(const Soup& soup)
{
    SoupMeasures measures;
    CornerBox box = soup.removedCorners;
    measures.smallestEdge = soup.firstEdgeExtent;
    for (std::size_t t = 0; t < soup.facetCount; ++t) {
        const Vector3D<float>* corner = &soup.corners[3 * t];
        for (int c = 0; c < 3; ++c) {
            box.Add(corner[c]);
            measures.smallestEdge =
                std::min(measures.smallestEdge, EdgeExtent(corner[c], corner[(c + 1) % 3]));
        }
    }
    if (!box.isEmpty) {
        measures.box[0] = EigenVecFunc3f::VectorToEigen(box.minimum);
        measures.box[1] = EigenVecFunc3f::VectorToEigen(box.maximum) - measures.box[0];
        measures.diagonal = float(measures.box[1].cast<double>().norm());
    }
    return measures;
}

bool HaveSameBits(const Vector3D<float>& a, const Vector3D<float>& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

class TolerantLinker {
public:
    explicit TolerantLinker(Soup& soup)
        : m_soup(soup), m_mates(soup.links.mates.data()), m_openNumber(3 * soup.facetCount)
    {
        CollectOpenEdges();
        CollectGroups();
    }

    bool HasOpenEdges() const { return m_soup.links.unlinkedCount > 0; }

    /// One pass over the open edges in order; edges whose ends fall into the same cells are linked.
    void LinkWithinCells(const std::array<Eigen::Vector3f, 2>& box, float tolerance)
    {
        EdgeTable table(m_soup.links.unlinkedCount);
        for (std::size_t i = 0; i < m_openEdges.size(); ++i) {
            if (IsLinked(i))
                continue;
            MeshEigenEdgeInfo edge, partner;
            edge.facet = m_openEdges[i] / 3;
            edge.edge = m_openEdges[i] % 3;
            const Eigen::Vector3f start = EigenVecFunc3f::VectorToEigen(PlaceOfStart(i).point);
            const Eigen::Vector3f end = EigenVecFunc3f::VectorToEigen(PlaceOfEnd(i).point);
            if (edge.update(start, end, box[0], tolerance) && table.TakePartnerOrInsert(edge, partner))
                Link(i, OpenNumber(3 * partner.facet + partner.edge), edge.isOppositeEdge(partner));
        }
    }

    /// One more pass over what is left: links edges whose ends differ by less than the reach on each axis,
    /// however the cells' borders run. The nearest of the earlier edges is taken, of equally near ones the
    /// latest.
    void LinkWithinReach(float reach)
    {
        if (!(reach > 0) || !std::isfinite(reach))
            return;
        NearEdgeGrid grid(m_openEdges.size(), reach);
        for (std::size_t i = 0; i < m_openEdges.size(); ++i) {
            if (IsLinked(i))
                continue;
            const EdgeEnds ends = EndsOf(i);
            const float extent = EdgeExtent(ends.start, ends.end);
            if (extent < reach || !std::isfinite(extent))
                continue;
            std::optional<NearEdge> nearest;
            grid.ForEachNear(ends, [&](std::size_t j, const EdgeEnds& other) {
                if (!IsLinked(j) && m_openEdges[i] / 3 != m_openEdges[j] / 3)
                    ConsiderPartner(ends, j, other, reach, nearest);
            });
            if (nearest)
                Link(i, nearest->openEdge, nearest->isOpposite);
            else
                grid.Insert(i, ends);
        }
    }

    /// Writes the new places into the soup.
    void ApplyPlaces()
    {
        for (std::size_t group = 0; group < m_groupEnds.size(); ++group)
            if (const Place* place = m_groups.Find(group))
                ForEachCorner(m_groupEnds[group], [&](HalfEdge corner) { MoveCorner(corner, *place); });
    }

private:
    struct NearEdge {
        std::size_t openEdge;
        bool isOpposite;
        float distance;
    };

    // A corner at an end of an open edge, and the group that it moves with.
    struct GroupEnd {
        HalfEdge corner;
        std::size_t group;
    };

    void CollectOpenEdges()
    {
        m_openEdges.reserve(m_soup.links.unlinkedCount);
        for (std::size_t h = 0; h < 3 * m_soup.facetCount; ++h)
            if (!m_mates[h].IsLinked()) {
                m_openEdges.push_back(HalfEdge(h));
                m_openNumber[h] = std::int32_t(m_openEdges.size());
            }
    }

    bool IsOpen(HalfEdge h) const { return m_openNumber[std::size_t(h)] != 0; }
    std::size_t OpenNumber(HalfEdge h) const { return std::size_t(m_openNumber[std::size_t(h)]) - 1; }
    bool IsLinked(std::size_t openEdge) const { return m_mates[m_openEdges[openEdge]].IsLinked(); }

    // Visits the corners of a path from one of its ends; returns the last step, which faces an open edge.
    // Ends because a path that begins at an open edge cannot run into a ring. Only links that were there at
    // first are followed.
    template<class Visit>
    FanStep ForEachCorner(FanStep step, Visit visit) const
    {
        visit(step.corner);
        while (!IsOpen(step.EdgeToCross())) {
            step = CrossEdge(step, m_mates);
            visit(step.corner);
        }
        return step;
    }

    void CollectGroups()
    {
        m_groupOfStart.assign(m_openEdges.size(), kNoGroup);
        m_groupOfEnd.assign(m_openEdges.size(), kNoGroup);
        for (std::size_t i = 0; i < m_openEdges.size(); ++i) {
            if (m_groupOfStart[i] == kNoGroup)
                AddGroup({m_openEdges[i], false}, m_groupOfStart[i]);
            if (m_groupOfEnd[i] == kNoGroup)
                AddGroup({NextInFacet(m_openEdges[i]), true}, m_groupOfEnd[i]);
        }
        m_groups = SnapGroups(m_groupEnds.size());
    }

    void AddGroup(const FanStep& nearEnd, std::size_t& groupOfNearEnd)
    {
        const std::size_t group = m_groupEnds.size();
        m_groupEnds.push_back(nearEnd);
        groupOfNearEnd = group;
        const FanStep farEnd = ForEachCorner(nearEnd, [](HalfEdge) {});
        const std::size_t openEdge = OpenNumber(farEnd.EdgeToCross());
        (farEnd.leavesThroughOwnEdge ? m_groupOfStart : m_groupOfEnd)[openEdge] = group;
    }

    Place PlaceOf(const GroupEnd& end) const
    {
        if (const Place* place = m_groups.Find(end.group))
            return *place;
        return {m_soup.corners[std::size_t(end.corner)],
                m_soup.positionOf[std::size_t(end.corner / 3)][end.corner % 3]};
    }
    Place PlaceOfStart(std::size_t i) const { return PlaceOf({m_openEdges[i], m_groupOfStart[i]}); }
    Place PlaceOfEnd(std::size_t i) const { return PlaceOf({NextInFacet(m_openEdges[i]), m_groupOfEnd[i]}); }
    EdgeEnds EndsOf(std::size_t i) const { return {PlaceOfStart(i).point, PlaceOfEnd(i).point}; }

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

    void Link(std::size_t current, std::size_t earlier, bool isOpposite)
    {
        const HalfEdge a = m_openEdges[current], b = m_openEdges[earlier];
        const GroupEnd aStart{a, m_groupOfStart[current]}, aEnd{NextInFacet(a), m_groupOfEnd[current]};
        const GroupEnd bStart{b, m_groupOfStart[earlier]}, bEnd{NextInFacet(b), m_groupOfEnd[earlier]};
        const GroupEnd& meetsStart = isOpposite ? bEnd : bStart;
        const GroupEnd& meetsEnd = isOpposite ? bStart : bEnd;
        Snap(aStart, meetsStart);
        Snap(aEnd, meetsEnd);
        m_groups.Join(aStart.group, meetsStart.group);
        m_groups.Join(aEnd.group, meetsEnd.group);

        m_mates[a] = isOpposite ? Mate::Opposite(b) : Mate::SameWay(b);
        m_mates[b] = isOpposite ? Mate::Opposite(a) : Mate::SameWay(a);
        m_soup.links.unlinkedCount -= 2;
        m_soup.links.sameWayCount += !isOpposite;
    }

    // The earlier facet's corner, and all corners that move with it, go to where the current facet's corner
    // is.
    void Snap(const GroupEnd& current, const GroupEnd& earlier)
    {
        const Place target = PlaceOf(current);
        if (!HaveSameBits(target.point, PlaceOf(earlier).point))
            m_groups.Move(earlier.group, target);
    }

    void MoveCorner(HalfEdge corner, const Place& place)
    {
        std::int32_t& position = m_soup.positionOf[std::size_t(corner / 3)][corner % 3];
        --m_soup.positions.positions[std::size_t(position)].cornerCount;
        ++m_soup.positions.positions[std::size_t(place.position)].cornerCount;
        position = place.position;
        m_soup.corners[std::size_t(corner)] = place.point;
        m_soup.isReordered = true;
    }

    static constexpr std::size_t kNoGroup = std::size_t(-1);

    Soup& m_soup;
    Mate* m_mates;
    std::vector<HalfEdge> m_openEdges;  // in order; all numbers of open edges below index this list
    Scratch<std::int32_t> m_openNumber; // for each half-edge 1 + its place in m_openEdges, 0 for the others
    std::vector<std::size_t> m_groupOfStart;
    std::vector<std::size_t> m_groupOfEnd;
    std::vector<FanStep> m_groupEnds; // for each group one of its ends, facing inwards
    SnapGroups m_groups{0};
};

} // namespace

void LinkWithinTolerance(Soup& soup)
{
    if (soup.links.unlinkedCount == 0)
        return;
    const SoupMeasures measures = Measure(soup);
    TolerantLinker linker(soup);
    linker.LinkWithinCells(measures.box, measures.smallestEdge);
    if (linker.HasOpenEdges())
        linker.LinkWithinCells(measures.box, measures.smallestEdge + measures.diagonal / 10000);
    if (linker.HasOpenEdges())
        linker.LinkWithinReach(measures.smallestEdge);
    linker.ApplyPlaces();
}

} // namespace kr::stl
