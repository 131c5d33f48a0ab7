#include <algorithm>
#include <utility>
#include <vector>

#include "fileformat/stl/Soup_p.h"

// A vertex is a fan: the corners that are reached from one another across linked edges. Nearly always the
// corners at one position are exactly one fan, and then the position's number is all that is needed. So the
// positions are checked first, many walks at a time so that their memory accesses overlap; only positions
// that are not one fan ("split") are numbered fan by fan.

namespace kr::stl {

namespace {

constexpr HalfEdge kNoCorner = FanStep::kNoCorner;

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

// The positions in the order in which the facets first meet them, for a soup in which that is not their own
// order.
struct FirstMet {
    Scratch<std::int32_t> nextVertexOf; // for each position 1 + its vertex, 0 as long as it has none
    std::int32_t vertexCount = 0;
};

// Finds the positions whose corners are more than one fan. Requires that no pair runs the same way.
class FanCheck {
public:
    FanCheck(const Soup& soup, Scratch<bool>& isSplit, FirstMet& firstMet)
        : m_soup(soup),
          m_mates(soup.links.mates.data()),
          m_positions(soup.positions.positions.data()),
          m_numbers(soup.facetCount == 0 ? nullptr : soup.positionOf.front().v),
          m_cornerCount(HalfEdge(3 * soup.facetCount)),
          m_isSplit(isSplit),
          m_firstMet(firstMet)
    {
        if (soup.isReordered)
            m_firstMet.nextVertexOf = Scratch<std::int32_t>(soup.positions.count);
    }

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
        while (m_scan < m_cornerCount && !IsNew(std::size_t(m_numbers[m_scan])))
            ++m_scan;
        if (m_scan == m_cornerCount) {
            walk.start = kNoCorner;
            return false;
        }
        walk = {std::size_t(m_numbers[m_scan]), m_scan, m_scan, 1};
        __builtin_prefetch(&m_mates[m_scan]);
        __builtin_prefetch(&m_positions[walk.position]);
        ++m_scan;
        return true;
    }

    // Whether no walk has begun at the position of the corner. In first-met order a new one has the next
    // number.
    bool IsNew(std::size_t position)
    {
        if (!m_soup.isReordered) {
            const bool isNew = position == m_begunCount;
            m_begunCount += isNew;
            return isNew;
        }
        std::int32_t& nextVertex = m_firstMet.nextVertexOf[position];
        if (nextVertex != 0)
            return false;
        nextVertex = ++m_firstMet.vertexCount;
        return true;
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

    const Soup& m_soup;
    const Mate* m_mates;
    const Position* m_positions;
    const std::int32_t* m_numbers; // the position of each corner
    HalfEdge m_cornerCount;
    Scratch<bool>& m_isSplit;
    FirstMet& m_firstMet;
    std::size_t m_begunCount = 0;
    HalfEdge m_scan = 0;
    bool m_hasSplits = false;
};

// A fan may meet a facet twice when two of the facet's corners lie at one position; such fans are walked step
// by step.
bool MarkRepeatedPositions(const Soup& soup, Scratch<bool>& isSplit)
{
    bool hasRepeats = false;
    for (const TriangleFace& face : soup.positionOf) {
        const int a = face[0], b = face[1], c = face[2];
        // One branch that is hardly ever taken, instead of three.
        if (!(int(a == b) | int(b == c) | int(c == a)))
            continue;
        isSplit[std::size_t(a == b || a == c ? a : b)] = true;
        hasRepeats = true;
    }
    return hasRepeats;
}

// The corners of one fan may lie at several of these, so that counting corners tells nothing.
bool MarkPartedPositions(const Soup& soup, Scratch<bool>& isSplit)
{
    for (const std::int32_t position : soup.partedPositions)
        isSplit[std::size_t(position)] = true;
    return !soup.partedPositions.empty();
}

bool FindSplitPositions(const Soup& soup, Scratch<bool>& isSplit, FirstMet& firstMet)
{
    if (soup.links.sameWayCount > 0) {
        std::fill(isSplit.begin(), isSplit.end(), true);
        return true;
    }
    const bool hasParts = MarkPartedPositions(soup, isSplit);
    const bool hasRepeats = soup.links.hasLoops && MarkRepeatedPositions(soup, isSplit);
    return FanCheck(soup, isSplit, firstMet).Run() || hasRepeats || hasParts;
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
        std::int32_t& number = m_soup.PositionAt(corner);
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

    std::int32_t Append(HalfEdge corner)
    {
        m_vertices.push_back(m_soup.PointAt(corner));
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
        m_soup.PositionAt(corner) = ~vertex;
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
            if (wasMet || m_soup.PositionAt(step.corner) < 0)
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

void TakeFirstMetOrder(Soup& soup, const FirstMet& firstMet, std::vector<TriangleFace>& faces,
                       std::vector<Vector3D<float>>& vertices)
{
    const std::int32_t* const next = firstMet.nextVertexOf.data();
    for (TriangleFace& face : soup.positionOf)
        face = TriangleFace(next[face[0]] - 1, next[face[1]] - 1, next[face[2]] - 1);
    faces = std::move(soup.positionOf);
    ReserveLarge(vertices, std::size_t(firstMet.vertexCount));
    vertices.resize(std::size_t(firstMet.vertexCount));
    for (std::size_t i = 0; i < soup.positions.count; ++i)
        if (next[i] != 0)
            vertices[std::size_t(next[i] - 1)] = soup.positions.positions[i].point;
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
    FirstMet firstMet;
    const bool hasSplits = FindSplitPositions(soup, isSplit, firstMet);
    vertices.clear();
    if (hasSplits || turnOver)
        RenumberFans(soup, turnOver, isSplit, faces, vertices);
    else if (soup.isReordered)
        TakeFirstMetOrder(soup, firstMet, faces, vertices);
    else
        TakePositionsAsVertices(soup, faces, vertices);
}

} // namespace kr::stl
