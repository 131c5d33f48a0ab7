#include <algorithm>
#include <cmath>

#include "core/math/EigenVecFunc3f.h"
#include "fileformat/stl/OpenEdges_p.h"

// Links edges whose ends lie close together and snaps the ends to one place. Only edges without a partner
// take part, so the work follows their number.

namespace kr::stl {

namespace {

struct SoupMeasures {
    SoupBox box{Eigen::Vector3f::Zero(), Eigen::Vector3f::Zero()};
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

// Every corner lies at a position, and there are fewer of them. Sets isPlain when all are finite. Open edges
// have ends, so there is a first one.
CornerBox BoxOfPositions(const Soup& soup, bool& isPlain)
{
    const Position* const positions = soup.positions.positions.data();
    CornerBox box;
    box.isEmpty = false;
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

// One running minimum an edge of the facet, so that no comparison waits for the one before it. The points are
// asked for ahead and copied: each is fetched once then.
template<class Extent>
float SmallestEdge(const Soup& soup, Extent extentOf)
{
    constexpr std::size_t kFacetsAhead = 16;
    float least[3] = {soup.firstEdgeExtent, soup.firstEdgeExtent, soup.firstEdgeExtent};
    for (std::size_t t = 0; t < soup.facetCount; ++t) {
        if (t + kFacetsAhead < soup.facetCount)
            for (int c = 0; c < 3; ++c)
                __builtin_prefetch(&soup.PointAt(t + kFacetsAhead, c));
        const Vector3D<float> a = soup.PointAt(t, 0), b = soup.PointAt(t, 1), c = soup.PointAt(t, 2);
        Lower(least[0], extentOf(a, b));
        Lower(least[1], extentOf(b, c));
        Lower(least[2], extentOf(c, a));
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

OpenEdges FindOpenEdges(const HalfEdgeLinks& links)
{
    OpenEdges openEdges(links.unlinkedCount + 1);
    std::size_t openCount = 0;
    // Written always, kept if open: few are, and guessing which would cost more than a store.
    for (std::size_t h = 0; h < links.mates.size(); ++h) {
        openEdges[openCount] = HalfEdge(h);
        openCount += !links.mates[h].IsLinked();
    }
    openEdges.pop_back();
    return openEdges;
}

} // namespace

void LinkWithinTolerance(Soup& soup)
{
    if (soup.links.unlinkedCount == 0)
        return;
    const SoupMeasures measures = Measure(soup);
    OpenEdges openEdges = FindOpenEdges(soup.links);
    LinkWithinCells(soup, openEdges, measures.box, measures.smallestEdge);
    LinkWithinCells(soup, openEdges, measures.box, measures.smallestEdge + measures.diagonal / 10000);
    LinkWithinReach(soup, openEdges, measures.smallestEdge);
}

} // namespace kr::stl
