#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
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
//   \  |  /    A facet's corner at the end of an open edge is one end of a path of corners, from facet to
//    \ | /     facet across linked edges to the next open edge. All corners of a path have one place and
//   __\|/__    move together, so each path is a group (SnapGroups). Linking two open edges joins their
//   path -->   groups at both ends. The new positions are written into the soup once, at the end.

namespace kr::stl {

namespace {

struct SoupMeasures {
    std::array<Eigen::Vector3f, 2> box{Eigen::Vector3f::Zero(),
                                       Eigen::Vector3f::Zero()}; // minimum corner, extents
    float diagonal = 0;
    float smallestEdge = 0;
};

void Lower(float& least, float value)
{
    least = value < least ? value : least;
}
void Raise(float& most, float value)
{
    most = value > most ? value : most;
}

// Every corner lies at a position, and there are fewer of them. Sets isPlain when all are finite.
CornerBox BoxOfPositions(const Soup& soup, bool& isPlain)
{
    const Position* const positions = soup.positions.positions.data();
    CornerBox box;
    box.isEmpty = soup.positions.count == 0;
    if (!box.isEmpty)
        box.minimum = box.maximum = positions[0].point;
    isPlain = true;
    for (std::size_t i = 0; i < soup.positions.count; ++i) {
        const Vector3D<float>& point = positions[i].point;
        isPlain &= IsFinite(point);
        Lower(box.minimum.x, point.x);
        Lower(box.minimum.y, point.y);
        Lower(box.minimum.z, point.z);
        Raise(box.maximum.x, point.x);
        Raise(box.maximum.y, point.y);
        Raise(box.maximum.z, point.z);
    }
    return box;
}

CornerBox BoxOf(const Soup& soup, bool& isPlain)
{
    CornerBox box = BoxOfPositions(soup, isPlain);
    if (!isPlain) {
        box = CornerBox();
        for (std::size_t i = 0; i < soup.positions.count; ++i)
            box.Add(soup.positions.positions[i].point);
    }
    if (!soup.removedCorners.isEmpty) {
        box.Add(soup.removedCorners.minimum);
        box.Add(soup.removedCorners.maximum);
    }
    isPlain &= std::isfinite(EdgeExtent(box.minimum, box.maximum));
    return box;
}

// One running minimum an edge of the facet, so that no comparison waits for the one before it.
template<class Extent>
float SmallestEdge(const Soup& soup, Extent extentOf)
{
    float least[3] = {soup.firstEdgeExtent, soup.firstEdgeExtent, soup.firstEdgeExtent};
    for (std::size_t t = 0; t < soup.facetCount; ++t)
        for (int edge = 0; edge < 3; ++edge) {
            const float extent = extentOf(soup.PointAt(t, edge), soup.PointAt(t, (edge + 1) % 3));
            least[edge] = extent < least[edge] ? extent : least[edge];
        }
    return std::min({least[0], least[1], least[2]});
}

SoupMeasures Measure(const Soup& soup)
{
    SoupMeasures measures;
    bool isPlain = true;
    const CornerBox box = BoxOf(soup, isPlain);
    // Without an infinite or missing number anywhere no edge needs to be asked for one.
    measures.smallestEdge = isPlain ? SmallestEdge(soup, LargestDifference) : SmallestEdge(soup, EdgeExtent);
    if (!box.isEmpty) {
        measures.box[0] = EigenVecFunc3f::VectorToEigen(box.minimum);
        measures.box[1] = EigenVecFunc3f::VectorToEigen(box.maximum) - measures.box[0];
        measures.diagonal = float(measures.box[1].cast<double>().norm());
    }
    return measures;
}

// A half-edge that had no partner at first. Everything the passes need of it is together: in a large file the
// facets of neighbouring open edges lie far apart.
struct OpenEdge {
    HalfEdge halfEdge;
    std::int32_t startGroup; // groups of the corners at its two ends, and where these lie at first
    std::int32_t endGroup;
    std::int32_t startPosition;
    std::int32_t endPosition;

    std::int32_t Facet() const { return halfEdge / 3; }
};

class TolerantLinker {
public:
    explicit TolerantLinker(Soup& soup)
        : m_soup(soup),
          m_mates(soup.links.mates.data()),
          m_openEdges(soup.links.unlinkedCount),
          m_openHalfEdges(soup.links.unlinkedCount + 1),
          m_openBefore(3 * soup.facetCount / kStretch + 1),
          m_groupCorners(3 * soup.facetCount),
          m_groupStarts(soup.links.unlinkedCount + 1)
    {
        CollectOpenEdges();
        CollectGroups();
    }

    bool HasOpenEdges() const { return !m_remaining.empty(); }

    /// One pass over the open edges in order; edges whose ends fall into the same cells are linked.
    void LinkWithinCells(const std::array<Eigen::Vector3f, 2>& box, float tolerance)
    {
        EdgeTable table(m_remaining.size());
        FiledEdge block[kBlock];
        for (std::size_t first = 0; first < m_remaining.size(); first += kBlock) {
            const std::size_t count = std::min(kBlock, m_remaining.size() - first);
            for (std::size_t n = 0; n < count; ++n) {
                if (first + n + kBlock < m_remaining.size())
                    PrefetchEnds(m_remaining[first + n + kBlock]);
                block[n] = File(m_remaining[first + n], box, tolerance, table);
                table.Prefetch(block[n].bucket);
            }
            for (std::size_t n = 0; n < count; ++n)
                LinkOrInsert(block[n], box, tolerance, table);
        }
        DropLinked();
    }

    /// One more pass over what is left: links edges whose ends differ by less than the reach on each axis,
    /// however the cells' borders run. The nearest of the earlier edges is taken, of equally near ones the
    /// latest.
    void LinkWithinReach(float reach)
    {
        if (!(reach > 0) || !std::isfinite(reach))
            return;
        NearEdgeGrid grid(m_remaining.size(), reach);
        for (std::size_t n = 0; n < m_remaining.size(); ++n) {
            const std::int32_t i = m_remaining[n];
            const EdgeEnds ends{m_soup.PointOf(PositionOf(StartOf(i))), m_soup.PointOf(PositionOf(EndOf(i)))};
            const float extent = EdgeExtent(ends.start, ends.end);
            if (extent < reach || !std::isfinite(extent))
                continue;
            std::optional<NearEdge> nearest;
            grid.ForEachNear(ends, [&](std::size_t near, const EdgeEnds& other) {
                const std::int32_t j = m_remaining[near];
                if (!IsLinked(j) && At(i).Facet() != At(j).Facet())
                    ConsiderPartner(ends, j, other, reach, nearest);
            });
            if (nearest)
                Link(i, nearest->openEdge, nearest->isOpposite);
            else
                grid.Insert(n, ends);
        }
        DropLinked();
    }

    /// Writes the new positions into the soup.
    void ApplyMoves()
    {
        for (std::size_t group = 0; group < m_groupCount; ++group) {
            const std::int32_t position = m_groups.Locate(group).position;
            if (position != SnapGroups::kNotMoved)
                for (std::size_t n = m_groupStarts[group]; n < m_groupStarts[group + 1]; ++n)
                    MoveCorner(m_groupCorners[n], position);
        }
    }

private:
    static constexpr std::int32_t kNoGroup = -1;
    static constexpr std::size_t kBlock = 16;
    static constexpr std::size_t kAhead = 16;
    static constexpr std::size_t kStretch = 16;

    // An edge's record with the positions that it was made from.
    struct FiledEdge {
        std::int32_t openEdge = -1;
        int bucket = 0;
        bool takesPart = false;
        std::int32_t startPosition = -1;
        std::int32_t endPosition = -1;
        MeshEigenEdgeInfo record;
    };

    struct NearEdge {
        std::int32_t openEdge;
        bool isOpposite;
        float distance;
    };

    // A corner at an end of an open edge: the group that it moves with, and where it lies as long as that has
    // not moved.
    struct EdgeEnd {
        std::size_t group;
        std::int32_t firstPosition;
    };

    OpenEdge& At(std::int32_t i) { return m_openEdges[std::size_t(i)]; }
    const OpenEdge& At(std::int32_t i) const { return m_openEdges[std::size_t(i)]; }
    bool IsLinked(std::int32_t i) const { return m_mates[At(i).halfEdge].IsLinked(); }
    EdgeEnd StartOf(std::int32_t i) const { return {std::size_t(At(i).startGroup), At(i).startPosition}; }
    EdgeEnd EndOf(std::int32_t i) const { return {std::size_t(At(i).endGroup), At(i).endPosition}; }

    static std::int32_t PositionAt(const SnapGroups::Location& location, const EdgeEnd& end)
    {
        return location.position == SnapGroups::kNotMoved ? end.firstPosition : location.position;
    }
    std::int32_t PositionOf(const EdgeEnd& end) const { return PositionAt(m_groups.Locate(end.group), end); }

    void CollectOpenEdges()
    {
        std::size_t openCount = 0;
        const std::size_t count = 3 * m_soup.facetCount;
        for (std::size_t first = 0; first < count; first += kStretch) {
            m_openBefore[first / kStretch] = std::int32_t(openCount);
            // Written always, kept if open: few are, and guessing which would cost more than a store.
            for (std::size_t h = first; h < std::min(first + kStretch, count); ++h) {
                m_openHalfEdges[openCount] = HalfEdge(h);
                openCount += !m_mates[h].IsLinked();
            }
        }
        for (std::size_t i = 0; i < openCount; ++i) {
            if (i + kAhead < openCount)
                Prefetch(m_openHalfEdges[i + kAhead]);
            const HalfEdge h = m_openHalfEdges[i];
            m_openEdges[i] = {h, kNoGroup, kNoGroup, m_soup.PositionAt(h), m_soup.PositionAt(NextInFacet(h))};
        }
        m_remaining.resize(openCount);
        std::iota(m_remaining.begin(), m_remaining.end(), 0);
    }

    // Looks through a short stretch of a list that stays in the cache; a table over all half-edges would not.
    std::int32_t NumberOf(HalfEdge openHalfEdge) const
    {
        std::int32_t number = m_openBefore[std::size_t(openHalfEdge) / kStretch];
        while (m_openHalfEdges[std::size_t(number)] != openHalfEdge)
            ++number;
        return number;
    }

    void DropLinked()
    {
        const auto isLinked = [&](std::int32_t i) { return IsLinked(i); };
        m_remaining.erase(std::remove_if(m_remaining.begin(), m_remaining.end(), isLinked),
                          m_remaining.end());
    }

    void CollectGroups()
    {
        for (std::size_t i = 0; i < m_openEdges.size(); ++i) {
            if (i + kAhead < m_openEdges.size())
                __builtin_prefetch(&m_mates[m_openEdges[i + kAhead].halfEdge]);
            OpenEdge& edge = m_openEdges[i];
            if (edge.startGroup == kNoGroup)
                edge.startGroup = AddGroup({edge.halfEdge, false});
            if (edge.endGroup == kNoGroup)
                edge.endGroup = AddGroup({NextInFacet(edge.halfEdge), true});
        }
        m_groups = SnapGroups(m_groupCount);
        m_groupStarts[m_groupCount] = m_groupCornerCount;
    }

    // Walks a path from one of its ends and tells the open edge at the other: a path has two ends and an open
    // edge too, so there are as many groups as open edges. Ends because a path that begins at an open edge
    // cannot run into a ring.
    std::int32_t AddGroup(FanStep step)
    {
        const std::int32_t group = std::int32_t(m_groupCount++);
        m_groupStarts[std::size_t(group)] = m_groupCornerCount;
        m_groupCorners[m_groupCornerCount++] = step.corner;
        while (m_mates[step.EdgeToCross()].IsLinked()) {
            step = CrossEdge(step, m_mates);
            m_groupCorners[m_groupCornerCount++] = step.corner;
        }
        OpenEdge& farEdge = At(NumberOf(step.EdgeToCross()));
        (step.leavesThroughOwnEdge ? farEdge.startGroup : farEdge.endGroup) = group;
        return group;
    }

    FiledEdge File(std::int32_t i, const std::array<Eigen::Vector3f, 2>& box, float tolerance,
                   const EdgeTable& table) const
    {
        FiledEdge filed;
        filed.openEdge = i;
        filed.startPosition = PositionOf(StartOf(i));
        filed.endPosition = PositionOf(EndOf(i));
        filed.record.facet = At(i).Facet();
        filed.record.edge = At(i).halfEdge % 3;
        filed.takesPart = filed.record.update(
            EigenVecFunc3f::VectorToEigen(m_soup.PointOf(filed.startPosition)),
            EigenVecFunc3f::VectorToEigen(m_soup.PointOf(filed.endPosition)), box[0], tolerance);
        filed.bucket = filed.takesPart ? table.BucketOf(filed.record) : 0;
        return filed;
    }

    // The edges before it may have moved the ends since the record was made.
    void LinkOrInsert(FiledEdge& filed, const std::array<Eigen::Vector3f, 2>& box, float tolerance,
                      EdgeTable& table)
    {
        const std::int32_t i = filed.openEdge;
        if (filed.startPosition != PositionOf(StartOf(i)) || filed.endPosition != PositionOf(EndOf(i)))
            filed = File(i, box, tolerance, table);
        if (!filed.takesPart)
            return;
        const EdgeTable::Partner partner = table.TakePartnerOrInsert(filed.record, filed.bucket, i);
        if (partner.number >= 0)
            Link(i, partner.number, partner.isOpposite);
    }

    static void ConsiderPartner(const EdgeEnds& ends, std::int32_t j, const EdgeEnds& other, float reach,
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

    void Link(std::int32_t current, std::int32_t earlier, bool isOpposite)
    {
        const EdgeEnd meetsStart = isOpposite ? EndOf(earlier) : StartOf(earlier);
        const EdgeEnd meetsEnd = isOpposite ? StartOf(earlier) : EndOf(earlier);
        const Meeting atStart = Snap(StartOf(current), meetsStart);
        const Meeting atEnd = Snap(EndOf(current), meetsEnd);
        m_groups.Join(atStart.currentRoot, atStart.earlierRoot);
        m_groups.Join(atEnd.currentRoot, atEnd.earlierRoot);

        const HalfEdge a = At(current).halfEdge, b = At(earlier).halfEdge;
        m_mates[a] = isOpposite ? Mate::Opposite(b) : Mate::SameWay(b);
        m_mates[b] = isOpposite ? Mate::Opposite(a) : Mate::SameWay(a);
        m_soup.links.unlinkedCount -= 2;
        m_soup.links.sameWayCount += !isOpposite;
    }

    // The groups that meet at a corner.
    struct Meeting {
        std::size_t currentRoot;
        std::size_t earlierRoot;
    };

    // The earlier facet's corner, and all corners that move with it, go to where the current facet's corner
    // is.
    Meeting Snap(const EdgeEnd& current, const EdgeEnd& earlier)
    {
        const SnapGroups::Location to = m_groups.Locate(current.group), from = m_groups.Locate(earlier.group);
        const std::int32_t target = PositionAt(to, current);
        if (target != PositionAt(from, earlier))
            m_groups.Move(from.root, target);
        return {to.root, from.root};
    }

    void PrefetchEnds(std::int32_t i) const
    {
        __builtin_prefetch(&m_soup.PointOf(At(i).startPosition));
        __builtin_prefetch(&m_soup.PointOf(At(i).endPosition));
    }

    void Prefetch(HalfEdge corner) const
    {
        __builtin_prefetch(&m_soup.positionOf[std::size_t(corner / 3)]);
        __builtin_prefetch(&m_mates[corner]);
    }

    void MoveCorner(HalfEdge corner, std::int32_t position)
    {
        Position* const positions = m_soup.positions.positions.data();
        std::int32_t& current = m_soup.PositionAt(corner);
        --positions[current].cornerCount;
        ++positions[position].cornerCount;
        current = position;
        m_soup.isReordered = true;
    }

    Soup& m_soup;
    Mate* m_mates;
    Scratch<OpenEdge> m_openEdges;         // in order; numbers of open edges index this list
    Scratch<HalfEdge> m_openHalfEdges;     // the same ones, for NumberOf
    Scratch<std::int32_t> m_openBefore;    // for each stretch of half-edges, the open ones before it
    std::vector<std::int32_t> m_remaining; // the ones still open when the pass began
    Scratch<HalfEdge> m_groupCorners;      // group by group; a corner is in one group at most
    std::size_t m_groupCornerCount = 0;
    Scratch<std::size_t> m_groupStarts; // where each group's corners begin, and the end of all
    std::size_t m_groupCount = 0;
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
    linker.ApplyMoves();
}

} // namespace kr::stl
