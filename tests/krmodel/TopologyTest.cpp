#include "apps/krmodel/Topology.h"

#include <limits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using krmodel::Examine;
using krmodel::Finding;
using krmodel::Topology;

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

using Point = Vector3D<float>;

/// Builds a mesh, a body at a time.
class Bodies {
public:
    /// A tetrahedron in the corner of axes with its origin at @p at. @param turned  faces inwards
    Bodies& Tetrahedron(const Point& at, float side = 1, bool turned = false)
    {
        const auto base = int(m_mesh.GetVerticesVecPtr()->size());
        Vertices({at, {at.x + side, at.y, at.z}, {at.x, at.y + side, at.z}, {at.x, at.y, at.z + side}});
        for (const TriangleFace& face :
             {TriangleFace(0, 2, 1), TriangleFace(0, 1, 3), TriangleFace(1, 2, 3), TriangleFace(2, 0, 3)})
            Facet(base + face.v[0], base + face.v[turned ? 2 : 1], base + face.v[turned ? 1 : 2]);
        return *this;
    }
    Bodies& Vertices(const std::vector<Point>& points)
    {
        m_mesh.AddVertexAndFaces(points, {});
        return *this;
    }
    Bodies& Facet(int a, int b, int c)
    {
        m_mesh.AddVertexAndFaces({}, {TriangleFace(a, b, c)});
        return *this;
    }
    /// A prism from z = 0 on. All of the outline, counter-clockwise, can be seen from its first point.
    Bodies& Extruded(const std::vector<std::pair<float, float>>& outline, float height)
    {
        const auto base = int(m_mesh.GetVerticesVecPtr()->size()), count = int(outline.size());
        for (const auto& [x, y] : outline)
            Vertices({{x, y, 0}, {x, y, height}});
        const auto bottom = [=](int i) { return base + 2 * (i % count); };
        const auto top = [=](int i) { return bottom(i) + 1; };
        for (int i = 1; i + 1 < count; ++i)
            Facet(bottom(0), bottom(i + 1), bottom(i)).Facet(top(0), top(i), top(i + 1));
        for (int i = 0; i < count; ++i)
            Facet(bottom(i), bottom(i + 1), top(i + 1)).Facet(bottom(i), top(i + 1), top(i));
        return *this;
    }
    Bodies& WithoutFacet(int index)
    {
        m_mesh.GetFacesVecPtr()->erase(m_mesh.GetFacesVecPtr()->begin() + index);
        return *this;
    }
    Bodies& WithTurnedFacet(int index)
    {
        TriangleFace& face = (*m_mesh.GetFacesVecPtr())[size_t(index)];
        std::swap(face.v[0], face.v[1]);
        return *this;
    }
    Topology Examined() const { return Examine(m_mesh); }

private:
    Mesh m_mesh{0};
};

void ExpectPoint(const Point& point, float x, float y, float z)
{
    EXPECT_EQ(point.x, x);
    EXPECT_EQ(point.y, y);
    EXPECT_EQ(point.z, z);
}

/// What is wrong with edges, together.
qint64 EdgeFaults(const Topology& found)
{
    return found.openEdges.count + found.crowdedEdges.count + found.twistedEdges.count;
}

TEST(Topology, FindsNothingWrongWithATetrahedron)
{
    const Topology found = Bodies().Tetrahedron({1, 2, 3}).Examined();
    EXPECT_EQ(EdgeFaults(found), 0);
    EXPECT_EQ(found.degenerateFacets.count, 0);
    EXPECT_EQ(found.pieces, 1);
    EXPECT_EQ(found.inwardPieces.count, 0);
    EXPECT_EQ(found.cavities.count, 0);
    EXPECT_EQ(found.strayVertices.count, 0);
    EXPECT_EQ(found.emptyObjects.count, 0);
}

TEST(Topology, CountsTheEdgesAroundAHoleAndTellsTheFirstAsItsFacetGoes)
{
    const Topology found = Bodies().Tetrahedron({0, 0, 0}).WithoutFacet(2).Examined();
    EXPECT_EQ(found.openEdges.count, 3);
    EXPECT_EQ(EdgeFaults(found), 3);
    ASSERT_EQ(found.openEdges.first.size(), 2U);
    // The facets left are 0 2 1, 0 1 3 and 2 0 3; the hole was 1 2 3.
    ExpectPoint(found.openEdges.first[0], 0, 1, 0);
    ExpectPoint(found.openEdges.first[1], 1, 0, 0);
}

TEST(Topology, CountsEachEdgeOfALoneFacetAsOpen)
{
    const Topology found = Bodies().Vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}).Facet(0, 1, 2).Examined();
    EXPECT_EQ(found.openEdges.count, 3);
    EXPECT_EQ(found.pieces, 1);
}

TEST(Topology, JoinsCornersInTheSamePlaceWhateverTheirNumbers)
{
    Bodies bodies;
    bodies.Vertices({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {0, 0, 1}, {1, 0, 0}})
        .Vertices({{1, 0, 0}, {0, 0, 1}, {0, 1, 0}, {-0.0F, 0, 0}, {0, 1, 0}, {0, 0, 1}})
        .Facet(0, 2, 1)
        .Facet(3, 5, 4)
        .Facet(6, 8, 7)
        .Facet(9, 11, 10);
    const Topology found = bodies.Examined();
    EXPECT_EQ(EdgeFaults(found), 0);
    EXPECT_EQ(found.pieces, 1);
}

TEST(Topology, CountsAnEdgeOfFourFacetsOnce)
{
    // Two tetrahedra with the edge from 0 0 0 to 0 0 1 in common.
    Bodies bodies;
    bodies.Tetrahedron({0, 0, 0})
        .Vertices({{-1, 0, 0}, {0, -1, 0}})
        .Facet(0, 5, 4)
        .Facet(0, 4, 3)
        .Facet(4, 5, 3)
        .Facet(5, 0, 3);
    const Topology found = bodies.Examined();
    EXPECT_EQ(found.crowdedEdges.count, 1);
    EXPECT_EQ(EdgeFaults(found), 1);
    EXPECT_EQ(found.pieces, 1);
    ASSERT_EQ(found.crowdedEdges.first.size(), 2U);
    ExpectPoint(found.crowdedEdges.first[0], 0, 0, 1);
    ExpectPoint(found.crowdedEdges.first[1], 0, 0, 0);
}

TEST(Topology, CountsTheEdgesOfAFacetWoundTheOtherWay)
{
    const Topology found = Bodies().Tetrahedron({0, 0, 0}).WithTurnedFacet(1).Examined();
    EXPECT_EQ(found.twistedEdges.count, 3);
    EXPECT_EQ(EdgeFaults(found), 3);
    EXPECT_EQ(found.inwardPieces.count, 0);
}

TEST(Topology, FindsABodyTurnedInsideOut)
{
    const Topology found = Bodies().Tetrahedron({0, 0, 0}).Tetrahedron({5, 6, 7}, 1, true).Examined();
    EXPECT_EQ(found.pieces, 2);
    EXPECT_EQ(found.inwardPieces.count, 1);
    EXPECT_EQ(found.cavities.count, 0);
    ASSERT_EQ(found.inwardPieces.first.size(), 1U);
    ExpectPoint(found.inwardPieces.first[0], 5, 6, 7);
}

TEST(Topology, FindsABodyTurnedInsideOutFarAway)
{
    const Topology found = Bodies().Tetrahedron({1e6F, 1e6F, 1e6F}, 1, true).Examined();
    EXPECT_EQ(found.inwardPieces.count, 1);
}

TEST(Topology, TakesAnInwardBodyWithinAnotherForACavity)
{
    const Topology found = Bodies().Tetrahedron({1, 1, 1}, 1, true).Tetrahedron({0, 0, 0}, 10).Examined();
    EXPECT_EQ(found.inwardPieces.count, 0);
    EXPECT_EQ(found.cavities.count, 1);
    ASSERT_EQ(found.cavities.first.size(), 1U);
    ExpectPoint(found.cavities.first[0], 1, 1, 1);
}

TEST(Topology, TakesAnInwardBodyInTheBoxOfAnotherWithAHoleForACavity)
{
    // The hole is the bottom; what lies within cannot be told any more, and is one fault, not two.
    const Topology found =
        Bodies().Tetrahedron({1, 1, 1}, 1, true).Tetrahedron({0, 0, 0}, 10).WithoutFacet(4).Examined();
    EXPECT_EQ(found.openEdges.count, 3);
    EXPECT_EQ(found.inwardPieces.count, 0);
    EXPECT_EQ(found.cavities.count, 1);
}

TEST(Topology, TakesNoBodyForACavityThatOnlyLiesInTheBoxOfAnother)
{
    // Behind the slanting side.
    const Topology found = Bodies().Tetrahedron({6, 6, 6}, 1, true).Tetrahedron({0, 0, 0}, 10).Examined();
    EXPECT_EQ(found.inwardPieces.count, 1);
    EXPECT_EQ(found.cavities.count, 0);
}

TEST(Topology, TakesNoBodyForACavityThatLiesInTheNotchOfAnother)
{
    // An L of 2 x 2 x 1, its notch where x and y are above 1.
    const Bodies bodies = Bodies().Extruded({{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}}, 1);
    EXPECT_EQ(EdgeFaults(bodies.Examined()), 0);
    const Topology notch = Bodies(bodies).Tetrahedron({1.5F, 1.5F, 0.5F}, 0.1F, true).Examined();
    EXPECT_EQ(notch.inwardPieces.count, 1);
    EXPECT_EQ(notch.cavities.count, 0);
    for (const Point& corner : {Point{1.5F, 0.5F, 0.5F}, Point{0.5F, 1.5F, 0.5F}, Point{0.5F, 0.5F, 0.5F}}) {
        const Topology arm = Bodies(bodies).Tetrahedron(corner, 0.1F, true).Examined();
        EXPECT_EQ(arm.inwardPieces.count, 0);
        EXPECT_EQ(arm.cavities.count, 1);
    }
}

TEST(Topology, FindsACavityStraightUnderAnEdgeOrACornerOfItsHull)
{
    // An octahedron: its upper corner is above the first place, its upper edges above the next.
    const Bodies hull = Bodies()
                            .Vertices({{5, 0, 0}, {0, 5, 0}, {-5, 0, 0}, {0, -5, 0}, {0, 0, 5}, {0, 0, -5}})
                            .Facet(0, 1, 4)
                            .Facet(1, 2, 4)
                            .Facet(2, 3, 4)
                            .Facet(3, 0, 4)
                            .Facet(1, 0, 5)
                            .Facet(2, 1, 5)
                            .Facet(3, 2, 5)
                            .Facet(0, 3, 5);
    for (const Point& place : {Point{0, 0, 1}, {1, 0, 1}, {-1, 0, 1}, {0, 1, 1}, {0, -1, 1}, {1, 1, 1}}) {
        const Topology found = Bodies(hull).Tetrahedron(place, 0.25F, true).Examined();
        EXPECT_EQ(EdgeFaults(found), 0);
        EXPECT_EQ(found.cavities.count, 1) << place.x << ' ' << place.y;
    }
    for (const Point& place : {Point{4, 0, 3}, {0, 4, 3}, {4, 0, -3}, {0, 4, -3}, {4, 4, 0}, {4, -4, 1}}) {
        const Topology found = Bodies(hull).Tetrahedron(place, 0.25F, true).Examined();
        EXPECT_EQ(found.inwardPieces.count, 1) << place.x << ' ' << place.y;
    }
}

TEST(Topology, TellsManyCavitiesFromWhatLiesBesideThem)
{
    Bodies bodies;
    int within = 0;
    constexpr int kCount = 29;
    for (int x = 1; x <= kCount; ++x)
        for (int y = 1; y <= kCount; ++y) {
            bodies.Tetrahedron({float(x), float(y), 1}, 0.25F, true);
            within += x + y <= kCount ? 1 : 0;
        }
    const Topology found = bodies.Tetrahedron({0, 0, 0}, 30.5F).Examined();
    EXPECT_EQ(found.cavities.count, within);
    EXPECT_EQ(found.inwardPieces.count, kCount * kCount - within);
}

TEST(Topology, TakesNoBodyForACavityOfOneThatIsNoLarger)
{
    // A negative side mirrors: it faces inwards, and fills the other corner of the same box.
    const Topology found = Bodies().Tetrahedron({0, 0, 0}, 10).Tetrahedron({10, 10, 10}, -10).Examined();
    EXPECT_EQ(found.inwardPieces.count, 1);
    EXPECT_EQ(found.cavities.count, 0);
}

TEST(Topology, CallsNothingWithoutVolumeTurnedInsideOut)
{
    // Two facets back to back, aslant.
    const Topology found = Bodies()
                               .Vertices({{0.1F, 0.2F, 0.3F}, {1.7F, 0.9F, 0.1F}, {0.3F, 1.9F, 2.3F}})
                               .Facet(0, 1, 2)
                               .Facet(0, 2, 1)
                               .Examined();
    EXPECT_EQ(EdgeFaults(found), 0);
    EXPECT_EQ(found.inwardPieces.count, 0);
}

TEST(Topology, DoesNotJudgeTheVolumeOfAnOpenBody)
{
    const Topology found = Bodies().Tetrahedron({0, 0, 0}, 1, true).WithoutFacet(0).Examined();
    EXPECT_EQ(found.inwardPieces.count, 0);
    EXPECT_EQ(found.openEdges.count, 3);
}

TEST(Topology, LeavesAFacetWithACornerTwiceOutOfEdgesAndPieces)
{
    const Topology found = Bodies()
                               .Tetrahedron({0, 0, 0})
                               .Facet(1, 1, 2)
                               .Vertices({{0, 1, 0}})
                               .Facet(1, 2, 4) // 2 and 4 are in the same place
                               .Examined();
    EXPECT_EQ(found.degenerateFacets.count, 2);
    EXPECT_EQ(EdgeFaults(found), 0);
    EXPECT_EQ(found.pieces, 1);
    ASSERT_EQ(found.degenerateFacets.first.size(), 3U);
    ExpectPoint(found.degenerateFacets.first[2], 0, 1, 0);
}

TEST(Topology, CountsAFacetWithItsCornersOnALineAsDegenerateAndKeepsItsEdges)
{
    // The facet without area closes the gap that a vertex within an edge would leave.
    Bodies bodies;
    bodies.Vertices({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {1, 0, 0}})
        .Facet(0, 2, 4)
        .Facet(4, 2, 1)
        .Facet(0, 1, 3)
        .Facet(1, 2, 3)
        .Facet(2, 0, 3)
        .Facet(0, 4, 1);
    const Topology found = bodies.Examined();
    EXPECT_EQ(found.degenerateFacets.count, 1);
    EXPECT_EQ(EdgeFaults(found), 0);
}

TEST(Topology, KeepsTheSmallestFacetsThatFloatsCanTell)
{
    const float least = std::numeric_limits<float>::denorm_min();
    const Topology found = Bodies().Tetrahedron({0, 0, 0}, least).Examined();
    EXPECT_EQ(found.degenerateFacets.count, 0);
    EXPECT_EQ(found.pieces, 1);
}

TEST(Topology, CountsVerticesThatAreNotFiniteOnceEachIfAFacetHasThem)
{
    Bodies bodies;
    bodies.Vertices({{0, 0, 0}, {1, 0, 0}, {0, kNotANumber, 0}, {kNotANumber, 7, 7}})
        .Facet(0, 1, 2)
        .Facet(1, 0, 2);
    const Topology found = bodies.Examined();
    EXPECT_EQ(found.strayVertices.count, 1);
    EXPECT_EQ(found.degenerateFacets.count, 0);
    EXPECT_EQ(found.inwardPieces.count, 0);
    ASSERT_EQ(found.strayVertices.first.size(), 1U);
    EXPECT_EQ(found.strayVertices.first[0].x, 0);
}

TEST(Topology, PassesOverFacetsWithAnIndexOutside)
{
    const Topology found =
        Bodies().Tetrahedron({0, 0, 0}).Facet(0, 1, 4).Facet(-1, 0, 1).Facet(-1, -1, -1).Examined();
    EXPECT_EQ(EdgeFaults(found), 0);
    EXPECT_EQ(found.pieces, 1);
}

TEST(Topology, CountsAnObjectWithoutFacets)
{
    const Topology found = Bodies().Vertices({{0, 0, 0}}).Examined();
    EXPECT_EQ(found.emptyObjects.count, 1);
    EXPECT_EQ(found.pieces, 0);
}

TEST(Topology, GoesThroughAFanOfManyFacetsAroundOneEdge)
{
    constexpr int kFacets = 200000;
    Bodies bodies;
    std::vector<Point> points = {{0, 0, 0}, {0, 0, 1}};
    for (int i = 0; i < kFacets; ++i)
        points.push_back({float(i + 1), 1, 0});
    bodies.Vertices(points);
    for (int i = 0; i < kFacets; ++i)
        bodies.Facet(0, 1, i + 2);
    const Topology found = bodies.Examined();
    EXPECT_EQ(found.crowdedEdges.count, 1);
    EXPECT_EQ(found.openEdges.count, 2 * kFacets);
    EXPECT_EQ(found.pieces, 1);
}

TEST(Topology, AddsUpObjectsAndKeepsWhereTheFirstOneIs)
{
    const Topology closed = Bodies().Tetrahedron({0, 0, 0}).Examined();
    const Topology open = Bodies().Tetrahedron({4, 0, 0}).WithoutFacet(2).Examined();
    Topology all;
    Add(all, closed, 0);
    Add(all, open, 1);
    Add(all, open, 2);
    EXPECT_EQ(all.openEdges.count, 6);
    EXPECT_EQ(all.openEdges.object, 1U);
    EXPECT_EQ(all.openEdges.first.at(0).x, 4);
    EXPECT_EQ(all.pieces, 3);
}

} // namespace
