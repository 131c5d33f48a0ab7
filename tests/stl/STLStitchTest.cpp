#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "fileformat/stl/STLFile.h"
#include "tests/stl/SoupBuilder.h"

namespace {

using Point = Vector3D<float>;
using Faces = std::vector<TriangleFace>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct Stitched {
    std::vector<Point> normals;
    Faces faces;
    std::vector<Point> vertices;
};

Stitched Stitch(const SoupCorners& soup, std::vector<Point> normals)
{
    Stitched mesh{std::move(normals), {}, {}};
    STLFile::StitchTriangleSoup(soup, mesh.normals, mesh.faces, mesh.vertices);
    return mesh;
}

Stitched Stitch(const SoupCorners& soup)
{
    return Stitch(soup, NoNormals(soup));
}

bool HaveSameBits(const Point& a, const Point& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// The mesh's corners, three a facet, as a soup again.
SoupCorners CornersOf(const Stitched& mesh)
{
    SoupCorners corners;
    for (const TriangleFace& f : mesh.faces)
        for (const int v : f.v)
            corners.push_back(mesh.vertices.at(std::size_t(v)));
    return corners;
}

double Volume(const Stitched& mesh)
{
    double volume = 0;
    for (const TriangleFace& f : mesh.faces) {
        const Point &a = mesh.vertices.at(std::size_t(f[0])), &b = mesh.vertices.at(std::size_t(f[1]));
        const Point& c = mesh.vertices.at(std::size_t(f[2]));
        const Vector3D<double> n = CalcAreaVector(a, b, c);
        volume += (double(a.x) * n.x + double(a.y) * n.y + double(a.z) * n.z) / 6;
    }
    return volume;
}

/// Whether each directed edge has its one opposite: closed and wound alike throughout.
bool IsClosedAndConsistent(const Faces& faces)
{
    std::multiset<std::pair<int, int>> edges;
    for (const TriangleFace& f : faces)
        for (int c = 0; c < 3; ++c)
            edges.insert({f[c], f[(c + 1) % 3]});
    return std::all_of(edges.begin(), edges.end(), [&](const std::pair<int, int>& e) {
        return edges.count(e) == 1 && edges.count({e.second, e.first}) == 1;
    });
}

// Two facets with an edge of 30 in common but for its height in each. The third has the smallest edge, whose
// extent E is 0.0001; the box's diagonal D makes D / 10000 about 0.0108.
SoupCorners PairWithGapBesideATinyEdge(float first, float second)
{
    return {{0, 0, first}, {30, 0, first}, {10, 30, 0},        {30, 0, second}, {0, 0, second},
            {10, -30, 0},  {50, 50, 50},   {50.0001f, 50, 50}, {50, 51, 50}};
}

SoupCorners UnitCube()
{
    return CubeSoup({0, 0, 0}, 1);
}

} // namespace

TEST(STLStitch, WritesNothingForFewerThanThreeCorners)
{
    Faces faces{{7, 8, 9}};
    std::vector<Point> vertices{{1, 2, 3}}, normals{{4, 5, 6}};
    STLFile::StitchTriangleSoup({{0, 0, 0}, {1, 0, 0}}, normals, faces, vertices);
    EXPECT_EQ(faces, (Faces{{7, 8, 9}}));
    EXPECT_EQ(vertices, (std::vector<Point>{{1, 2, 3}}));
    EXPECT_EQ(normals, (std::vector<Point>{{4, 5, 6}}));
}

TEST(STLStitch, IgnoresAnIncompleteLastFacet)
{
    SoupCorners soup = UnitCube();
    soup.push_back({9, 9, 9});
    soup.push_back({8, 8, 8});
    EXPECT_EQ(Stitch(soup, std::vector<Point>(12)).faces.size(), 12u);
}

TEST(STLStitch, GivesACubeEightVerticesAndTwelveFaces)
{
    const Stitched mesh = Stitch(UnitCube());
    EXPECT_EQ(mesh.vertices.size(), 8u);
    ASSERT_EQ(mesh.faces.size(), 12u);
    EXPECT_TRUE(IsClosedAndConsistent(mesh.faces));
    EXPECT_EQ(CornersOf(mesh), UnitCube());
    EXPECT_DOUBLE_EQ(Volume(mesh), 1);
}

TEST(STLStitch, NumbersVerticesAsFacetsFirstMeetThem)
{
    const Stitched mesh = Stitch(UnitCube());
    int next = 0;
    for (const TriangleFace& f : mesh.faces)
        for (const int v : f.v) {
            EXPECT_LE(v, next);
            next = std::max(next, v + 1);
        }
    EXPECT_EQ(mesh.faces.front(), TriangleFace(0, 1, 2));
}

TEST(STLStitch, ReplacesWhatTheListsHeld)
{
    Faces faces(100);
    std::vector<Point> vertices(100), normals(12);
    STLFile::StitchTriangleSoup(UnitCube(), normals, faces, vertices);
    EXPECT_EQ(faces.size(), 12u);
    EXPECT_EQ(vertices.size(), 8u);
}

TEST(STLStitch, DropsAFacetWithTwoEqualCorners)
{
    for (int same = 0; same < 3; ++same) {
        SoupCorners soup = UnitCube();
        Point facet[3] = {{5, 5, 5}, {6, 5, 5}, {5, 6, 5}};
        facet[same] = facet[(same + 1) % 3];
        soup.insert(soup.begin() + 6, facet, facet + 3);
        const Stitched mesh = Stitch(soup);
        EXPECT_EQ(mesh.faces.size(), 12u);
        EXPECT_EQ(mesh.vertices.size(), 8u);
        EXPECT_EQ(mesh.normals.size(), 12u);
    }
}

TEST(STLStitch, FillsTheHoleOfADroppedFacetFromTheEnd)
{
    const Point p(3, 3, 3);
    const SoupCorners soup{p, p, {4, 4, 4}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {7, 0, 0}, {8, 0, 0}, {7, 1, 0}};
    const Stitched mesh = Stitch(soup);
    EXPECT_EQ(CornersOf(mesh),
              (SoupCorners{{7, 0, 0}, {8, 0, 0}, {7, 1, 0}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
}

TEST(STLStitch, ExaminesTheFacetThatFilledAHole)
{
    const Point p(3, 3, 3);
    const SoupCorners soup{p, p, {4, 4, 4}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, p, {5, 5, 5}, p};
    EXPECT_EQ(CornersOf(Stitch(soup)), (SoupCorners{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
}

TEST(STLStitch, EmptiesTheListsWhenEveryFacetIsDegenerate)
{
    Faces faces(3);
    std::vector<Point> vertices(3), normals(2);
    const Point p(1, 2, 3), q(4, 5, 6);
    STLFile::StitchTriangleSoup({p, p, q, q, p, q}, normals, faces, vertices);
    EXPECT_TRUE(faces.empty());
    EXPECT_TRUE(vertices.empty());
    EXPECT_TRUE(normals.empty());
}

TEST(STLStitch, KeepsAFacetWhoseEqualCornersDifferInTheSignOfZero)
{
    const SoupCorners soup{{0.0f, 1, 0}, {-0.0f, 1, 0}, {5, 5, 5}};
    EXPECT_EQ(Stitch(soup).faces.size(), 1u);
}

TEST(STLStitch, TurnsAnInwardCubeOutwardSwappingTheFirstTwoIndices)
{
    const SoupCorners inward = Turned(UnitCube());
    const Stitched mesh = Stitch(inward);
    EXPECT_DOUBLE_EQ(Volume(mesh), 1);
    EXPECT_TRUE(IsClosedAndConsistent(mesh.faces));
    EXPECT_EQ(CornersOf(mesh), UnitCube());
}

TEST(STLStitch, MakesTheWindingOfFlippedFacetsConsistent)
{
    Random random(3);
    for (int i = 0; i < 100; ++i) {
        SoupCorners soup = TorusSoup(8, 8, 5, 2);
        FlipFacets(soup, 0.5, random);
        const Stitched mesh = Stitch(soup);
        EXPECT_EQ(mesh.vertices.size(), 64u);
        EXPECT_TRUE(IsClosedAndConsistent(mesh.faces));
        EXPECT_GT(Volume(mesh), 0);
    }
}

TEST(STLStitch, KeepsTheWindingOfEachPiecesFirstFacet)
{
    const SoupCorners outward = UnitCube(), hollow = Turned(CubeSoup({0.25f, 0.25f, 0.25f}, 0.5f));
    const SoupCorners soup = Joined(outward, hollow);
    EXPECT_EQ(CornersOf(Stitch(soup)), soup);
}

TEST(STLStitch, DecidesInwardOrOutwardForAllPiecesTogether)
{
    const SoupCorners small = CubeSoup({5, 5, 5}, 0.5f), large = UnitCube();
    const Stitched mesh = Stitch(Joined(small, Turned(large)));
    EXPECT_EQ(CornersOf(mesh), Joined(Turned(small), large));
}

TEST(STLStitch, FileNormalsNeverChooseAWinding)
{
    const Stitched expected = Stitch(UnitCube());
    for (const Point& normal : {Point(0, 0, 1), Point(0, 0, -1), Point(kNaN, 0, 0)}) {
        const Stitched mesh = Stitch(UnitCube(), std::vector<Point>(12, normal));
        EXPECT_EQ(mesh.faces, expected.faces);
        EXPECT_EQ(mesh.vertices, expected.vertices);
    }
}

TEST(STLStitch, EveryNormalIsTheGeometricNormalWhateverTheFileSaid)
{
    const SoupCorners soup = TorusSoup(6, 6, 5, 2);
    for (const float scale : {-1.0f, 0.0f, 1.0f, 1000.0f, kNaN, kInfinity}) {
        const Stitched mesh = Stitch(soup, std::vector<Point>(72, Point(scale, scale, 0)));
        const SoupCorners corners = CornersOf(mesh);
        ASSERT_EQ(mesh.normals.size(), 72u);
        for (std::size_t t = 0; t < 72; ++t) {
            Point normal;
            Point::CalcNormal(corners[3 * t], corners[3 * t + 1], corners[3 * t + 2], normal);
            EXPECT_NEAR(mesh.normals[t].x, normal.x, 0.001);
            EXPECT_NEAR(mesh.normals[t].y, normal.y, 0.001);
            EXPECT_NEAR(mesh.normals[t].z, normal.z, 0.001);
        }
    }
}

TEST(STLStitch, KeepsAStoredNormalWithinAThousandth)
{
    const SoupCorners facet{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    EXPECT_EQ(Stitch(facet, {{0.0009f, 0, 1}}).normals.front(), Point(0.0009f, 0, 1));
    EXPECT_EQ(Stitch(facet, {{0.0011f, 0, 1}}).normals.front(), Point(0, 0, 1))
        << "normalised it is still off";
    const Point longer = Stitch(facet, {{0.005f, 0, 10}}).normals.front();
    EXPECT_NEAR(longer.x, 0.0005f, 1e-6f) << "right once it has length 1";
    EXPECT_NEAR(longer.z, 1, 1e-6f);
}

TEST(STLStitch, RecomputesTheNormalsOfAMeshThatIsTurnedOver)
{
    const Stitched mesh = Stitch(Turned(UnitCube()));
    EXPECT_EQ(mesh.normals.front(), Point(0, 0, -1));
}

TEST(STLStitch, GivesAFacetWithoutAreaTheZeroNormal)
{
    const SoupCorners line{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
    EXPECT_EQ(Stitch(line, {{0, 0, 1}}).normals.front(), Point(0, 0, 0));
}

TEST(STLStitch, MoreNormalsThanFacetsAreKept)
{
    std::vector<Point> normals(12, Point(0, 0, 1));
    normals.emplace_back(7, 8, 9);
    const Stitched mesh = Stitch(UnitCube(), normals);
    ASSERT_EQ(mesh.normals.size(), 13u);
    EXPECT_EQ(mesh.normals.back(), Point(7, 8, 9));
}

TEST(STLStitch, ThrowsOutOfRangeForFewerNormalsThanFacetsAndLeavesTheLists)
{
    Faces faces{{7, 8, 9}};
    std::vector<Point> vertices{{1, 2, 3}}, normals(11, Point(1, 1, 1));
    try {
        STLFile::StitchTriangleSoup(UnitCube(), normals, faces, vertices);
        FAIL() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "vector::_M_range_check: __n (which is 11) >= this->size() (which is 11)");
    }
    EXPECT_EQ(faces, (Faces{{7, 8, 9}}));
    EXPECT_EQ(vertices, (std::vector<Point>{{1, 2, 3}}));
    EXPECT_EQ(normals.front(), Point(0, 0, -1)) << "normals before the missing one are rewritten";
}

TEST(STLStitch, ADroppedFacetTakesANormalAway)
{
    SoupCorners soup = UnitCube();
    soup.insert(soup.end(), 3, Point(1, 1, 1));
    std::vector<Point> normals(12);
    EXPECT_THROW(Stitch(soup, normals), std::out_of_range);
    normals.emplace_back();
    EXPECT_EQ(Stitch(soup, normals).faces.size(), 12u);
}

TEST(STLStitch, ADroppedFacetTakesTheLastNormalAway)
{
    const Point p(3, 3, 3), q(4, 4, 4), slanted(0.0009f, 0, 1);
    const Stitched mesh = Stitch({p, p, q, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {slanted, {0, 0, 1}});
    EXPECT_EQ(mesh.normals, std::vector<Point>{slanted}) << "right to within a thousandth for the facet left";
}

TEST(STLStitch, DropsMoreFacetsThanThereAreNormals)
{
    const Point p(1, 2, 3), q(4, 5, 6);
    EXPECT_TRUE(Stitch({p, p, q, q, p, q}, {{0, 0, 1}}).normals.empty());
    EXPECT_TRUE(Stitch({p, p, q, q, p, q}, {}).faces.empty());
}

TEST(STLStitch, JoinsCornersCloserThanTheSmallestEdgeExtent)
{
    // The second facet's copies of the shared corners lie beside the first's, wherever the borders of cells
    // run.
    Random random(9);
    for (int i = 0; i < 2000; ++i) {
        const auto offset = [&] { return float(int(random() % 2001) - 1000) * 0.00099f; };
        const Point a(0, 0, 0), b(3, 0, 0);
        const Point nearA(offset(), offset(), offset()), nearB(3 + offset() / 2, offset(), offset());
        const SoupCorners soup{a, b, {1, 3, 0}, nearB, nearA, {1, -3, 0}};
        SoupCorners withSmallEdge = soup;
        const Point corner(50, 50, 50);
        withSmallEdge.insert(withSmallEdge.end(), {corner, {51, 50, 50}, {50, 51, 50}});
        const Stitched mesh = Stitch(withSmallEdge);
        ASSERT_EQ(mesh.faces.size(), 3u);
        ASSERT_EQ(mesh.vertices.size(), 7u) << "two of six corners are shared";
        EXPECT_TRUE(HaveSameBits(CornersOf(mesh)[0], CornersOf(mesh)[4]));
        EXPECT_TRUE(HaveSameBits(CornersOf(mesh)[1], CornersOf(mesh)[3]));
    }
}

TEST(STLStitch, ClosesGapsOfATenThousandthOfTheDiagonalThoughEdgesAreShorter)
{
    const Stitched mesh = Stitch(PairWithGapBesideATinyEdge(0, 0.003f));
    EXPECT_EQ(mesh.vertices.size(), 4u + 3u);
    EXPECT_EQ(mesh.vertices[0], Point(0, 0, 0.003f));
}

TEST(STLStitch, LeavesCornersFurtherApartThanTheToleranceAsTheyCame)
{
    // In neighbouring cells of E + D / 10000; of twice as much they would be in one.
    const SoupCorners soup = PairWithGapBesideATinyEdge(0.0115f, 0.0235f);
    const Stitched mesh = Stitch(soup);
    EXPECT_EQ(mesh.vertices.size(), 9u);
    EXPECT_EQ(CornersOf(mesh), soup);
}

TEST(STLStitch, MeasuresTheFirstEdgeThoughItsFacetIsRemoved)
{
    const SoupCorners pair{{0, 0, 0}, {3, 0, 0}, {1, 3, 0}, {3, 0, 0.3f}, {0, 0, 0.3f}, {1, -3, 0}};
    const Point p(5, 5, 5), q(6, 6, 6);
    EXPECT_EQ(Stitch(pair).vertices.size(), 4u) << "E is 3";
    EXPECT_EQ(Stitch(Joined({p, q, p}, pair)).vertices.size(), 4u) << "E is 1";
    EXPECT_EQ(Stitch(Joined({p, p, q}, pair)).vertices.size(), 6u) << "E is 0";
    EXPECT_EQ(Stitch(Joined(pair, {p, p, q})).vertices.size(), 4u) << "only the first edge counts";
}

TEST(STLStitch, MeasuresTheBoxWithFacetsThatAreRemoved)
{
    const Point far(2000, 0, 0);
    const SoupCorners soup = PairWithGapBesideATinyEdge(0, 0.03f);
    EXPECT_EQ(Stitch(Joined(soup, {far, far, {0, 0, 0}})).vertices.size(), 4u + 3u);
}

TEST(STLStitch, ACornerSnappedAgainTakesTheLaterPosition)
{
    // Three facets in a row around a hub that lies elsewhere in each.
    const Point hubs[] = {{0, 0, 0}, {0, 0, 0.001f}, {0, 0, 0.002f}};
    const Point p0(1, 0, 0), p1(0, 1, 0), p2(-1, 0, 0), p3(0, -1, 0);
    const Stitched mesh = Stitch({hubs[0], p0, p1, hubs[1], p1, p2, hubs[2], p2, p3});
    EXPECT_EQ(mesh.vertices.size(), 5u);
    const SoupCorners corners = CornersOf(mesh);
    for (const std::size_t hub : {0u, 3u, 6u})
        EXPECT_TRUE(HaveSameBits(corners[hub], hubs[2])) << hub;
}

TEST(STLStitch, EarlierFacetsTakeTheLaterFacetsPosition)
{
    const Point nearA(0.001f, 0, 0), nearB(1, 0.001f, 0);
    const SoupCorners soup{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, nearB, nearA, {0, -1, 0}};
    const Stitched mesh = Stitch(soup);
    EXPECT_EQ(CornersOf(mesh), (SoupCorners{nearA, nearB, {0, 1, 0}, nearB, nearA, {0, -1, 0}}));
}

TEST(STLStitch, ASnapIsCarriedAroundTheFan)
{
    // Facets 0..2 are linked around the corner (0, 0, 0); facet 3 joins them with a corner beside it.
    const Point hub(0, 0, 0), beside(0.001f, 0.001f, 0);
    const Point p[5] = {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {-1, 1, 0}, {-1, 0, 0}};
    const SoupCorners soup{hub, p[0], p[1], hub, p[1], p[2], hub, p[2], p[3], beside, p[3], p[4]};
    const Stitched mesh = Stitch(soup);
    EXPECT_EQ(mesh.vertices.size(), 6u);
    EXPECT_EQ(CornersOf(mesh),
              (SoupCorners{beside, p[0], p[1], beside, p[1], p[2], beside, p[2], p[3], beside, p[3], p[4]}));
}

TEST(STLStitch, ClosesAJitteredCube)
{
    Random random(21);
    for (int i = 0; i < 500; ++i) {
        SoupCorners soup = CubeSoup({-3, 2, 10}, 5);
        JitterCorners(soup, 0.7, 0.01f, random);
        ShuffleFacets(soup, random);
        const Stitched mesh = Stitch(soup);
        ASSERT_EQ(mesh.vertices.size(), 8u);
        ASSERT_TRUE(IsClosedAndConsistent(mesh.faces));
        EXPECT_NEAR(Volume(mesh), 125, 2);
    }
}

TEST(STLStitch, JoinsZerosOfBothSigns)
{
    SoupCorners soup = UnitCube();
    for (std::size_t i = 0; i < soup.size(); i += 2)
        soup[i] = Point(soup[i].x == 0 ? -0.0f : soup[i].x, soup[i].y, soup[i].z == 0 ? -0.0f : soup[i].z);
    const Stitched mesh = Stitch(soup);
    EXPECT_EQ(mesh.vertices.size(), 8u);
    EXPECT_TRUE(IsClosedAndConsistent(mesh.faces));
}

TEST(STLStitch, AVertexHasTheBitsOfTheCornerThatWasMetFirst)
{
    const SoupCorners soup{{-0.0f, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 0, 0}, {0.0f, 0, 0}, {0, -1, 0}};
    EXPECT_TRUE(HaveSameBits(Stitch(soup).vertices.front(), Point(-0.0f, 0, 0)));
}

TEST(STLStitch, LeavesALoneFacetAsItCame)
{
    const SoupCorners facet{{1, 2, 3}, {4, 5, 7}, {0, 9, 1}};
    const Stitched mesh = Stitch(facet);
    EXPECT_EQ(mesh.faces, (Faces{{0, 1, 2}}));
    EXPECT_EQ(mesh.vertices, facet);
}

TEST(STLStitch, NeverLinksAFacetToItself)
{
    // A sliver whose long sides lie within the tolerance of each other.
    const SoupCorners sliver{{0, 0, 0}, {10, 0, 0}, {10, 0.0005f, 0}};
    const Stitched mesh = Stitch(sliver);
    EXPECT_EQ(mesh.faces, (Faces{{0, 1, 2}}));
    EXPECT_EQ(mesh.vertices, sliver);
}

TEST(STLStitch, LeavesAnOpenSheetAsItCame)
{
    for (const int n : {1, 2, 7, 20}) {
        const SoupCorners sheet = SheetSoup(n, 1);
        const Stitched mesh = Stitch(sheet);
        EXPECT_EQ(mesh.vertices.size(), std::size_t((n + 1) * (n + 1)));
        EXPECT_EQ(CornersOf(mesh), sheet);
    }
}

TEST(STLStitch, TwoFacetsThatShareOnlyACornerKeepAVertexEach)
{
    const SoupCorners soup{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {-1, 0, 0}, {0, -1, 0}};
    EXPECT_EQ(Stitch(soup).vertices.size(), 6u);
}

TEST(STLStitch, TwoCubesThatTouchAtACornerKeepAVertexEach)
{
    const Stitched mesh = Stitch(Joined(CubeSoup({0, 0, 0}, 1), CubeSoup({1, 1, 1}, 1)));
    EXPECT_EQ(mesh.vertices.size(), 16u);
    EXPECT_TRUE(IsClosedAndConsistent(mesh.faces));
}

TEST(STLStitch, OfThreeFacetsOnAnEdgeTheFirstTwoAreLinked)
{
    const Point a(0, 0, 0), b(0, 0, 1);
    const SoupCorners soup{a, b, {1, 0, 0}, b, a, {0, 1, 0}, a, b, {-1, -1, 0}};
    const Stitched mesh = Stitch(soup);
    EXPECT_EQ(mesh.vertices.size(), 7u);
    EXPECT_EQ(mesh.faces[0][0], mesh.faces[1][1]);
    EXPECT_EQ(mesh.faces[0][1], mesh.faces[1][0]);
    EXPECT_NE(mesh.faces[2][0], mesh.faces[0][0]) << "the third has vertices of its own";
}

TEST(STLStitch, TheSameFacetTwiceLinksToItsCopy)
{
    const SoupCorners facet{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const Stitched mesh = Stitch(Joined(facet, facet));
    EXPECT_EQ(mesh.vertices.size(), 3u);
    EXPECT_EQ(mesh.faces[0][2], mesh.faces[1][2]);
}

TEST(STLStitch, AOneSidedStripEndsAndKeepsItsFaces)
{
    for (int n = 3; n < 20; ++n) {
        const Stitched mesh = Stitch(MoebiusSoup(n));
        EXPECT_EQ(mesh.faces.size(), std::size_t(2 * n));
        EXPECT_EQ(mesh.vertices.size(), std::size_t(2 * n));
    }
}

TEST(STLStitch, CornersThatAreNotFiniteAreNeverShared)
{
    for (const float odd : {kNaN, kInfinity, -kInfinity}) {
        SoupCorners soup = UnitCube();
        for (Point& p : soup)
            if (p == Point(0, 0, 0))
                p.x = odd;
        const Stitched mesh = Stitch(soup);
        EXPECT_EQ(mesh.faces.size(), 12u);
        const auto isOdd = [](const Point& p) { return !std::isfinite(p.x); };
        const SoupCorners corners = CornersOf(mesh);
        EXPECT_EQ(std::count_if(mesh.vertices.begin(), mesh.vertices.end(), isOdd),
                  std::count_if(corners.begin(), corners.end(), isOdd));
    }
}

TEST(STLStitch, FacetsOfWhichNoCornerIsFiniteComeOutAsTheyWentIn)
{
    const SoupCorners wild{{kNaN, 0, 0}, {0, kInfinity, 0}, {0, 0, -kInfinity},
                           {kNaN, 1, 1}, {1, kInfinity, 1}, {1, 1, -kInfinity}};
    const SoupCorners corners = CornersOf(Stitch(wild));
    ASSERT_EQ(corners.size(), wild.size());
    EXPECT_TRUE(std::equal(corners.begin(), corners.end(), wild.begin(), HaveSameBits));
}

TEST(STLStitch, FacetsWithoutAreaCannotTurnTheMeshInsideOut)
{
    const SoupCorners needle{{1e30f, 0, 0}, {2e30f, 0, 0}, {3e30f, 0, 0}};
    const SoupCorners wild{{kNaN, 0, 0}, {0, kInfinity, 0}, {0, 0, -kInfinity}};
    for (const SoupCorners& extra : {needle, wild}) {
        const SoupCorners corners = CornersOf(Stitch(Joined(UnitCube(), extra)));
        EXPECT_TRUE(std::equal(corners.begin(), corners.begin() + 36, UnitCube().begin()));
    }
    const Stitched first = Stitch(Joined(wild, UnitCube()));
    EXPECT_TRUE(HaveSameBits(CornersOf(first)[3], UnitCube()[0]));
}

TEST(STLStitch, CoordinatesOfAnySizeAreTaken)
{
    for (const float size : {1e-38f, 1e-20f, 1e20f, 1e38f}) {
        SoupCorners soup = CubeSoup({0, 0, 0}, size);
        const Stitched mesh = Stitch(soup);
        EXPECT_EQ(mesh.vertices.size(), 8u) << size;
        EXPECT_EQ(CornersOf(mesh), soup) << size;
        soup.resize(30); // open: the tolerant passes run too
        EXPECT_EQ(Stitch(soup).faces.size(), 10u) << size;
    }
    const float most = std::numeric_limits<float>::max();
    EXPECT_EQ(Stitch({{-most, -most, -most}, {most, most, most}, {0, 1, 0}}).faces.size(), 1u);
}

TEST(STLStitch, AFanOfManyFacetsWithScatteredHubsIsJoined)
{
    // Every link snaps the whole fan so far; in one go, not facet by facet.
    constexpr int kCount = 20000;
    Random random(1);
    SoupCorners soup;
    const auto rim = [&](int i) {
        const double turn = 6.283185307179586 * double(i % kCount) / kCount;
        return Point(float(1e6 * std::cos(turn)), float(1e6 * std::sin(turn)), 0);
    };
    for (int i = 0; i < kCount; ++i) {
        const Point hub(float(random() % 100) * 0.01f, float(random() % 100) * 0.01f,
                        float(random() % 100) * 0.01f);
        soup.insert(soup.end(), {hub, rim(i), rim(i + 1)});
    }
    const Stitched mesh = Stitch(soup);
    EXPECT_EQ(mesh.faces.size(), std::size_t(kCount));
    EXPECT_EQ(mesh.vertices.size(), std::size_t(kCount + 1));
}

TEST(STLStitch, AHubOfManyShuffledFacetsIsNumberedOnce)
{
    constexpr int kCount = 100000;
    Random random(2);
    SoupCorners soup;
    const auto rim = [&](int i) {
        const double turn = 6.283185307179586 * double(i % kCount) / kCount;
        return Point(float(1e6 * std::cos(turn)), float(1e6 * std::sin(turn)), 0);
    };
    for (int i = 0; i < kCount; ++i)
        soup.insert(soup.end(), {Point(0, 0, 1), rim(i), rim(i + 1)});
    ShuffleFacets(soup, random);
    EXPECT_EQ(Stitch(soup).vertices.size(), std::size_t(kCount + 1));
}

TEST(STLStitch, StitchingTheResultAgainChangesNothing)
{
    Random random(17);
    for (int i = 0; i < 200; ++i) {
        SoupCorners soup = TorusSoup(6, 7, 5, 2);
        FlipFacets(soup, 0.2, random);
        ShuffleFacets(soup, random);
        const Stitched once = Stitch(soup);
        const Stitched twice = Stitch(CornersOf(once));
        EXPECT_EQ(twice.faces, once.faces);
        EXPECT_EQ(twice.vertices, once.vertices);
    }
}

TEST(STLStitch, EightThreadsAtOnceGiveTheSameMesh)
{
    Random random(4);
    SoupCorners soup = TorusSoup(40, 40, 5, 2);
    JitterCorners(soup, 0.05, 1e-5f, random);
    const Stitched expected = Stitch(soup);
    std::vector<Stitched> results(8);
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (Stitched& result : results)
        threads.emplace_back([&] { result = Stitch(soup); });
    for (std::thread& thread : threads)
        thread.join();
    for (const Stitched& result : results) {
        EXPECT_EQ(result.faces, expected.faces);
        EXPECT_EQ(result.vertices, expected.vertices);
    }
}
