#include <utility>
#include <vector>

#include "core/common/SignedVolume_p.h"
#include "fileformat/stl/Soup_p.h"

namespace kr::stl {

namespace {

// Swaps corners 0 and 1. Each edge then runs the other way, and the edges change places:
//   edge 0: 0 -> 1 stays edge 0, edge 1: 1 -> 2 becomes edge 2, edge 2: 2 -> 0 becomes edge 1
void TurnFacetOver(Soup& soup, std::size_t facet)
{
    constexpr HalfEdge kNewEdge[3] = {0, 2, 1};
    Mate* const mates = soup.links.mates.data();
    const HalfEdge first = HalfEdge(3 * facet);
    Mate turned[3];
    for (int edge = 0; edge < 3; ++edge) {
        const Mate mate = mates[first + edge].Turned();
        const HalfEdge newPlace = first + kNewEdge[edge];
        turned[kNewEdge[edge]] = mate;
        if (mate.IsLinked())
            mates[mate.Partner()] = mate.RunsSameWay() ? Mate::SameWay(newPlace) : Mate::Opposite(newPlace);
    }
    for (int edge = 0; edge < 3; ++edge)
        mates[first + edge] = turned[edge];
    std::swap(soup.positionOf[facet][0], soup.positionOf[facet][1]);
}

std::size_t CountSameWayPairs(const Scratch<Mate>& mates)
{
    std::size_t halves = 0;
    for (const Mate mate : mates)
        halves += mate.RunsSameWay();
    return halves / 2;
}

} // namespace

// Breadth-first from the first facet of each piece, which keeps its winding. Each facet enters the queue
// once, when it is first seen, so the walk ends after as many steps as there are facets. On a one-sided
// surface some pairs stay.
void MakeWindingConsistent(Soup& soup)
{
    if (soup.links.sameWayCount == 0)
        return;
    const Mate* const mates = soup.links.mates.data();
    Scratch<bool> isSeen(soup.facetCount);
    std::vector<std::size_t> queue;
    for (std::size_t start = 0; start < soup.facetCount; ++start) {
        if (isSeen[start])
            continue;
        isSeen[start] = true;
        queue.assign(1, start);
        for (std::size_t i = 0; i < queue.size(); ++i) {
            const std::size_t facet = queue[i];
            for (std::size_t edge = 0; edge < 3; ++edge) {
                const Mate mate = mates[3 * facet + edge];
                if (!mate.IsLinked() || isSeen[std::size_t(mate.Partner()) / 3])
                    continue;
                const std::size_t neighbour = std::size_t(mate.Partner()) / 3;
                isSeen[neighbour] = true;
                queue.push_back(neighbour);
                if (mate.RunsSameWay())
                    TurnFacetOver(soup, neighbour);
            }
        }
    }
    soup.isReordered = true;
    soup.links.sameWayCount = CountSameWayPairs(soup.links.mates);
}

// In a shuffled file each position is a wait for memory, unless it is asked for in time.
double VolumeOf(const Soup& soup)
{
    constexpr std::size_t kFacetsAhead = 16;
    SignedVolume volume;
    for (std::size_t t = 0; t < soup.facetCount; ++t) {
        if (t + kFacetsAhead < soup.facetCount)
            for (int c = 0; c < 3; ++c)
                __builtin_prefetch(&soup.PointAt(t + kFacetsAhead, c));
        volume.Add(soup.PointAt(t, 0), soup.PointAt(t, 1), soup.PointAt(t, 2));
    }
    return volume.Value();
}

} // namespace kr::stl
