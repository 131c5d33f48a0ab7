#include "core/math/MeshEigenEdgeInfo.h"

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Point = Eigen::Vector3f;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kTableSizes[] = {1, 2, 3, 7, 64, 1000, 65537, 2147483647};

MeshEigenEdgeInfo Exact(const Point& p, const Point& q)
{
    MeshEigenEdgeInfo info;
    info.init(&p, &q);
    return info;
}

struct Box {
    Point minimum{0, 0, 0};
    Point extents{100, 100, 100};
};

MeshEigenEdgeInfo Near(const Point& a, const Point& b, float tolerance, const Point& boxMin = {0, 0, 0})
{
    MeshEigenEdgeInfo info;
    Box box;
    box.minimum = boxMin;
    EXPECT_TRUE(info.update(a, b, box.minimum, tolerance));
    return info;
}

bool TakesPart(const Point& a, const Point& b, const Point& boxMin, float tolerance)
{
    MeshEigenEdgeInfo info;
    return info.update(a, b, boxMin, tolerance);
}

void ExpectSame(const MeshEigenEdgeInfo& a, const MeshEigenEdgeInfo& b)
{
    EXPECT_TRUE(a.isSameEdge(b));
    EXPECT_TRUE(b.isSameEdge(a));
    for (const int size : kTableSizes)
        EXPECT_EQ(a.getHashValue(size), b.getHashValue(size)) << size;
}

void ExpectDifferent(const MeshEigenEdgeInfo& a, const MeshEigenEdgeInfo& b)
{
    EXPECT_FALSE(a.isSameEdge(b));
    EXPECT_FALSE(b.isSameEdge(a));
}

} // namespace

TEST(MeshEigenEdgeInfo, BelongsToNoFacetAtFirst)
{
    EXPECT_EQ(MeshEigenEdgeInfo().facet, -1);
    EXPECT_EQ(MeshEigenEdgeInfo().edge, -1);
}

TEST(MeshEigenEdgeInfo, EqualEndsAreTheSameEdgeInBothDirections)
{
    const MeshEigenEdgeInfo forward = Exact({1, 2, 3}, {4, 5, 6}), backward = Exact({4, 5, 6}, {1, 2, 3});
    ExpectSame(forward, forward);
    ExpectSame(forward, backward);
    EXPECT_TRUE(forward.isOppositeEdge(backward));
    EXPECT_FALSE(forward.isOppositeEdge(forward));
}

TEST(MeshEigenEdgeInfo, OneDifferentCoordinateMakesAnotherEdge)
{
    const Point p(1, 2, 3), q(4, 5, 6);
    for (int axis = 0; axis < 3; ++axis) {
        Point moved = q;
        moved[axis] = std::nextafter(moved[axis], 100.0f);
        ExpectDifferent(Exact(p, q), Exact(p, moved));
        ExpectDifferent(Exact(p, q), Exact(moved, p));
    }
}

TEST(MeshEigenEdgeInfo, EdgesThatShareOneEndDiffer)
{
    ExpectDifferent(Exact({0, 0, 0}, {1, 0, 0}), Exact({0, 0, 0}, {0, 1, 0}));
    ExpectDifferent(Exact({0, 0, 0}, {1, 0, 0}), Exact({0, 0, 0}, {0, 0, 0}));
}

TEST(MeshEigenEdgeInfo, MinusZeroEqualsZero)
{
    ExpectSame(Exact({-0.0f, 0, 5}, {1, -0.0f, -0.0f}), Exact({0, -0.0f, 5}, {1, 0, 0}));
}

TEST(MeshEigenEdgeInfo, EndThatIsNotFiniteEqualsNothing)
{
    for (const float bad : {kNaN, kInfinity, -kInfinity})
        for (int axis = 0; axis < 3; ++axis) {
            Point end(1, 2, 3);
            end[axis] = bad;
            const MeshEigenEdgeInfo info = Exact(end, {4, 5, 6});
            ExpectDifferent(info, info);
            ExpectDifferent(info, Exact({4, 5, 6}, end));
            EXPECT_FALSE(info.isOppositeEdge(info));
        }
}

TEST(MeshEigenEdgeInfo, ReadsTheCornersAtOnce)
{
    Point p(1, 2, 3), q(4, 5, 6);
    MeshEigenEdgeInfo info;
    info.init(&p, &q);
    p = q = Point(0, 0, 0);
    ExpectSame(info, Exact({1, 2, 3}, {4, 5, 6}));
}

TEST(MeshEigenEdgeInfo, HashLiesInTheTable)
{
    std::mt19937 random(4);
    std::uniform_real_distribution<float> coordinate(-1e6f, 1e6f);
    for (int round = 0; round < 2000; ++round) {
        const Point p(coordinate(random), coordinate(random), coordinate(random));
        const MeshEigenEdgeInfo info = Exact(p, round % 10 ? Point(p * 2) : Point(kNaN, kInfinity, 0));
        for (const int size : kTableSizes) {
            EXPECT_GE(info.getHashValue(size), 0);
            EXPECT_LT(info.getHashValue(size), size);
        }
    }
}

TEST(MeshEigenEdgeInfo, HashSpreadsTheEdgesOfAGrid)
{
    // 3 * 20^3 edges in as many buckets: about 63 of 100 buckets are hit by an even spread.
    const int tableSize = 24000;
    std::set<int> buckets;
    for (int i = 0; i < 8000; ++i) {
        const Point p(float(i % 20), float(i / 20 % 20), float(i / 400));
        for (int axis = 0; axis < 3; ++axis)
            buckets.insert(Exact(p, p + Point::Unit(axis)).getHashValue(tableSize));
    }
    EXPECT_GT(buckets.size(), 14000u);
}

TEST(MeshEigenEdgeInfo, NearEndsAreTheSameEdgeInBothDirections)
{
    const float tolerance = 0.1f;
    const MeshEigenEdgeInfo info = Near({1.0f, 2.0f, 3.0f}, {4, 5, 6}, tolerance);
    ExpectSame(info, Near({1.04f, 1.96f, 3.04f}, {3.96f, 5.04f, 5.96f}, tolerance));
    ExpectSame(info, Near({3.96f, 5.04f, 5.96f}, {1.04f, 1.96f, 3.04f}, tolerance));
    EXPECT_TRUE(info.isOppositeEdge(Near({3.96f, 5.04f, 5.96f}, {1.04f, 1.96f, 3.04f}, tolerance)));
    ExpectDifferent(info, Near({1.06f, 2.0f, 3.0f}, {4, 5, 6}, tolerance));
}

TEST(MeshEigenEdgeInfo, CellsAreCountedFromTheBoxToTheNearestMultiple)
{
    // Cells of size 1 from -10.25: -0.75..0.25 is cell 10, 0.25..1.25 cell 11.
    const Point boxMin(-10.25f, 0, 0), far(50, 0, 0);
    const MeshEigenEdgeInfo info = Near({0.2f, 0, 0}, far, 1, boxMin);
    ExpectSame(info, Near({-0.7f, 0, 0}, far, 1, boxMin));
    ExpectDifferent(info, Near({0.3f, 0, 0}, far, 1, boxMin));
    ExpectDifferent(info, Near({-0.8f, 0, 0}, far, 1, boxMin));
}

TEST(MeshEigenEdgeInfo, CornersThatJitterAroundTheBoxMinimumShareACell)
{
    const Point far(5, 5, 5);
    ExpectSame(Near({0, -0.001f, -0.002f}, far, 0.01f, {-0.004f, -0.004f, -0.004f}),
               Near({-0.004f, -0.004f, -0.004f}, far, 0.01f, {-0.004f, -0.004f, -0.004f}));
}

TEST(MeshEigenEdgeInfo, EdgeWithinOneCellTakesNoPart)
{
    MeshEigenEdgeInfo info;
    const Box box;
    EXPECT_FALSE(info.update({1, 1, 1}, {1.2f, 1.2f, 0.8f}, box.minimum, 1));
    ExpectDifferent(info, info);
    EXPECT_TRUE(TakesPart({1, 1, 1}, {1.2f, 1.2f, 0.8f}, box.minimum, 0.01f));
}

TEST(MeshEigenEdgeInfo, EdgeThatIsNotFiniteTakesNoPart)
{
    for (const float bad : {kNaN, kInfinity, -kInfinity})
        for (int axis = 0; axis < 3; ++axis) {
            Point point(1, 2, 3);
            point[axis] = bad;
            EXPECT_FALSE(TakesPart(point, {4, 5, 6}, {0, 0, 0}, 1));
            EXPECT_FALSE(TakesPart({4, 5, 6}, point, {0, 0, 0}, 1));
            EXPECT_FALSE(TakesPart({1, 2, 3}, {4, 5, 6}, point, 1));
        }
}

TEST(MeshEigenEdgeInfo, ToleranceThatIsNoPositiveNumberMatchesNothing)
{
    for (const float tolerance : {0.0f, -0.0f, -1.0f, kNaN, kInfinity, -kInfinity}) {
        MeshEigenEdgeInfo info = Exact({1, 2, 3}, {4, 5, 6});
        const Point boxMin(0, 0, 0);
        EXPECT_FALSE(info.update({1, 2, 3}, {4, 5, 6}, boxMin, tolerance));
        ExpectDifferent(info, info);
    }
}

TEST(MeshEigenEdgeInfo, CellNumbersMayExceedEveryInteger)
{
    const float smallest = std::numeric_limits<float>::denorm_min(),
                largest = std::numeric_limits<float>::max();
    const Point p(largest, -largest, 0), q(-largest, largest, largest);
    ExpectSame(Near(p, q, smallest, {-largest, -largest, -largest}),
               Near(q, p, smallest, {-largest, -largest, -largest}));
    ExpectDifferent(Near(p, q, smallest), Near(p, {-largest, largest, 0}, smallest));
}

TEST(MeshEigenEdgeInfo, SameEdgesHashAlikeAndMatchTheOracle)
{
    // Few coordinates, so that equal edges are common.
    std::mt19937 random(5);
    const auto point = [&] {
        const auto coordinate = [&] { return float(int(random() % 3) - 1) * 0.5f; };
        const float x = coordinate(), y = coordinate(), z = coordinate();
        return Point(x, y, z);
    };
    int sameCount = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::array<Point, 4> p = {point(), point(), round % 2 ? Point(0, 0, 0) : point(),
                                        round % 2 ? Point(0, 0, 0) : point()};
        const std::array<Point, 4> ends = {p[0], p[1], round % 2 ? p[1] : p[2], round % 2 ? p[0] : p[3]};
        const MeshEigenEdgeInfo a = Exact(ends[0], ends[1]), b = Exact(ends[2], ends[3]);
        const bool isSame =
            (ends[0] == ends[2] && ends[1] == ends[3]) || (ends[0] == ends[3] && ends[1] == ends[2]);
        ASSERT_EQ(a.isSameEdge(b), isSame);
        if (!isSame)
            continue;
        ++sameCount;
        for (const int size : kTableSizes)
            ASSERT_EQ(a.getHashValue(size), b.getHashValue(size));
    }
    EXPECT_GE(sameCount, 10000);
}

TEST(MeshEigenEdgeInfo, NearEdgesHashAlikeAndMatchTheOracle)
{
    std::mt19937 random(6);
    std::uniform_real_distribution<float> coordinate(-2, 2);
    const Point boxMin(-2, -2, -2);
    const float tolerance = 1.5f;
    const auto point = [&] {
        const float x = coordinate(random), y = coordinate(random), z = coordinate(random);
        return Point(x, y, z);
    };
    const auto cell = [&](const Point& p) {
        std::array<long, 3> numbers;
        for (int axis = 0; axis < 3; ++axis)
            numbers[std::size_t(axis)] = std::lround((double(p[axis]) + 2) / double(tolerance));
        return numbers;
    };
    int sameCount = 0;
    for (int round = 0; round < 20000; ++round) {
        const Point a = point(), b = point(), c = point(), d = point();
        MeshEigenEdgeInfo first, second;
        const bool firstTakesPart = first.update(a, b, boxMin, tolerance);
        const bool secondTakesPart = second.update(c, d, boxMin, tolerance);
        ASSERT_EQ(firstTakesPart, cell(a) != cell(b));
        const bool isSame =
            firstTakesPart && secondTakesPart &&
            ((cell(a) == cell(c) && cell(b) == cell(d)) || (cell(a) == cell(d) && cell(b) == cell(c)));
        ASSERT_EQ(first.isSameEdge(second), isSame);
        if (!isSame)
            continue;
        ++sameCount;
        for (const int size : kTableSizes)
            ASSERT_EQ(first.getHashValue(size), second.getHashValue(size));
    }
    EXPECT_GT(sameCount, 10);
}
