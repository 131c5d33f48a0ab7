#include "tests/stl/PlainStitcher.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <limits>

namespace {

using Point = Vector3D<float>;

struct Facet {
    Point corner[3];
    int neighbour[3] = {-1, -1, -1};
    int code[3] = {-1, -1,
                   -1}; // 0..2: the neighbour's edge, run the opposite way; 3..5: the same edge, the same way
    int vertex[3] = {-1, -1, -1};
};

bool SameBits(const Point& a, const Point& b)
{
    return std::memcmp(&a, &b, 12) == 0;
}
bool Finite(const Point& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}
bool Equal(const Point& a, const Point& b)
{
    return Finite(a) && a == b;
}
float Extent(const Point& a, const Point& b)
{
    const float x = std::fabs(b.x - a.x), y = std::fabs(b.y - a.y), z = std::fabs(b.z - a.z);
    return std::isfinite(x + y + z) ? std::max({x, y, z}) : std::numeric_limits<float>::infinity();
}

class PlainStitcher {
public:
    PlainStitcher(const std::vector<Point>& corners, const std::vector<Point>& normals)
    {
        m_result.normals = normals;
        TakeFacets(corners);
        RemoveDegenerateFacets();
        MatchExactly();
        MatchWithinTolerance();
        MakeWindingConsistent();
        UpdateNormals();
        TurnOutward();
        NumberVertices();
        for (const Facet& facet : m_facets)
            for (const int neighbour : facet.neighbour)
                m_result.linkedEdges += neighbour >= 0;
    }
    PlainStitchResult& Result() { return m_result; }

private:
    struct EdgeId {
        int facet;
        int edge;
    };

    const Point& Start(EdgeId e) const { return m_facets[size_t(e.facet)].corner[e.edge]; }
    const Point& End(EdgeId e) const { return m_facets[size_t(e.facet)].corner[(e.edge + 1) % 3]; }
    int Count() const { return int(m_facets.size()); }

    void TakeFacets(const std::vector<Point>& corners)
    {
        bool isEmpty = true;
        for (size_t i = 0; i + 2 < corners.size(); i += 3) {
            Facet facet;
            for (size_t c = 0; c < 3; ++c) {
                const Point& p = facet.corner[c] = corners[i + c];
                if (!Finite(p))
                    continue;
                if (isEmpty)
                    m_minimum = m_maximum = p;
                isEmpty = false;
                m_minimum = {std::min(m_minimum.x, p.x), std::min(m_minimum.y, p.y),
                             std::min(m_minimum.z, p.z)};
                m_maximum = {std::max(m_maximum.x, p.x), std::max(m_maximum.y, p.y),
                             std::max(m_maximum.z, p.z)};
            }
            m_facets.push_back(facet);
        }
        m_smallestEdge = Extent(corners[0], corners[1]);
    }

    void RemoveDegenerateFacets()
    {
        for (size_t t = 0; t < m_facets.size();) {
            const Point* c = m_facets[t].corner;
            if (SameBits(c[0], c[1]) || SameBits(c[1], c[2]) || SameBits(c[2], c[0])) {
                m_facets[t] = m_facets.back();
                m_facets.pop_back();
                if (!m_result.normals.empty())
                    m_result.normals.pop_back();
            } else {
                ++t;
            }
        }
    }

    void Link(EdgeId current, EdgeId earlier, bool opposite)
    {
        Facet& a = m_facets[size_t(current.facet)];
        Facet& b = m_facets[size_t(earlier.facet)];
        a.neighbour[current.edge] = earlier.facet;
        b.neighbour[earlier.edge] = current.facet;
        a.code[current.edge] = earlier.edge + (opposite ? 0 : 3);
        b.code[earlier.edge] = current.edge + (opposite ? 0 : 3);
    }

    void MatchExactly()
    {
        std::vector<EdgeId> unmatched;
        for (int t = 0; t < Count(); ++t)
            for (int e = 0; e < 3; ++e) {
                const EdgeId edge{t, e};
                m_smallestEdge = std::min(m_smallestEdge, Extent(Start(edge), End(edge)));
                bool found = false;
                for (size_t i = unmatched.size(); i-- > 0 && !found;) {
                    const EdgeId other = unmatched[i];
                    const bool opposite = Equal(Start(edge), End(other)) && Equal(End(edge), Start(other));
                    const bool sameWay = Equal(Start(edge), Start(other)) && Equal(End(edge), End(other));
                    if (other.facet == t || !(opposite || sameWay))
                        continue;
                    Link(edge, other, opposite);
                    unmatched.erase(unmatched.begin() + std::ptrdiff_t(i));
                    found = true;
                }
                if (!found)
                    unmatched.push_back(edge);
            }
    }

    bool AllLinked() const
    {
        for (const Facet& facet : m_facets)
            for (const int neighbour : facet.neighbour)
                if (neighbour < 0)
                    return false;
        return true;
    }

    void MatchWithinTolerance()
    {
        const Point extent(m_maximum.x - m_minimum.x, m_maximum.y - m_minimum.y, m_maximum.z - m_minimum.z);
        const double x = double(extent.x), y = double(extent.y), z = double(extent.z);
        const float diagonal = float(std::sqrt(x * x + y * y + z * z));
        float tolerance = m_smallestEdge;
        for (int pass = 0; pass < 2 && !AllLinked(); ++pass) {
            MatchCells(tolerance);
            m_result.tolerance = std::max(tolerance, m_result.tolerance);
            tolerance += diagonal / 10000;
        }
        if (!AllLinked())
            MatchNear(m_smallestEdge);
    }

    struct Cell {
        double at[3];
        bool operator==(const Cell& o) const
        {
            return at[0] == o.at[0] && at[1] == o.at[1] && at[2] == o.at[2];
        }
    };
    Cell CellOf(const Point& p, float tolerance) const
    {
        const double scale = 1 / double(tolerance);
        return {{std::nearbyint((double(p.x) - double(m_minimum.x)) * scale),
                 std::nearbyint((double(p.y) - double(m_minimum.y)) * scale),
                 std::nearbyint((double(p.z) - double(m_minimum.z)) * scale)}};
    }

    void MatchCells(float tolerance)
    {
        if (!(tolerance > 0) || !std::isfinite(tolerance))
            return;
        struct Filed {
            EdgeId id;
            Cell start, end;
            Point startPoint, endPoint;
        };
        std::vector<Filed> unmatched;
        for (int t = 0; t < Count(); ++t)
            for (int e = 0; e < 3; ++e) {
                const EdgeId edge{t, e};
                if (m_facets[size_t(t)].neighbour[e] >= 0 || !Finite(Start(edge)) || !Finite(End(edge)))
                    continue;
                const Cell start = CellOf(Start(edge), tolerance), end = CellOf(End(edge), tolerance);
                if (start == end)
                    continue;
                bool found = false;
                for (size_t i = unmatched.size(); i-- > 0 && !found;) {
                    const Filed other = unmatched[i];
                    const bool opposite = start == other.end && end == other.start;
                    const bool sameWay = start == other.start && end == other.end;
                    if (other.id.facet == t || !(opposite || sameWay))
                        continue;
                    NoteWay(Start(edge), opposite ? other.endPoint : other.startPoint);
                    NoteWay(End(edge), opposite ? other.startPoint : other.endPoint);
                    LinkAndSnap(edge, other.id, opposite);
                    ++m_result.tolerantLinks;
                    unmatched.erase(unmatched.begin() + std::ptrdiff_t(i));
                    found = true;
                }
                if (!found)
                    unmatched.push_back({edge, start, end, Start(edge), End(edge)});
            }
    }

    void NoteWay(const Point& to, const Point& from)
    {
        m_result.movedAtMost = std::max(m_result.movedAtMost, Extent(from, to));
    }

    void MatchNear(float reach)
    {
        if (!(reach > 0) || !std::isfinite(reach))
            return;
        struct Filed {
            EdgeId id;
            Point start, end;
        };
        std::vector<Filed> unmatched;
        for (int t = 0; t < Count(); ++t)
            for (int e = 0; e < 3; ++e) {
                const EdgeId edge{t, e};
                const Point start = Start(edge), end = End(edge);
                const float length = Extent(start, end);
                if (m_facets[size_t(t)].neighbour[e] >= 0 || !std::isfinite(length) || length < reach)
                    continue;
                int best = -1;
                float bestDistance = reach;
                bool bestOpposite = false;
                for (size_t i = 0; i < unmatched.size(); ++i) {
                    const Filed& other = unmatched[i];
                    const float opposite = std::max(Extent(start, other.end), Extent(end, other.start));
                    const float sameWay = std::max(Extent(start, other.start), Extent(end, other.end));
                    const float distance = std::min(opposite, sameWay);
                    if (other.id.facet == t || !(distance < reach) || (best >= 0 && distance > bestDistance))
                        continue;
                    best = int(i);
                    bestDistance = distance;
                    bestOpposite = opposite <= sameWay;
                }
                if (best < 0) {
                    unmatched.push_back({edge, start, end});
                    ++m_result.waitingEdges;
                    continue;
                }
                m_result.movedAtMost = std::max(m_result.movedAtMost, bestDistance);
                LinkAndSnap(edge, unmatched[size_t(best)].id, bestOpposite);
                ++m_result.reachLinks;
                unmatched.erase(unmatched.begin() + best);
            }
    }

    void LinkAndSnap(EdgeId current, EdgeId earlier, bool opposite)
    {
        const int startTo = opposite ? (earlier.edge + 1) % 3 : earlier.edge;
        const int endTo = opposite ? earlier.edge : (earlier.edge + 1) % 3;
        Snap(current.facet, current.edge, earlier.facet, startTo, earlier.edge);
        Snap(current.facet, (current.edge + 1) % 3, earlier.facet, endTo, earlier.edge);
        Link(current, earlier, opposite);
    }

    // The walk leaves the earlier facet through its other edge at the corner.
    void Snap(int currentFacet, int currentCorner, int facet, int corner, int linkedEdge)
    {
        const Point target = m_facets[size_t(currentFacet)].corner[currentCorner];
        Point& own = m_facets[size_t(facet)].corner[corner];
        if (SameBits(own, target))
            return;
        const int firstFacet = facet, firstCorner = corner;
        int cameThrough = linkedEdge;
        for (;;) {
            m_facets[size_t(facet)].corner[corner] = target;
            if (!Cross(facet, corner, cameThrough) || (facet == firstFacet && corner == firstCorner))
                return;
        }
    }

    // Across the facet's other edge at the corner, to the matching corner of the neighbour.
    bool Cross(int& facet, int& corner, int& cameThrough) const
    {
        const int ownEdge = corner, previousEdge = (corner + 2) % 3;
        const int leave = cameThrough == ownEdge ? previousEdge : ownEdge;
        const Facet& from = m_facets[size_t(facet)];
        if (from.neighbour[leave] < 0)
            return false;
        const int code = from.code[leave], edge = code % 3;
        const bool isAtStart = leave == ownEdge; // of the edge that is crossed
        const bool matchesStart = isAtStart == (code >= 3);
        facet = from.neighbour[leave];
        corner = matchesStart ? edge : (edge + 1) % 3;
        cameThrough = edge;
        return true;
    }

    void Flip(int t)
    {
        Facet& facet = m_facets[size_t(t)];
        const Facet before = facet;
        const int newEdge[3] = {0, 2, 1};
        std::swap(facet.corner[0], facet.corner[1]);
        for (int e = 0; e < 3; ++e) {
            const int to = newEdge[e];
            facet.neighbour[to] = before.neighbour[e];
            facet.code[to] = before.code[e] < 0 ? -1 : (before.code[e] + 3) % 6;
            if (before.neighbour[e] < 0)
                continue;
            Facet& other = m_facets[size_t(before.neighbour[e])];
            int& back = other.code[before.code[e] % 3];
            back = back >= 3 ? to : to + 3;
        }
    }

    void MakeWindingConsistent()
    {
        std::vector<bool> visited(m_facets.size(), false);
        for (int start = 0; start < Count(); ++start) {
            if (visited[size_t(start)])
                continue;
            visited[size_t(start)] = true;
            std::deque<int> queue{start};
            while (!queue.empty()) {
                const int t = queue.front();
                queue.pop_front();
                for (int e = 0; e < 3; ++e) {
                    const int n = m_facets[size_t(t)].neighbour[e];
                    if (n < 0 || visited[size_t(n)])
                        continue;
                    if (m_facets[size_t(t)].code[e] >= 3)
                        Flip(n);
                    visited[size_t(n)] = true;
                    queue.push_back(n);
                }
            }
        }
    }

    static bool Close(const Point& a, const Point& b)
    {
        return std::fabs(a.x - b.x) <= 0.001f && std::fabs(a.y - b.y) <= 0.001f &&
               std::fabs(a.z - b.z) <= 0.001f;
    }
    static Point Normalised(const Point& p)
    {
        const double x = double(p.x), y = double(p.y), z = double(p.z),
                     length = std::sqrt(x * x + y * y + z * z);
        if (!(length > 0) || !std::isfinite(length))
            return {};
        return {float(x / length), float(y / length), float(z / length)};
    }

    void UpdateNormals()
    {
        for (size_t t = 0; t < m_facets.size(); ++t) {
            Point geometric;
            const Point* c = m_facets[t].corner;
            Point::CalcNormal(c[0], c[1], c[2], geometric);
            Point& stored = m_result.normals.at(t);
            if (Close(stored, geometric))
                continue;
            const Point normalised = Normalised(stored);
            stored = Close(normalised, geometric) ? normalised : geometric;
        }
    }

    void TurnOutward()
    {
        double volume = 0;
        const Point* origin = nullptr;
        for (const Facet& f : m_facets) {
            const Vector3D<double> area = CalcAreaVector(f.corner[0], f.corner[1], f.corner[2]);
            if (!std::isfinite(area.x + area.y + area.z))
                continue;
            if (!origin)
                origin = &f.corner[0];
            volume += (double(f.corner[0].x) - double(origin->x)) * area.x +
                      (double(f.corner[0].y) - double(origin->y)) * area.y +
                      (double(f.corner[0].z) - double(origin->z)) * area.z;
        }
        if (!(volume < 0))
            return;
        m_result.wasTurnedOver = true;
        for (int t = 0; t < Count(); ++t)
            Flip(t);
        for (size_t t = 0; t < m_facets.size(); ++t) {
            const Point* c = m_facets[t].corner;
            Point::CalcNormal(c[0], c[1], c[2], m_result.normals.at(t));
        }
    }

    void NumberVertices()
    {
        std::vector<int> stamp(m_facets.size(), -1);
        for (int t = 0; t < Count(); ++t)
            for (int c = 0; c < 3; ++c) {
                if (m_facets[size_t(t)].vertex[c] >= 0)
                    continue;
                const int vertex = int(m_result.vertices.size());
                m_result.vertices.push_back(m_facets[size_t(t)].corner[c]);
                m_facets[size_t(t)].vertex[c] = vertex;
                stamp[size_t(t)] = vertex;
                if (WalkFan(t, c, c, vertex, stamp))
                    WalkFan(t, c, (c + 2) % 3, vertex, stamp);
            }
        for (const Facet& f : m_facets)
            m_result.faces.emplace_back(f.vertex[0], f.vertex[1], f.vertex[2]);
    }

    // Returns whether the walk ended at a border.
    bool WalkFan(int facet, int corner, int cameThrough, int vertex, std::vector<int>& stamp)
    {
        while (Cross(facet, corner, cameThrough)) {
            int& number = m_facets[size_t(facet)].vertex[corner];
            if (stamp[size_t(facet)] == vertex || number >= 0)
                return false;
            number = vertex;
            stamp[size_t(facet)] = vertex;
        }
        return true;
    }

    std::vector<Facet> m_facets;
    Point m_minimum, m_maximum;
    float m_smallestEdge = 0;
    PlainStitchResult m_result;
};

} // namespace

PlainStitchResult StitchPlainly(const std::vector<Vector3D<float>>& corners,
                                const std::vector<Vector3D<float>>& normals)
{
    if (corners.size() < 3)
        return {};
    return PlainStitcher(corners, normals).Result();
}
