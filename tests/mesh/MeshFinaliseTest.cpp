#include <cmath>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "tests/mesh/MeshBuilders.h"

namespace {

using EdgeCounts = std::map<long long, int>;

long long EdgeOf(int a, int b)
{
    return static_cast<long long>(std::min(a, b)) * 4294967296LL + std::max(a, b);
}

EdgeCounts OracleEdgeCounts(const Faces& faces, std::size_t vertexCount)
{
    EdgeCounts counts;
    for (const TriangleFace& face : faces) {
        std::set<long long> edges;
        for (int corner = 0; corner < 3; ++corner)
            if (IsInList(face, vertexCount) && face[corner] != face[(corner + 1) % 3])
                edges.insert(EdgeOf(face[corner], face[(corner + 1) % 3]));
        for (const long long edge : edges)
            ++counts[edge];
    }
    return counts;
}

EdgeCounts EdgeCountsOf(const Points& vertices, const Faces& faces)
{
    EdgeCounts counts = {{123, 456}};
    Mesh mesh = MakeMesh(vertices, faces);
    mesh.PostProcess(false, false, false, false, nullptr, &counts);
    return counts;
}

bool IsDroppedFor(const TriangleFace& face, std::size_t vertexCount)
{
    return IsInList(face, vertexCount) && (face[0] == face[1] || face[1] == face[2] || face[2] == face[0]);
}

void Finalise(Mesh& mesh, bool normals, bool neighbours)
{
    mesh.PostProcess(false, false, normals, neighbours, nullptr, nullptr);
}

Faces NeighboursOf(const Points& vertices, const Faces& faces)
{
    Mesh mesh = MakeMesh(vertices, faces);
    Finalise(mesh, false, true);
    return mesh.GetFaceNeighbours();
}

// Each edge against all before it, the latest first.
Faces OracleNeighbours(const Faces& faces, std::size_t vertexCount)
{
    Faces neighbours(faces.size(), TriangleFace(-1, -1, -1));
    for (std::size_t later = 0; later < 3 * faces.size(); ++later)
        for (std::size_t earlier = later; earlier-- > 0;) {
            const std::size_t f = later / 3, g = earlier / 3;
            int& across = neighbours[f].v[later % 3];
            int& back = neighbours[g].v[earlier % 3];
            if (f == g || back != -1 || !IsInList(faces[f], vertexCount) || !IsInList(faces[g], vertexCount))
                continue;
            if (EdgeOf(faces[f].v[later % 3], faces[f].v[(later + 1) % 3]) !=
                EdgeOf(faces[g].v[earlier % 3], faces[g].v[(earlier + 1) % 3]))
                continue;
            across = int(g);
            back = int(f);
            break;
        }
    return neighbours;
}

Points VertexNormalsOf(const Points& vertices, const Faces& faces)
{
    Mesh mesh = MakeMesh(vertices, faces);
    Finalise(mesh, true, false);
    return mesh.GetVertexNormals();
}

void ExpectNear(const Point& actual, const Point& expected, double tolerance)
{
    EXPECT_NEAR(double(actual.x), double(expected.x), tolerance);
    EXPECT_NEAR(double(actual.y), double(expected.y), tolerance);
    EXPECT_NEAR(double(actual.z), double(expected.z), tolerance);
}

} // namespace

TEST(MeshFinalise, SetsBothCountsFromTheLists)
{
    Mesh mesh = Cube();
    mesh.SetFaceNum(3);
    mesh.SetVertexNum(100);
    Finalise(mesh, false, false);
    ExpectCountsMatchLists(mesh, 8, 12);
}

TEST(MeshFinalise, WithoutSwitchesLeavesTheLists)
{
    const Faces faces = {{0, 0, 1}, {-1, 5, 3}, {2, 1, 0}};
    const Points vertices = {{0, 0, 0}, {0, 0, 0}, {kNaN, 0, 0}};
    Mesh mesh = MakeMesh(vertices, faces);
    *mesh.GetTextureFacesVecPtr() = {{7, 8, 9}};
    Finalise(mesh, false, false);
    EXPECT_EQ(*mesh.GetFacesVecPtr(), faces);
    ExpectCountsMatchLists(mesh, 3, 3);
    EXPECT_EQ(*mesh.GetTextureFacesVecPtr(), (Faces{{7, 8, 9}}));
}

TEST(MeshFinalise, OfAnEmptyMeshIsEmpty)
{
    Mesh mesh(0.03f);
    EdgeCounts counts;
    mesh.PostProcess(true, true, true, true, nullptr, &counts);
    ExpectCountsMatchLists(mesh, 0, 0);
    EXPECT_TRUE(mesh.GetFaceNormals().empty());
    EXPECT_TRUE(mesh.GetVertexNormals().empty());
    EXPECT_TRUE(mesh.GetFaceNeighbours().empty());
    EXPECT_TRUE(counts.empty());
}

TEST(MeshFinalise, TakesAVertexBufferFirst)
{
    Mesh mesh = MakeMesh({{9, 9, 9}}, CubeFaces());
    const Points buffer = CubeCorners();
    mesh.PostProcessFromVertexBuffer(&buffer, false, true, true, true, nullptr, nullptr);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), buffer);
    ExpectCountsMatchLists(mesh, 8, 12);
    EXPECT_EQ(mesh.GetVertexNormals().size(), 8u);
}

TEST(MeshFinalise, WithoutAVertexBufferKeepsTheVertices)
{
    Mesh mesh = Cube();
    mesh.PostProcessFromVertexBuffer(nullptr, false, false, false, false, nullptr, nullptr);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), CubeCorners());
}

TEST(MeshFinalise, MayTakeItsOwnVerticesAsTheBuffer)
{
    Mesh mesh = Cube();
    mesh.PostProcessFromVertexBuffer(mesh.GetVerticesVecPtr(), false, false, false, false, nullptr, nullptr);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), CubeCorners());
}

TEST(MeshFinalise, DoneTwiceChangesNothing)
{
    std::mt19937 random(20);
    for (int round = 0; round < 500; ++round) {
        const int count = RandomInt(random, 0, 40);
        Mesh mesh = MakeMesh(RandomPoints(random, count, 6, 0.02f), RandomFaces(random, 40, -1, count));
        mesh.PostProcess(true, true, true, true, nullptr, nullptr);
        const Mesh once = mesh;
        mesh.PostProcess(true, true, true, true, nullptr, nullptr);
        ASSERT_EQ(*mesh.GetVerticesVecPtr(), *once.GetVerticesVecPtr());
        ASSERT_EQ(*mesh.GetFacesVecPtr(), *once.GetFacesVecPtr());
        ASSERT_EQ(mesh.GetVertexNormals(), once.GetVertexNormals());
        ASSERT_EQ(mesh.GetFaceNeighbours(), once.GetFaceNeighbours());
        ExpectCountsMatchLists(mesh, once.GetVerticesVecPtr()->size(), once.GetFacesVecPtr()->size());
        ASSERT_EQ(mesh.GetFaceNormals().size(), mesh.GetFacesVecPtr()->size());
        ASSERT_EQ(mesh.GetVertexNormals().size(), mesh.GetVerticesVecPtr()->size());
    }
}

TEST(MeshDrop, DropsFacesThatNameAVertexTwice)
{
    Mesh mesh = MakeMesh(CubeCorners(),
                         {{0, 1, 2}, {0, 0, 1}, {1, 2, 1}, {3, 4, 5}, {2, 1, 1}, {6, 6, 6}, {5, 6, 7}});
    mesh.PostProcess(false, true, false, false, nullptr, nullptr);
    EXPECT_EQ(*mesh.GetFacesVecPtr(), (Faces{{0, 1, 2}, {3, 4, 5}, {5, 6, 7}}));
    ExpectCountsMatchLists(mesh, 8, 3);
}

TEST(MeshDrop, LeavesFacesWithIndicesOutsideAlone)
{
    const Faces faces = {{-1, -1, -1}, {8, 8, 0}, {0, kLowestInt, kLowestInt}};
    Mesh mesh = MakeMesh(CubeCorners(), faces);
    mesh.PostProcess(false, true, false, false, nullptr, nullptr);
    EXPECT_EQ(*mesh.GetFacesVecPtr(), faces);
}

TEST(MeshDrop, DropsTheTextureFacesBeside)
{
    Mesh mesh = MakeMesh(CubeCorners(), {{0, 1, 2}, {0, 0, 1}, {3, 4, 5}});
    *mesh.GetTextureFacesVecPtr() = {{10, 11, 12}, {20, 21, 22}, {30, 31, 32}};
    mesh.PostProcess(false, true, false, false, nullptr, nullptr);
    EXPECT_EQ(*mesh.GetTextureFacesVecPtr(), (Faces{{10, 11, 12}, {30, 31, 32}}));
}

TEST(MeshDrop, LeavesTextureFacesThatDoNotStandBesideTheFaces)
{
    for (const std::size_t count : {1u, 2u, 4u}) {
        Mesh mesh = MakeMesh(CubeCorners(), {{0, 1, 2}, {0, 0, 1}, {3, 4, 5}});
        *mesh.GetTextureFacesVecPtr() = Faces(count, TriangleFace(1, 1, 1));
        mesh.PostProcess(false, true, false, false, nullptr, nullptr);
        EXPECT_EQ(mesh.GetTextureFacesVecPtr()->size(), count);
    }
}

TEST(MeshDrop, MatchesTheOracle)
{
    std::mt19937 random(21);
    for (int round = 0; round < 3000; ++round) {
        const Points vertices{std::size_t(RandomInt(random, 1, 8))};
        const Faces faces = RandomFaces(random, RandomInt(random, 0, 30), -1, int(vertices.size()));
        const bool hasTextureFaces = RandomInt(random, 0, 1) == 1;
        Mesh mesh = MakeMesh(vertices, faces);
        Faces expected, expectedBeside;
        for (std::size_t i = 0; i < faces.size(); ++i) {
            if (hasTextureFaces)
                mesh.GetTextureFacesVecPtr()->emplace_back(int(i), 0, 0);
            if (IsDroppedFor(faces[i], vertices.size()))
                continue;
            expected.push_back(faces[i]);
            if (hasTextureFaces)
                expectedBeside.emplace_back(int(i), 0, 0);
        }
        mesh.PostProcess(false, true, false, false, nullptr, nullptr);
        ASSERT_EQ(*mesh.GetFacesVecPtr(), expected);
        ASSERT_EQ(*mesh.GetTextureFacesVecPtr(), expectedBeside);
        ExpectCountsMatchLists(mesh, vertices.size(), expected.size());
    }
}

TEST(MeshNormals, AreEmptyUnlessAskedFor)
{
    Mesh mesh = Cube();
    EXPECT_TRUE(mesh.GetFaceNormals().empty());
    Finalise(mesh, false, true);
    EXPECT_TRUE(mesh.GetFaceNormals().empty());
    EXPECT_TRUE(mesh.GetVertexNormals().empty());
    Finalise(mesh, true, false);
    EXPECT_EQ(mesh.GetFaceNormals().size(), 12u);
    EXPECT_EQ(mesh.GetVertexNormals().size(), 8u);
    Finalise(mesh, false, false);
    EXPECT_TRUE(mesh.GetFaceNormals().empty());
    EXPECT_TRUE(mesh.GetVertexNormals().empty());
}

TEST(MeshNormals, OfCubeFacesPointOutward)
{
    Mesh mesh = Cube();
    Finalise(mesh, true, false);
    const Point expected[] = {{0, 0, -1}, {0, 0, 1}, {0, -1, 0}, {0, 1, 0}, {-1, 0, 0}, {1, 0, 0}};
    for (std::size_t i = 0; i < 12; ++i)
        EXPECT_EQ(mesh.GetFaceNormals().at(i), expected[i / 2]) << "face " << i;
}

TEST(MeshNormals, OfFacesWithoutAreaOrWithBadIndicesAreZero)
{
    Mesh mesh = MakeMesh({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {kNaN, 0, 0}, {0, 1, 0}},
                         {{0, 1, 2}, {0, 1, 3}, {0, 1, 5}, {-1, 1, 2}, {0, 0, 0}, {0, 1, 4}});
    Finalise(mesh, true, false);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(mesh.GetFaceNormals().at(i), Point(0, 0, 0)) << "face " << i;
    EXPECT_EQ(mesh.GetFaceNormals().at(5), Point(0, 0, 1));
}

TEST(MeshNormals, OfVerticesAreWeightedByArea)
{
    // Vertex 0 in a face of area 2 that looks up and one of area 1/2 that looks along x.
    const Points normals =
        VertexNormalsOf({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 1, 2}, {0, 3, 4}});
    const float length = std::sqrt(17.0f);
    ExpectNear(normals.at(0), {1 / length, 0, 4 / length}, 1e-6);
    EXPECT_EQ(normals.at(1), Point(0, 0, 1));
    EXPECT_EQ(normals.at(2), Point(0, 0, 1));
    EXPECT_EQ(normals.at(3), Point(1, 0, 0));
    EXPECT_EQ(normals.at(4), Point(1, 0, 0));
}

TEST(MeshNormals, OfVerticesDoNotDependOnHowAFlatPatchIsCut)
{
    const Points whole =
        VertexNormalsOf({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {0, 0, 4}}, {{0, 1, 2}, {0, 2, 3}});
    const Points cut = VertexNormalsOf({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {0, 0, 4}, {2, 2, 0}},
                                       {{0, 1, 4}, {0, 4, 2}, {0, 2, 3}});
    ExpectNear(cut.at(0), whole.at(0), 1e-6);
}

TEST(MeshNormals, OfVerticesWithoutAFaceAreZero)
{
    const Points normals = VertexNormalsOf({{5, 5, 5}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{1, 2, 3}});
    EXPECT_EQ(normals.at(0), Point(0, 0, 0));
    EXPECT_EQ(normals.at(1), Point(0, 0, 1));
}

TEST(MeshNormals, OfVerticesWhoseFacesCancelAreZero)
{
    EXPECT_EQ(VertexNormalsOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 1}}),
              (Points{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}));
}

TEST(MeshNormals, AreNotSpoiltByAFaceThatIsNotFinite)
{
    const Points normals = VertexNormalsOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {kNaN, 0, 0}, {0, kInfinity, 0}},
                                           {{0, 1, 2}, {0, 1, 3}, {2, 0, 4}, {0, 1, 77}, {-5, 1, 2}});
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(normals.at(i), Point(0, 0, 1));
    EXPECT_EQ(normals.at(3), Point(0, 0, 0));
    EXPECT_EQ(normals.at(4), Point(0, 0, 0));
}

TEST(MeshNormals, ExistForTinyAndHugeMeshes)
{
    for (const float size : {1e-40f, 1e-20f, 1e38f})
        EXPECT_EQ(VertexNormalsOf({{0, 0, 0}, {size, 0, 0}, {0, size, 0}}, {{0, 1, 2}}), Points(3, {0, 0, 1}))
            << size;
}

TEST(MeshNormals, OfAFanOfManyThinFacesDoNotLean)
{
    // A cone of 200000 faces around the z axis.
    const int count = 200000;
    Points vertices = {{0, 0, 1}};
    Faces faces;
    for (int i = 0; i < count; ++i) {
        const double angle = 2 * 3.14159265358979323846 * i / count;
        vertices.emplace_back(float(std::cos(angle)), float(std::sin(angle)), 0.0f);
        faces.emplace_back(0, 1 + i, 1 + (i + 1) % count);
    }
    ExpectNear(VertexNormalsOf(vertices, faces).at(0), {0, 0, 1}, 1e-6);
}

TEST(MeshNormals, MayBeGivenForTheVertices)
{
    Point up(0, 0, 1), odd(3, 4, 5);
    const std::vector<Point*> given = {&up, nullptr, &odd};
    Mesh mesh = Cube();
    mesh.PostProcess(false, false, true, false, &given, nullptr);
    up = Point(9, 9, 9); // copied already
    Points expected(8);
    expected[0] = {0, 0, 1};
    expected[2] = {3, 4, 5};
    EXPECT_EQ(mesh.GetVertexNormals(), expected);
    EXPECT_EQ(mesh.GetFaceNormals().at(0), Point(0, 0, -1));
}

TEST(MeshNormals, GivenOnesFollowTheVertexBufferThroughTheMerge)
{
    Point a(1, 0, 0), b(0, 1, 0), c(0, 0, 1);
    const std::vector<Point*> given = {&a, &b, &c};
    const Points buffer = {{0, 0, 0}, {0.01f, 0, 0}, {5, 0, 0}};
    Mesh mesh = MakeMesh({{9, 9, 9}}, {}, 0.03f);
    mesh.PostProcessFromVertexBuffer(&buffer, true, false, true, false, &given, nullptr);
    EXPECT_EQ(mesh.GetVertexNormals(), (Points{a, c}));
}

TEST(MeshNormals, GivenBeyondTheVerticesAreIgnored)
{
    Point normal(0, 0, 1);
    const std::vector<Point*> given(20, &normal);
    Mesh mesh = Cube();
    mesh.PostProcess(false, false, true, false, &given, nullptr);
    EXPECT_EQ(mesh.GetVertexNormals(), Points(8, normal));
}

TEST(MeshNormals, GivenButNotAskedForAreIgnored)
{
    Point normal(0, 0, 1);
    const std::vector<Point*> given(8, &normal);
    Mesh mesh = Cube();
    mesh.PostProcess(false, false, false, false, &given, nullptr);
    EXPECT_TRUE(mesh.GetVertexNormals().empty());
}

TEST(MeshNormals, GivenOnesMayBeThoseProvidedBefore)
{
    Mesh mesh = Cube();
    Finalise(mesh, true, false);
    const Points before = mesh.GetVertexNormals();
    std::vector<Point*> given;
    for (const Point& normal : mesh.GetVertexNormals())
        given.push_back(const_cast<Point*>(&normal)); // only read
    mesh.PostProcess(false, false, true, false, &given, nullptr);
    EXPECT_EQ(mesh.GetVertexNormals(), before);
}

TEST(MeshNormals, GivenOnesFollowTheMerge)
{
    Point first(1, 0, 0), second(0, 1, 0), third(0, 0, 1);
    const std::vector<Point*> given = {&first, &second, &third};
    Mesh mesh = MakeMesh({{0, 0, 0}, {0.01f, 0, 0}, {5, 0, 0}}, {}, 0.03f);
    mesh.PostProcess(true, false, true, false, &given, nullptr);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (Points{{0, 0, 0}, {5, 0, 0}}));
    EXPECT_EQ(mesh.GetVertexNormals(), (Points{{1, 0, 0}, {0, 0, 1}}));
}

TEST(MeshNormals, GivenOnesAreForgottenByTheNextFinalisation)
{
    Point odd(3, 4, 5);
    const std::vector<Point*> given(8, &odd);
    Mesh mesh = Cube();
    mesh.PostProcess(false, false, true, false, &given, nullptr);
    Finalise(mesh, true, false);
    EXPECT_NE(mesh.GetVertexNormals().at(0), odd);
}

TEST(MeshNeighbours, AreEmptyUnlessAskedFor)
{
    Mesh mesh = Cube();
    EXPECT_TRUE(mesh.GetFaceNeighbours().empty());
    Finalise(mesh, true, false);
    EXPECT_TRUE(mesh.GetFaceNeighbours().empty());
    Finalise(mesh, false, true);
    EXPECT_EQ(mesh.GetFaceNeighbours().size(), 12u);
}

TEST(MeshNeighbours, StandInEdgeOrder)
{
    EXPECT_EQ(NeighboursOf(Points(4), {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {0, 3, 2}}),
              (Faces{{3, 2, 1}, {0, 2, 3}, {0, 3, 1}, {1, 2, 0}}));
}

TEST(MeshNeighbours, AreMinusOneAtABorder)
{
    EXPECT_EQ(NeighboursOf(Points(4), {{0, 1, 2}, {2, 1, 3}}), (Faces{{-1, 1, -1}, {0, -1, -1}}));
}

TEST(MeshNeighbours, AreFoundWhateverTheWinding)
{
    EXPECT_EQ(NeighboursOf(Points(4), {{0, 1, 2}, {1, 2, 3}}), (Faces{{-1, 1, -1}, {0, -1, -1}}));
}

TEST(MeshNeighbours, PairTwoOfThreeFacesOnAnEdge)
{
    EXPECT_EQ(NeighboursOf(Points(5), {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}}),
              (Faces{{1, -1, -1}, {0, -1, -1}, {-1, -1, -1}}));
}

TEST(MeshNeighbours, AreNeverTheFaceItself)
{
    EXPECT_EQ(NeighboursOf(Points(3), {{0, 1, 0}, {2, 2, 2}}), (Faces{{-1, -1, -1}, {-1, -1, -1}}));
}

TEST(MeshNeighbours, LeaveOutFacesWithIndicesOutside)
{
    EXPECT_EQ(NeighboursOf(Points(4), {{-1, 1, 2}, {0, 1, 2}, {2, 1, 4}, {kHighestInt, 1, 2}, {2, 1, 3}}),
              (Faces{{-1, -1, -1}, {-1, 4, -1}, {-1, -1, -1}, {-1, -1, -1}, {1, -1, -1}}));
}

TEST(MeshNeighbours, OfFacesOverNoVertexAreMinusOne)
{
    EXPECT_EQ(NeighboursOf({}, {{0, 1, 2}, {2, 1, 0}}), (Faces{{-1, -1, -1}, {-1, -1, -1}}));
}

TEST(MeshNeighbours, MatchTheOracle)
{
    std::mt19937 random(22);
    for (int round = 0; round < 3000; ++round) {
        const int vertexCount = RandomInt(random, 0, 12);
        const bool hasBadIndices = RandomInt(random, 0, 2) == 0;
        const Faces faces = RandomFaces(random, RandomInt(random, 0, 40), hasBadIndices ? -1 : 0,
                                        hasBadIndices ? vertexCount : std::max(vertexCount - 1, 0));
        ASSERT_EQ(NeighboursOf(Points{std::size_t(vertexCount)}, faces),
                  OracleNeighbours(faces, std::size_t(vertexCount)));
    }
}

TEST(MeshNeighbours, OfAClosedMeshPointBack)
{
    const Faces neighbours = NeighboursOf(CubeCorners(), CubeFaces());
    for (int face = 0; face < 12; ++face)
        for (const int across : neighbours.at(std::size_t(face)).v) {
            const TriangleFace& back = neighbours.at(std::size_t(across));
            EXPECT_TRUE(back[0] == face || back[1] == face || back[2] == face);
        }
}

TEST(MeshNeighbours, MatchTheOracleAroundAHub)
{
    // All faces share vertex 0, and every edge at it is there twice, far apart in the list.
    Faces faces;
    for (int i = 0; i < 700; ++i)
        faces.emplace_back(0, 2 * i + 1, 2 * i + 2);
    for (int i = 699; i >= 0; --i)
        faces.emplace_back(2 * i + 2, 2 * i + 1, 0);
    EXPECT_EQ(NeighboursOf(Points(1401), faces), OracleNeighbours(faces, 1401));
}

TEST(MeshOnDemand, IsComputedFromTheListsAtTheFirstRequest)
{
    Mesh mesh = MakeMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
    Finalise(mesh, true, true);
    std::swap(mesh.GetFacesVecPtr()->at(0).v[0], mesh.GetFacesVecPtr()->at(0).v[1]);
    EXPECT_EQ(mesh.GetFaceNormals().at(0), Point(0, 0, -1));
    std::swap(mesh.GetFacesVecPtr()->at(0).v[0], mesh.GetFacesVecPtr()->at(0).v[1]);
    EXPECT_EQ(mesh.GetFaceNormals().at(0), Point(0, 0, -1));
    Finalise(mesh, true, true);
    EXPECT_EQ(mesh.GetFaceNormals().at(0), Point(0, 0, 1));
}

TEST(MeshEdgeCounts, GiveTheNumberOfFacesOnEachEdge)
{
    const EdgeCounts counts = EdgeCountsOf(Points(4), {{0, 1, 2}, {2, 1, 3}});
    EXPECT_EQ(
        counts,
        (EdgeCounts{
            {EdgeOf(0, 1), 1}, {EdgeOf(1, 2), 2}, {EdgeOf(0, 2), 1}, {EdgeOf(1, 3), 1}, {EdgeOf(2, 3), 1}}));
    EXPECT_EQ(counts.begin()->first, 1LL);
    EXPECT_EQ(counts.rbegin()->first, 2LL * 4294967296LL + 3);
}

TEST(MeshEdgeCounts, CountAFaceOnceAndNoEdgeToItself)
{
    EXPECT_EQ(EdgeCountsOf(Points(3), {{0, 1, 0}, {2, 2, 2}}), (EdgeCounts{{EdgeOf(0, 1), 1}}));
}

TEST(MeshEdgeCounts, PassOverFacesWithIndicesOutside)
{
    EXPECT_TRUE(EdgeCountsOf(Points(3), {{0, 1, 3}, {-1, 0, 1}, {kLowestInt, kHighestInt, 0}}).empty());
}

TEST(MeshEdgeCounts, AreThoseOfTheFinishedLists)
{
    Mesh mesh = MakeMesh({{0, 0, 0}, {0.01f, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 2, 3}, {1, 2, 3}, {0, 1, 2}});
    EdgeCounts counts;
    mesh.PostProcess(true, true, false, false, nullptr, &counts);
    EXPECT_EQ(counts, (EdgeCounts{{EdgeOf(0, 1), 2}, {EdgeOf(1, 2), 2}, {EdgeOf(0, 2), 2}}));
}

TEST(MeshEdgeCounts, MatchTheOracle)
{
    std::mt19937 random(23);
    for (int round = 0; round < 1000; ++round) {
        const int vertexCount = RandomInt(random, 0, 8);
        const Faces faces = RandomFaces(random, RandomInt(random, 0, 30), -1, vertexCount);
        const Points vertices{std::size_t(vertexCount)};
        ASSERT_EQ(EdgeCountsOf(vertices, faces), OracleEdgeCounts(faces, vertices.size()));
    }
}
