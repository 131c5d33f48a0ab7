#include "core/common/HalfEdgePairing_p.h"

#include <algorithm>
#include <cassert>
#include <tuple>
#include <vector>

// Half-edges are sorted into ranges of their lower vertex first, narrow enough that the work on one range
// stays in the second-level cache, whatever the order of the facets in the file. Within a range each lower
// vertex has a list of its unpaired half-edges, the latest first, so that the first match in a list is the
// latest partner.
//
//   range 0: vertices 0..511     heads[lower] -> half-edge -> half-edge -> ...
//   range 1: vertices 512..1023
//
// A vertex with very many unpaired edges, a hub, would make its list slow to search; such a range is sorted
// instead.

namespace kr {

namespace {

constexpr std::size_t kVerticesInRange = 512;
constexpr std::int32_t kNone = -1;

// The list searches of an ordinary range take one or two steps a half-edge.
constexpr std::size_t kStepsAllowedPerEdge = 32;

struct Pairing {
    Mate* mates;
    std::size_t unlinkedCount = 0;
    std::size_t sameWayCount = 0;

    void Link(const EdgeRecord& a, const EdgeRecord& b)
    {
        const bool sameWay = a.RunsUp() == b.RunsUp() && a.lower != a.UpperVertex();
        mates[a.halfEdge] = sameWay ? Mate::SameWay(b.halfEdge) : Mate::Opposite(b.halfEdge);
        mates[b.halfEdge] = sameWay ? Mate::SameWay(a.halfEdge) : Mate::Opposite(a.halfEdge);
        sameWayCount += sameWay;
    }
};

// Only a facet that names a vertex twice has two half-edges between the same vertices.
bool AreOfOneFacet(const EdgeRecord& later, const EdgeRecord& earlier)
{
    return later.halfEdge - earlier.halfEdge < 3 && later.halfEdge / 3 == earlier.halfEdge / 3;
}

bool CanPair(const EdgeRecord& later, const EdgeRecord& earlier)
{
    return later.UpperVertex() == earlier.UpperVertex() && !AreOfOneFacet(later, earlier);
}

// Lists of one range, reused from range to range.
struct RangeLists {
    std::vector<std::int32_t> heads = std::vector<std::int32_t>(kVerticesInRange);
    std::vector<std::int32_t> next;
};

// Returns false, with nothing counted, when the lists grew too long to be searched.
bool PairByLists(const EdgeRecord* records, std::size_t count, std::int32_t firstVertex, RangeLists& lists,
                 Pairing& pairing)
{
    Pairing result{pairing.mates};
    std::size_t stepsLeft = kStepsAllowedPerEdge * (count + kVerticesInRange);
    std::fill(lists.heads.begin(), lists.heads.end(), kNone);
    lists.next.resize(std::max(lists.next.size(), count));
    for (std::size_t i = 0; i < count; ++i) {
        std::int32_t& head = lists.heads[std::size_t(records[i].lower - firstVertex)];
        std::int32_t* link = &head;
        while (*link != kNone && !CanPair(records[i], records[*link])) {
            link = &lists.next[std::size_t(*link)];
            if (--stepsLeft == 0)
                return false;
        }
        if (*link != kNone) {
            result.Link(records[i], records[*link]);
            *link = lists.next[std::size_t(*link)];
            --result.unlinkedCount;
        } else {
            lists.next[i] = head;
            head = std::int32_t(i);
            result.mates[records[i].halfEdge] = Mate();
            ++result.unlinkedCount;
        }
    }
    pairing.unlinkedCount += result.unlinkedCount;
    pairing.sameWayCount += result.sameWayCount;
    return true;
}

// The same result: within a group of equal edges, in file order, the unpaired ones are a stack.
void PairBySorting(EdgeRecord* records, std::size_t count, Pairing& pairing)
{
    const auto key = [](const EdgeRecord& r) {
        return std::make_tuple(r.lower, r.UpperVertex(), r.halfEdge);
    };
    std::sort(records, records + count,
              [&](const EdgeRecord& a, const EdgeRecord& b) { return key(a) < key(b); });
    std::vector<const EdgeRecord*> unpaired;
    for (const EdgeRecord* r = records; r != records + count; ++r) {
        if (!unpaired.empty() &&
            (unpaired.back()->lower != r->lower || unpaired.back()->UpperVertex() != r->UpperVertex())) {
            pairing.unlinkedCount += unpaired.size();
            unpaired.clear();
        }
        pairing.mates[r->halfEdge] = Mate();
        // At most two entries, the other half-edges of the same facet, are passed over.
        const auto partner = std::find_if(unpaired.rbegin(), unpaired.rend(), [&](const EdgeRecord* other) {
            return !AreOfOneFacet(*r, *other);
        });
        if (partner == unpaired.rend()) {
            unpaired.push_back(r);
        } else {
            pairing.Link(*r, **partner);
            unpaired.erase(std::next(partner).base());
        }
    }
    pairing.unlinkedCount += unpaired.size();
}

EdgeRecord MakeRecord(std::int32_t from, std::int32_t to, HalfEdge halfEdge)
{
    return from < to ? EdgeRecord{from, to, halfEdge} : EdgeRecord{to, ~from, halfEdge};
}

std::size_t RangeOf(std::int32_t a, std::int32_t b)
{
    return std::size_t(std::min(a, b)) / kVerticesInRange;
}

struct Ranges {
    std::vector<std::size_t> starts; // where each range's records begin, and the end of all
    bool hasLoops = false;
};

// Counting sort by range; the order within a range is the file's.
Ranges SortIntoRanges(const TriangleFace* faces, std::size_t faceCount, std::size_t vertexCount,
                      EdgeRecord* records)
{
    Ranges ranges;
    std::vector<std::size_t>& starts = ranges.starts;
    starts.assign(vertexCount / kVerticesInRange + 2, 0);
    for (std::size_t t = 0; t < faceCount; ++t) {
        const int a = faces[t][0], b = faces[t][1], c = faces[t][2];
        ++starts[RangeOf(a, b) + 1];
        ++starts[RangeOf(b, c) + 1];
        ++starts[RangeOf(c, a) + 1];
        ranges.hasLoops |= a == b || b == c || c == a;
    }
    for (std::size_t i = 1; i < starts.size(); ++i)
        starts[i] += starts[i - 1];

    std::vector<std::size_t> ends(starts.begin(), starts.end() - 1);
    for (std::size_t t = 0; t < faceCount; ++t) {
        const int a = faces[t][0], b = faces[t][1], c = faces[t][2];
        const HalfEdge first = HalfEdge(3 * t);
        records[ends[RangeOf(a, b)]++] = MakeRecord(a, b, first);
        records[ends[RangeOf(b, c)]++] = MakeRecord(b, c, first + 1);
        records[ends[RangeOf(c, a)]++] = MakeRecord(c, a, first + 2);
    }
    return ranges;
}

} // namespace

HalfEdgeLinks PairHalfEdges(const TriangleFace* faces, std::size_t faceCount, std::size_t vertexCount,
                            Scratch<EdgeRecord>& records)
{
    assert(faceCount <= kMaxFacets && records.size() >= 3 * faceCount);
    const Ranges ranges = SortIntoRanges(faces, faceCount, vertexCount, records.data());
    HalfEdgeLinks links;
    links.hasLoops = ranges.hasLoops;
    links.mates = Scratch<Mate>(3 * faceCount);
    Pairing pairing{links.mates.data()};
    RangeLists lists;
    for (std::size_t range = 0; range + 1 < ranges.starts.size(); ++range) {
        EdgeRecord* const first = records.data() + ranges.starts[range];
        const std::size_t count = ranges.starts[range + 1] - ranges.starts[range];
        if (!PairByLists(first, count, std::int32_t(range * kVerticesInRange), lists, pairing))
            PairBySorting(first, count, pairing);
    }
    links.unlinkedCount = pairing.unlinkedCount;
    links.sameWayCount = pairing.sameWayCount;
    return links;
}

HalfEdgeLinks PairHalfEdges(const TriangleFace* faces, std::size_t faceCount, std::size_t vertexCount)
{
    Scratch<EdgeRecord> records(3 * faceCount);
    return PairHalfEdges(faces, faceCount, vertexCount, records);
}

} // namespace kr
