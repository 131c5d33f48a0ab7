#include <cmath>

#include <gtest/gtest.h>

#include "tests/mesh/MeshBuilders.h"

namespace {

bool IsFinite(const Point& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

double SquaredDistance(const Point& a, const Point& b)
{
    const double x = double(a.x) - double(b.x), y = double(a.y) - double(b.y), z = double(a.z) - double(b.z);
    return x * x + y * y + z * z;
}

struct Merged {
    Points vertices;
    std::vector<int> numbers;
};

// Every vertex against every kept one, the earliest first.
template<class Joins>
Merged OracleMerge(const Points& all, Joins joins)
{
    Merged merged;
    for (const Point& point : all) {
        std::size_t number = 0;
        while (number < merged.vertices.size() && !(IsFinite(point) && IsFinite(merged.vertices[number]) &&
                                                    joins(point, merged.vertices[number])))
            ++number;
        if (number == merged.vertices.size())
            merged.vertices.push_back(point);
        merged.numbers.push_back(int(number));
    }
    return merged;
}

Faces Renumbered(Faces faces, const std::vector<int>& numbers)
{
    for (TriangleFace& face : faces)
        if (IsInList(face, numbers.size()))
            for (int& index : face.v)
                index = numbers[std::size_t(index)];
    return faces;
}

// As a NaN equals nothing, lists with one are compared number by number.
void ExpectEqualPoints(const Points& actual, const Points& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
        if (IsFinite(expected[i]))
            ASSERT_EQ(actual[i], expected[i]) << "vertex " << i;
        else
            ASSERT_FALSE(IsFinite(actual[i])) << "vertex " << i;
}

void ExpectMerge(const Mesh& mesh, const Merged& expected, const Faces& facesBefore)
{
    ExpectEqualPoints(*mesh.GetVerticesVecPtr(), expected.vertices);
    ASSERT_EQ(*mesh.GetFacesVecPtr(), Renumbered(facesBefore, expected.numbers));
    ASSERT_EQ(mesh.GetVertexNum(), int(expected.vertices.size()));
    ASSERT_EQ(mesh.GetFaceNum(), int(facesBefore.size()));
}

void MergeClose(Mesh& mesh)
{
    mesh.PostProcess(true, false, false, false, nullptr, nullptr);
}

Points MergedClose(const Points& vertices, float distance)
{
    Mesh mesh = MakeMesh(vertices, {}, distance);
    MergeClose(mesh);
    return *mesh.GetVerticesVecPtr();
}

Points MergedEqual(const Points& vertices)
{
    Mesh mesh = MakeMesh(vertices, {});
    mesh.PostProcessMergeRawVertexBuffer();
    return *mesh.GetVerticesVecPtr();
}

} // namespace

TEST(MeshMergeEqual, NumbersVerticesAsFirstMet)
{
    Mesh mesh = MakeMesh({{5, 0, 0}, {1, 0, 0}, {5, 0, 0}, {0, 1, 0}, {1, 0, 0}}, {{2, 4, 3}, {0, 1, 3}});
    mesh.PostProcessMergeRawVertexBuffer();
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (Points{{5, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(*mesh.GetFacesVecPtr(), (Faces{{0, 1, 2}, {0, 1, 2}}));
    ExpectCountsMatchLists(mesh, 3, 2);
}

TEST(MeshMergeEqual, JoinsTheRawTrianglesOfACube)
{
    Mesh mesh(0.03f);
    for (const TriangleFace& face : CubeFaces()) {
        const int first = int(mesh.GetVerticesVecPtr()->size());
        for (const int corner : face.v)
            mesh.GetVerticesVecPtr()->push_back(CubeCorners()[std::size_t(corner)]);
        mesh.GetFacesVecPtr()->emplace_back(first, first + 1, first + 2);
    }
    mesh.PostProcessMergeRawVertexBuffer();
    ExpectCountsMatchLists(mesh, 8, 12);
    EXPECT_EQ(mesh.CalcuateVolume(), 1);
}

TEST(MeshMergeEqual, TakesMinusZeroForZeroAndKeepsTheFirst)
{
    const Points merged = MergedEqual({{-0.0f, 0, 1}, {0, -0.0f, 1}});
    ASSERT_EQ(merged.size(), 1u);
    EXPECT_TRUE(std::signbit(merged[0].x));
    EXPECT_FALSE(std::signbit(merged[0].y));
}

TEST(MeshMergeEqual, LeavesVerticesThatAreNotFiniteApart)
{
    for (const float bad : {kNaN, kInfinity, -kInfinity})
        EXPECT_EQ(MergedEqual({{bad, 0, 0}, {bad, 0, 0}, {0, bad, 0}, {0, bad, 0}, {0, 0, bad}, {0, 0, bad}})
                      .size(),
                  6u);
}

TEST(MeshMergeEqual, LeavesTheNearestNumbersApart)
{
    const float next = std::nextafter(1.0f, 2.0f);
    EXPECT_EQ(MergedEqual({{1, 0, 0}, {next, 0, 0}, {1, std::numeric_limits<float>::denorm_min(), 0}}).size(),
              3u);
}

TEST(MeshMergeEqual, DropsNoFaceAndKeepsTextureFaces)
{
    Mesh mesh = MakeMesh({{0, 0, 0}, {0, 0, 0}, {1, 0, 0}}, {{0, 1, 2}, {0, 0, 0}});
    *mesh.GetTextureFacesVecPtr() = {{0, 1, 2}, {3, 4, 5}};
    mesh.PostProcessMergeRawVertexBuffer();
    EXPECT_EQ(*mesh.GetFacesVecPtr(), (Faces{{0, 0, 1}, {0, 0, 0}}));
    EXPECT_EQ(*mesh.GetTextureFacesVecPtr(), (Faces{{0, 1, 2}, {3, 4, 5}}));
}

TEST(MeshMergeEqual, KeepsVerticesThatNoFaceNames)
{
    EXPECT_EQ(MergedEqual({{1, 1, 1}, {2, 2, 2}, {1, 1, 1}}), (Points{{1, 1, 1}, {2, 2, 2}}));
}

TEST(MeshMergeEqual, LeavesFacesWithIndicesOutsideAlone)
{
    Mesh mesh = MakeMesh({{0, 0, 0}, {0, 0, 0}, {1, 0, 0}},
                         {{2, 1, 3}, {-1, -1, -1}, {0, 1, kHighestInt}, {kLowestInt, 1, 1}, {1, 1, 2}});
    mesh.PostProcessMergeRawVertexBuffer();
    EXPECT_EQ(*mesh.GetFacesVecPtr(),
              (Faces{{2, 1, 3}, {-1, -1, -1}, {0, 1, kHighestInt}, {kLowestInt, 1, 1}, {0, 0, 1}}));
}

TEST(MeshMergeEqual, OfAnEmptyMeshIsEmpty)
{
    Mesh mesh(0.03f);
    mesh.PostProcessMergeRawVertexBuffer();
    ExpectCountsMatchLists(mesh, 0, 0);
}

TEST(MeshMergeEqual, ProvidesNothing)
{
    Mesh mesh = Cube();
    mesh.PostProcess(false, false, true, true, nullptr, nullptr);
    mesh.PostProcessMergeRawVertexBuffer();
    EXPECT_TRUE(mesh.GetFaceNormals().empty());
    EXPECT_TRUE(mesh.GetVertexNormals().empty());
    EXPECT_TRUE(mesh.GetFaceNeighbours().empty());
}

TEST(MeshMergeEqual, MatchesTheOracle)
{
    std::mt19937 random(11);
    const float special[] = {-0.0f, kNaN, kInfinity, -kInfinity, std::numeric_limits<float>::max(), 1e-45f};
    for (int round = 0; round < 3000; ++round) {
        const int count = RandomInt(random, 0, 40);
        Points vertices = RandomPoints(random, count, RandomInt(random, 1, 4), 0.1f);
        for (Point& vertex : vertices)
            if (RandomInt(random, 0, 5) == 0)
                vertex.y = special[RandomInt(random, 0, 5)];
        const Faces faces = RandomFaces(random, 20, -1, count);
        Mesh mesh = MakeMesh(vertices, faces);
        mesh.PostProcessMergeRawVertexBuffer();
        ExpectMerge(mesh, OracleMerge(vertices, [](const Point& a, const Point& b) { return a == b; }),
                    faces);
    }
}

TEST(MeshMergeEqual, FindsEqualVerticesAmongVeryMany)
{
    // Each of 50000 vertices three times, the copies far apart in the list.
    Points vertices;
    for (int copy = 0; copy < 3; ++copy)
        for (int i = 0; i < 50000; ++i)
            vertices.emplace_back(float(i % 100), float(i / 100 % 100), float(i / 10000));
    const Points expected(vertices.begin(), vertices.begin() + 50000);
    EXPECT_EQ(MergedEqual(vertices), expected);
}

TEST(MeshMergeClose, JoinsVerticesWithinTheDistanceOfTheMesh)
{
    Mesh mesh = MakeMesh({{0, 0, 0}, {0.02f, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 2, 3}, {1, 2, 3}}, 0.03f);
    MergeClose(mesh);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (Points{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(*mesh.GetFacesVecPtr(), (Faces{{0, 1, 2}, {0, 1, 2}}));
    ExpectCountsMatchLists(mesh, 3, 2);
}

TEST(MeshMergeClose, TheDistanceItselfIsWithin)
{
    EXPECT_EQ(MergedClose({{0, 0, 0}, {0.5f, 0, 0}}, 0.5f).size(), 1u);
    EXPECT_EQ(MergedClose({{0, 0, 0}, {std::nextafter(0.5f, 1.0f), 0, 0}}, 0.5f).size(), 2u);
}

TEST(MeshMergeClose, MeasuresAlongTheStraightLine)
{
    EXPECT_EQ(MergedClose({{0, 0, 0}, {0.9f, 0.9f, 0}}, 1).size(), 2u);
    EXPECT_EQ(MergedClose({{0, 0, 0}, {0.7f, 0.7f, 0}}, 1).size(), 1u);
}

TEST(MeshMergeClose, RowOfNearVerticesDoesNotShrinkToOne)
{
    EXPECT_EQ(MergedClose({{0, 0, 0}, {0.8f, 0, 0}, {1.6f, 0, 0}, {2.4f, 0, 0}}, 1),
              (Points{{0, 0, 0}, {1.6f, 0, 0}}));
}

TEST(MeshMergeClose, JoinsTheEarliestKeptVertexNotTheNearest)
{
    Mesh mesh = MakeMesh({{0, 0, 0}, {1.5f, 0, 0}, {0.9f, 0, 0}}, {{0, 1, 2}}, 1);
    MergeClose(mesh);
    EXPECT_EQ(*mesh.GetFacesVecPtr(), (Faces{{0, 1, 0}}));
}

TEST(MeshMergeClose, DistanceThatIsNotPositiveMergesEqualVerticesAlone)
{
    for (const float distance : {0.0f, -1.0f, kNaN, -kInfinity})
        EXPECT_EQ(MergedClose({{0, 0, 0}, {1e-30f, 0, 0}, {0, 0, -0.0f}}, distance),
                  (Points{{0, 0, 0}, {1e-30f, 0, 0}}));
}

TEST(MeshMergeClose, InfiniteDistanceMergesAllFiniteVertices)
{
    const float largest = std::numeric_limits<float>::max();
    for (const float distance : {kInfinity, largest}) {
        const Points merged = MergedClose({{1, 2, 3}, {kNaN, 0, 0}, {1e38f, 0, 0}, {-1e38f, 0, 0}}, distance);
        EXPECT_EQ(merged.size(), 2u);
    }
    EXPECT_EQ(MergedClose({{largest, largest, largest}, {-largest, -largest, -largest}}, kInfinity).size(),
              1u);
}

TEST(MeshMergeClose, WorksWithFarVerticesAndSmallDistances)
{
    // The cell numbers lie beyond all integers.
    const float largest = std::numeric_limits<float>::max(),
                smallest = std::numeric_limits<float>::denorm_min();
    EXPECT_EQ(MergedClose({{largest, -largest, 0},
                           {largest, -largest, 0},
                           {largest, -largest, smallest},
                           {std::nextafter(largest, 0.0f), -largest, 0}},
                          smallest),
              (Points{{largest, -largest, 0}, {std::nextafter(largest, 0.0f), -largest, 0}}));
}

TEST(MeshMergeClose, VertexThatIsNotFiniteJoinsNone)
{
    EXPECT_EQ(
        MergedClose({{kNaN, 0, 0}, {0, 0, 0}, {kNaN, 0, 0}, {kInfinity, 0, 0}, {kInfinity, 0, 0}}, 1).size(),
        5u);
}

TEST(MeshMergeClose, CollapsedFacesStayUnlessTheyAreToBeDropped)
{
    const Points vertices = {{0, 0, 0}, {0.01f, 0, 0}, {1, 0, 0}};
    Mesh kept = MakeMesh(vertices, {{0, 1, 2}});
    kept.PostProcess(true, false, false, false, nullptr, nullptr);
    EXPECT_EQ(*kept.GetFacesVecPtr(), (Faces{{0, 0, 1}}));
    Mesh dropped = MakeMesh(vertices, {{0, 1, 2}});
    dropped.PostProcess(true, true, false, false, nullptr, nullptr);
    ExpectCountsMatchLists(dropped, 2, 0);
}

TEST(MeshMergeClose, MatchesTheOracle)
{
    std::mt19937 random(12);
    const float origins[] = {0, -0.05f, 1000, -123456, 3e37f};
    for (int round = 0; round < 3000; ++round) {
        const int count = RandomInt(random, 0, 60);
        const float distance = float(RandomInt(random, 1, 12)) * 0.01f;
        Points vertices = RandomPoints(random, count, RandomInt(random, 1, 12), 0.02f);
        const float origin = origins[RandomInt(random, 0, 4)];
        for (Point& vertex : vertices) {
            vertex += Point(origin, -origin, origin);
            if (RandomInt(random, 0, 20) == 0)
                vertex.z = RandomInt(random, 0, 1) ? kNaN : kInfinity;
        }
        const Faces faces = RandomFaces(random, 20, -1, count);
        Mesh mesh = MakeMesh(vertices, faces, distance);
        MergeClose(mesh);
        const double limit = double(distance) * double(distance);
        const auto joins = [=](const Point& a, const Point& b) { return SquaredDistance(a, b) <= limit; };
        ExpectMerge(mesh, OracleMerge(vertices, joins), faces);
    }
}

TEST(MeshMergeClose, MatchesTheOracleForCloudsOfAnyDensity)
{
    std::mt19937 random(13);
    for (int round = 0; round < 300; ++round) {
        std::uniform_real_distribution<float> coordinate(-1, 1);
        Points vertices;
        for (int i = 0; i < 150; ++i) {
            const float x = coordinate(random), y = coordinate(random);
            vertices.emplace_back(x, y, coordinate(random) * float(round % 3));
        }
        const float distance = std::pow(10.0f, float(RandomInt(random, -30, 5)) / 10);
        Mesh mesh = MakeMesh(vertices, {}, distance);
        MergeClose(mesh);
        const double limit = double(distance) * double(distance);
        const auto joins = [=](const Point& a, const Point& b) { return SquaredDistance(a, b) <= limit; };
        ExpectMerge(mesh, OracleMerge(vertices, joins), {});
    }
}
