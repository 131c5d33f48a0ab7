#include "apps/krmodel/Topology.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Geometry>

#include "apps/krmodel/EdgeLists.h"
#include "apps/krmodel/Pieces.h"

namespace krmodel {

namespace {

using Point = Vector3D<float>;
using Points = std::vector<Point>;

constexpr TriangleFace kNoFacet(-1, -1, -1);

bool IsFinite(const Point& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

Points CornersOf(const Points& vertices, const TriangleFace& facet)
{
    return {vertices[size_t(facet.v[0])], vertices[size_t(facet.v[1])], vertices[size_t(facet.v[2])]};
}

bool IsInside(const TriangleFace& facet, size_t vertexCount)
{
    return std::all_of(std::begin(facet.v), std::end(facet.v),
                       [=](int vertex) { return vertex >= 0 && size_t(vertex) < vertexCount; });
}

bool HasEdges(const TriangleFace& facet)
{
    return facet.v[0] != facet.v[1] && facet.v[1] != facet.v[2] && facet.v[2] != facet.v[0];
}

/// Exact for floats: their products fit into a double.
bool HasArea(const Points& vertices, const TriangleFace& facet)
{
    const auto corner = [&](int i) {
        const Point& vertex = vertices[size_t(facet.v[i])];
        return Eigen::Vector3d(double(vertex.x), double(vertex.y), double(vertex.z));
    };
    const Eigen::Vector3d first = corner(0);
    return (corner(1) - first).cross(corner(2) - first) != Eigen::Vector3d::Zero();
}

/// Judges the facets one by one, and leaves kNoFacet in place of those that have no edges.
void LookAtFacets(Topology& found, const Points& vertices, std::vector<TriangleFace>& facets)
{
    std::vector<bool> isStray(vertices.size(), false);
    for (TriangleFace& facet : facets) {
        if (!IsInside(facet, vertices.size())) {
            facet = kNoFacet;
            continue;
        }
        for (const int vertex : facet.v)
            if (!isStray[size_t(vertex)] && !IsFinite(vertices[size_t(vertex)])) {
                isStray[size_t(vertex)] = true;
                found.strayVertices.Add(1, {vertices[size_t(vertex)]});
            }
        if (!HasEdges(facet) || !HasArea(vertices, facet))
            found.degenerateFacets.Add(1, CornersOf(vertices, facet));
        if (!HasEdges(facet))
            facet = kNoFacet;
    }
}

/// What is wrong with edges, and with which one first, in the order of the facets.
class EdgeFault {
public:
    void Note(int vertex, const HalfEdge& side)
    {
        ++m_count;
        if (side.facet >= m_facet)
            return;
        m_facet = side.facet;
        m_from = side.isForward ? vertex : side.other;
        m_to = side.isForward ? side.other : vertex;
    }

    void AddTo(Finding& finding, const Points& vertices) const
    {
        if (m_count > 0)
            finding.Add(m_count, {vertices[size_t(m_from)], vertices[size_t(m_to)]});
    }

private:
    qint64 m_count = 0;
    int m_facet = std::numeric_limits<int>::max();
    int m_from = 0;
    int m_to = 0;
};

/// The edges of one object: what is wrong with them, and what they join.
class EdgeWalk {
public:
    explicit EdgeWalk(size_t facetCount) : sets(facetCount), isBroken(facetCount, false) {}

    void Visit(int vertex, const HalfEdge* first, const HalfEdge* end)
    {
        EdgeFault* const fault = FaultOf(first, end);
        if (fault)
            fault->Note(vertex, *first);
        for (const HalfEdge* side = first; side != end; ++side) {
            sets.Join(first->facet, side->facet);
            if (fault)
                isBroken[size_t(side->facet)] = true;
        }
    }

    void AddTo(Topology& found, const Points& vertices) const
    {
        m_open.AddTo(found.openEdges, vertices);
        m_crowded.AddTo(found.crowdedEdges, vertices);
        m_twisted.AddTo(found.twistedEdges, vertices);
    }

    FacetSets sets;
    std::vector<bool> isBroken; ///< by facet

private:
    /// Null when the edge is in order.
    EdgeFault* FaultOf(const HalfEdge* first, const HalfEdge* end)
    {
        if (end - first != 2)
            return end - first < 2 ? &m_open : &m_crowded;
        return first[0].isForward == first[1].isForward ? &m_twisted : nullptr;
    }

    EdgeFault m_open;
    EdgeFault m_crowded;
    EdgeFault m_twisted;
};

void AddPieces(Topology& found, const Pieces& pieces, const Points& vertices,
               const std::vector<TriangleFace>& facets)
{
    const auto add = [&](Finding& finding, const Piece& piece) {
        finding.Add(1, {vertices[size_t(facets[size_t(piece.firstFacet)].v[0])]});
    };
    const InwardPieces inward = FindInwardPieces(pieces, vertices, facets);
    found.pieces = qint64(pieces.list.size());
    for (const Piece* const piece : inward.others)
        add(found.inwardPieces, *piece);
    for (const Piece* const piece : inward.cavities)
        add(found.cavities, *piece);
}

} // namespace

void Finding::Add(qint64 more, std::vector<Vector3D<float>> where, size_t inObject)
{
    if (count == 0) {
        first = std::move(where);
        object = inObject;
    }
    count += more;
}

Topology Examine(const Mesh& mesh)
{
    Topology found;
    if (mesh.GetFacesVecPtr()->empty())
        found.emptyObjects.Add(1, {});
    Mesh merged(0);
    merged.AddVertexAndFaces(*mesh.GetVerticesVecPtr(), *mesh.GetFacesVecPtr());
    merged.PostProcessMergeRawVertexBuffer();
    const Points& vertices = *merged.GetVerticesVecPtr();
    std::vector<TriangleFace>& facets = *merged.GetFacesVecPtr();

    LookAtFacets(found, vertices, facets);
    EdgeWalk walk(facets.size());
    EdgeLists(facets, vertices.size())
        .ForEachEdge(
            [&](int vertex, const HalfEdge* first, const HalfEdge* end) { walk.Visit(vertex, first, end); });
    walk.AddTo(found, vertices);
    AddPieces(found, CollectPieces(vertices, facets, walk.sets, walk.isBroken), vertices, facets);
    return found;
}

void Add(Topology& topology, const Topology& other, size_t object)
{
    constexpr Finding Topology::*kFindings[] = {
        &Topology::openEdges,        &Topology::crowdedEdges, &Topology::twistedEdges,
        &Topology::degenerateFacets, &Topology::inwardPieces, &Topology::cavities,
        &Topology::strayVertices,    &Topology::emptyObjects,
    };
    for (const auto finding : kFindings)
        if ((other.*finding).count > 0)
            (topology.*finding).Add((other.*finding).count, (other.*finding).first, object);
    topology.pieces += other.pieces;
}

} // namespace krmodel
