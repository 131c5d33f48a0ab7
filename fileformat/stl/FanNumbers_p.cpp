#include <algorithm>
#include <vector>

#include "fileformat/stl/Soup_p.h"

// A vertex is a fan: the corners that are reached from one another across linked edges. Nearly always the
// corners at one position are exactly one fan, and then the position's number is all that is needed. So the
// positions are checked first, many walks at a time so that their memory accesses overlap; only positions
// that are not one fan ("split") are numbered fan by fan.

namespace kr::stl {

namespace {

constexpr HalfEdge kNoCorner = FanStep::kNoCorner;

// A corner of each position. Where positions still stand in first-met order, the walks find them by
// themselves.
std::vector<HalfEdge> FirstCorners(const Soup& soup)
{
    if (!soup.isReordered)
        return {};
    std::vector<HalfEdge> first(soup.positions.count, kNoCorner);
    for (std::size_t t = soup.facetCount; t-- > 0;)
        for (int c = 3; c-- > 0;)
            first[std::size_t(soup.positionOf[t][c])] = HalfEdge(3 * t) + c;
    return first;
}

// Corners of an open fan from `start` to the border on its far side, `start` not counted. Every link is
// opposite here, so each corner has one successor and is the successor of one: the walk cannot run into a
// ring and ends at the border.
std::int32_t CountTowardsBorder(const Mate* mates, HalfEdge start)
{
    std::int32_t count = 0;
    for (Mate mate = mates[start]; mate.IsLinked(); ++count)
        mate = mates[NextInFacet(mate.Partner())];
    return count;
}

// One walk around the fan of a position's first corner. All links are opposite: the corner across the
// previous edge is the one from which the partner starts.
struct FanWalk {
    std::size_t position = 0;
    HalfEdge start = kNoCorner; // kNoCorner: nothing left to walk
    HalfEdge at = kNoCorner;
    std::int32_t met = 0;
};

// Finds the positions whose corners are more than one fan. Requires that no pair runs the same way.
class FanCheck {
public:
    FanCheck(const Soup& soup, Scratch<bool>& isSplit)
        : m_mates(soup.links.mates.data()),
          m_positions(soup.positions.positions.data()),
          m_positionCount(soup.positions.count),
          m_numbers(soup.facetCount == 0 ? nullptr : soup.positionOf.front().v),
          m_firstCorners(FirstCorners(soup)),
          m_isSplit(isSplit)
    {}

    /// Returns whether any position is split. Ends because each walk ends (a ring returns to its start, a
    /// path reaches the border) and each position is walked once.
    bool Run()
    {
        FanWalk walks[kWalksAtOnce];
        std::size_t liveCount = 0;
        for (FanWalk& walk : walks)
            liveCount += Begin(walk);
        while (liveCount > 0)
            for (FanWalk& walk : walks)
                if (walk.start != kNoCorner && !Advance(walk))
                    liveCount -= !Begin(walk);
        return m_hasSplits;
    }

private:
    static constexpr std::size_t kWalksAtOnce = 24;

    bool Begin(FanWalk& walk)
    {
        // A position that lost its corners to another has no first corner.
        HalfEdge first = kNoCorner;
        while (m_next < m_positionCount && (first = FirstCornerOf(m_next)) == kNoCorner)
            ++m_next;
        walk = {m_next++, first, first, 1};
        if (first == kNoCorner)
            return false;
        __builtin_prefetch(&m_mates[first]);
        return true;
    }

    // Asked for each position in turn: in first-met order the next one's first corner lies ahead.
    HalfEdge FirstCornerOf(std::size_t position)
    {
        if (!m_firstCorners.empty())
            return m_firstCorners[position];
        while (std::size_t(m_numbers[m_scan]) != position)
            ++m_scan;
        return m_scan;
    }

    // Returns false when the walk has ended and its position is judged.
    bool Advance(FanWalk& walk)
    {
        const Mate mate = m_mates[PreviousInFacet(walk.at)];
        if (!mate.IsLinked())
            return Judge(walk, walk.met + CountTowardsBorder(m_mates, walk.start));
        if (mate.Partner() == walk.start)
            return Judge(walk, walk.met);
        walk.at = mate.Partner();
        ++walk.met;
        __builtin_prefetch(&m_mates[walk.at]);
        return true;
    }

    bool Judge(const FanWalk& walk, std::int32_t met)
    {
        if (met != m_positions[walk.position].cornerCount) {
            m_isSplit[walk.position] = true;
            m_hasSplits = true;
        }
        return false;
    }

    const Mate* m_mates;
    const Position* m_positions;
    std::size_t m_positionCount;
    const std::int32_t* m_numbers; // the position of each corner
    std::vector<HalfEdge> m_firstCorners;
    Scratch<bool>& m_isSplit;
    std::size_t m_next = 0;
    HalfEdge m_scan = 0;
    bool m_hasSplits = false;
};

// A fan may meet a facet twice when two of the facet's corners lie at one position; such fans are walked step
// by step.
bool MarkRepeatedPositions(const Soup& soup, Scratch<bool>& isSplit)
{
    bool hasRepeats = false;
    for (const TriangleFace& face : soup.positionOf)
        for (int c = 0; c < 3; ++c)
            if (face[c] == face[(c + 1) % 3]) {
                isSplit[std::size_t(face[c])] = true;
                hasRepeats = true;
            }
    return hasRepeats;
}

bool FindSplitPositions(const Soup& soup, Scratch<bool>& isSplit)
{
    if (soup.links.sameWayCount > 0) {
        std::fill(isSplit.begin(), isSplit.end(), true);
        return true;
    }
    const bool hasRepeats = (soup.links.hasLoops || soup.isReordered) && MarkRepeatedPositions(soup, isSplit);
    return FanCheck(soup, isSplit).Run() || hasRepeats;
}

// Numbers vertices as the facets first meet them. Corners that have their vertex hold ~vertex, which is
// negative; corners that wait hold their position.
class VertexNumbering {
public:
    VertexNumbering(Soup& soup, bool turnOver, const Scratch<bool>& isSplit,
                    std::vector<Vector3D<float>>& vertices)
        : m_soup(soup),
          m_turnOver(turnOver),
          m_isSplit(isSplit),
          m_vertices(vertices),
          m_vertexOf(soup.positions.count, kUnnumbered),
          m_lastVertexAt(soup.facetCount)
    {}

    void NumberCorner(HalfEdge corner)
    {
        std::int32_t& number = NumberAt(corner);
        if (number < 0)
            return;
        if (m_isSplit[std::size_t(number)]) {
            NumberFan(corner);
            return;
        }
        std::int32_t& vertex = m_vertexOf[std::size_t(number)];
        if (vertex == kUnnumbered)
            vertex = Append(corner);
        number = ~vertex;
    }

private:
    static constexpr std::int32_t kUnnumbered = -1;

    std::int32_t& NumberAt(HalfEdge corner) { return m_soup.positionOf[std::size_t(corner / 3)][corner % 3]; }

    std::int32_t Append(HalfEdge corner)
    {
        m_vertices.push_back(m_soup.corners[std::size_t(corner)]);
        return std::int32_t(m_vertices.size() - 1);
    }

    void NumberFan(HalfEdge corner)
    {
        const std::int32_t vertex = Append(corner);
        Give(corner, vertex);
        // Which side comes first shows where a fan meets a facet twice; turning over swaps the sides.
        if (WalkFan({corner, m_turnOver}, vertex))
            WalkFan({corner, !m_turnOver}, vertex);
    }

    void Give(HalfEdge corner, std::int32_t vertex)
    {
        NumberAt(corner) = ~vertex;
        m_lastVertexAt[std::size_t(corner / 3)] = vertex + 1;
    }

    // Gives the vertex to the corners beyond `from`; returns whether the walk ended at a border. Each step
    // gives a vertex to a corner that had none, so all walks together take no more steps than there are
    // corners.
    bool WalkFan(FanStep from, std::int32_t vertex)
    {
        for (FanStep step = from;;) {
            step = CrossEdge(step, m_soup.links.mates.data());
            if (!step.IsValid())
                return true;
            const bool wasMet = m_lastVertexAt[std::size_t(step.corner / 3)] == vertex + 1;
            if (wasMet || NumberAt(step.corner) < 0)
                return false;
            Give(step.corner, vertex);
        }
    }

    Soup& m_soup;
    bool m_turnOver;
    const Scratch<bool>& m_isSplit;
    std::vector<Vector3D<float>>& m_vertices;
    std::vector<std::int32_t> m_vertexOf;
    Scratch<std::int32_t> m_lastVertexAt; // for each facet 1 + the vertex it was last given; 0 is none
};

void RenumberFans(Soup& soup, bool turnOver, const Scratch<bool>& isSplit, std::vector<TriangleFace>& faces,
                  std::vector<Vector3D<float>>& vertices)
{
    RequireCorners(soup);
    ReserveLarge(vertices, std::max(soup.positions.count, soup.facetCount / 2));
    VertexNumbering numbering(soup, turnOver, isSplit, vertices);
    const HalfEdge order[3] = {turnOver ? 1 : 0, turnOver ? 0 : 1, 2};
    for (std::size_t t = 0; t < soup.facetCount; ++t)
        for (const HalfEdge corner : order)
            numbering.NumberCorner(HalfEdge(3 * t) + corner);
    for (TriangleFace& face : soup.positionOf)
        face = TriangleFace(~face[order[0]], ~face[order[1]], ~face[2]);
    faces = std::move(soup.positionOf);
}

void TakePositionsAsVertices(Soup& soup, std::vector<TriangleFace>& faces,
                             std::vector<Vector3D<float>>& vertices)
{
    ReserveLarge(vertices, soup.positions.count);
    for (std::size_t i = 0; i < soup.positions.count; ++i)
        vertices.push_back(soup.positions.positions[i].point);
    faces = std::move(soup.positionOf);
}

} // namespace

void NumberFans(Soup& soup, bool turnOver, std::vector<TriangleFace>& faces,
                std::vector<Vector3D<float>>& vertices)
{
    Scratch<bool> isSplit(soup.positions.count);
    const bool hasSplits = FindSplitPositions(soup, isSplit);
    vertices.clear();
    if (hasSplits || soup.isReordered || turnOver)
        RenumberFans(soup, turnOver, isSplit, faces, vertices);
    else
        TakePositionsAsVertices(soup, faces, vertices);
}

} // namespace kr::stl
