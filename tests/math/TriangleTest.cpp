#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "core/math/EigenVecFunc3f.h"
#include "core/math/Vector3D.h"

namespace {

using Point = Vector3D<float>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
const Point kNoNormal(0, 0, 0);

Point NormalOf(const Point& a, const Point& b, const Point& c)
{
    Point normal(9, 9, 9);
    Point::CalcNormal(a, b, c, normal);
    return normal;
}

EigenVecFunc3f::Corners CornersOf(const Point& a, const Point& b, const Point& c)
{
    return {EigenVecFunc3f::VectorToEigen(a), EigenVecFunc3f::VectorToEigen(b),
            EigenVecFunc3f::VectorToEigen(c)};
}

Point RandomPoint(std::mt19937& random, float range)
{
    std::uniform_real_distribution<float> coordinate(-range, range);
    const float x = coordinate(random), y = coordinate(random), z = coordinate(random);
    return {x, y, z};
}

double Dot(const Point& normal, const Point& from, const Point& to)
{
    return double(normal.x) * (double(to.x) - double(from.x)) +
           double(normal.y) * (double(to.y) - double(from.y)) +
           double(normal.z) * (double(to.z) - double(from.z));
}

double LengthOf(const Point& vector)
{
    return std::sqrt(double(vector.x) * double(vector.x) + double(vector.y) * double(vector.y) +
                     double(vector.z) * double(vector.z));
}

} // namespace

TEST(CalcNormal, IsRightHandedInCornerOrder)
{
    EXPECT_EQ(NormalOf({0, 0, 0}, {1, 0, 0}, {0, 1, 0}), Point(0, 0, 1));
    EXPECT_EQ(NormalOf({0, 0, 0}, {0, 1, 0}, {1, 0, 0}), Point(0, 0, -1));
    EXPECT_EQ(NormalOf({0, 0, 0}, {0, 1, 0}, {0, 0, 1}), Point(1, 0, 0));
    EXPECT_EQ(NormalOf({0, 0, 0}, {0, 0, 1}, {1, 0, 0}), Point(0, 1, 0));
}

TEST(CalcNormal, DoesNotDependOnTheFirstCorner)
{
    EXPECT_EQ(NormalOf({5, 5, 7}, {9, 5, 7}, {5, 8, 7}), Point(0, 0, 1));
    EXPECT_EQ(NormalOf({9, 5, 7}, {5, 8, 7}, {5, 5, 7}), Point(0, 0, 1));
}

TEST(CalcNormal, MayWriteIntoACorner)
{
    Point a(0, 0, 0);
    Point::CalcNormal(a, {2, 0, 0}, {0, 2, 0}, a);
    EXPECT_EQ(a, Point(0, 0, 1));
}

TEST(CalcNormal, TriangleWithoutAreaHasNone)
{
    EXPECT_EQ(NormalOf({1, 2, 3}, {1, 2, 3}, {1, 2, 3}), kNoNormal);
    EXPECT_EQ(NormalOf({1, 2, 3}, {1, 2, 3}, {4, 5, 6}), kNoNormal);
    EXPECT_EQ(NormalOf({1, 2, 3}, {4, 5, 6}, {4, 5, 6}), kNoNormal);
    EXPECT_EQ(NormalOf({0, 0, 0}, {1, 1, 1}, {2, 2, 2}), kNoNormal);
}

TEST(CalcNormal, TinyTrianglesHaveOne)
{
    for (const float size : {1e-10f, 1e-20f, 1e-37f, std::numeric_limits<float>::denorm_min()})
        EXPECT_EQ(NormalOf({0, 0, 0}, {size, 0, 0}, {0, size, 0}), Point(0, 0, 1)) << size;
}

TEST(CalcNormal, HugeTrianglesHaveOne)
{
    const float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(NormalOf({0, 0, 0}, {1e38f, 0, 0}, {0, 1e38f, 0}), Point(0, 0, 1));
    EXPECT_EQ(NormalOf({-largest, -largest, 0}, {largest, -largest, 0}, {-largest, largest, 0}),
              Point(0, 0, 1));
}

TEST(CalcNormal, ThinTriangleFarFromTheOriginHasOne)
{
    // In float arithmetic the products would cancel to noise.
    const Point normal = NormalOf({8388608, 8388608, 0}, {8388609, 8388608, 0}, {8388608, 8388609, 1});
    EXPECT_NEAR(double(normal.x), 0, 1e-7);
    EXPECT_NEAR(double(normal.y), -std::sqrt(0.5), 1e-7);
    EXPECT_NEAR(double(normal.z), std::sqrt(0.5), 1e-7);
}

TEST(CalcNormal, CornerThatIsNotFiniteGivesNone)
{
    for (const float bad : {kNaN, kInfinity, -kInfinity})
        for (int axis = 0; axis < 3; ++axis) {
            Point corner(1, 2, 4);
            (axis == 0 ? corner.x : axis == 1 ? corner.y : corner.z) = bad;
            EXPECT_EQ(NormalOf(corner, {1, 0, 0}, {0, 1, 0}), kNoNormal);
            EXPECT_EQ(NormalOf({1, 0, 0}, corner, {0, 1, 0}), kNoNormal);
            EXPECT_EQ(NormalOf({1, 0, 0}, {0, 1, 0}, corner), kNoNormal);
        }
}

TEST(CalcNormal, IsAUnitVectorAtRightAnglesToTheTriangle)
{
    std::mt19937 random(2);
    for (int round = 0; round < 2000; ++round) {
        const float range = std::pow(10.0f, float(round % 61 - 30));
        const Point a = RandomPoint(random, range), b = RandomPoint(random, range),
                    c = RandomPoint(random, range);
        const Point normal = NormalOf(a, b, c);
        EXPECT_NEAR(LengthOf(normal), 1, 1e-6);
        EXPECT_NEAR(Dot(normal, a, b) / double(range), 0, 1e-6);
        EXPECT_NEAR(Dot(normal, a, c) / double(range), 0, 1e-6);
    }
}

TEST(EigenVecFunc3f, ConvertsPointsBitForBit)
{
    const Point point(1.5f, -0.0f, 1e-45f);
    const Eigen::Vector3f eigen = EigenVecFunc3f::VectorToEigen(point);
    EXPECT_EQ(eigen.x(), point.x);
    EXPECT_TRUE(std::signbit(eigen.y()));
    EXPECT_EQ(eigen.z(), point.z);
    const Point back = EigenVecFunc3f::EigenToVector(eigen);
    EXPECT_EQ(back, point);
    EXPECT_TRUE(std::signbit(back.y));
    EXPECT_TRUE(std::isnan(EigenVecFunc3f::VectorToEigen({kNaN, 0, 0}).x()));
}

TEST(EigenVecFunc3f, NormalIsThatOfCalcNormal)
{
    std::mt19937 random(3);
    for (int round = 0; round < 500; ++round) {
        const Point a = RandomPoint(random, 10), b = RandomPoint(random, 10), c = RandomPoint(random, 10);
        const Eigen::Vector3f normal = EigenVecFunc3f::EigenVecNormal(CornersOf(a, b, c));
        EXPECT_EQ(EigenVecFunc3f::EigenToVector(normal), NormalOf(a, b, c));
    }
    EXPECT_EQ(EigenVecFunc3f::EigenVecNormal(CornersOf({0, 0, 0}, {1, 0, 0}, {0, 1, 0})),
              Eigen::Vector3f(0, 0, 1));
    EXPECT_EQ(EigenVecFunc3f::EigenVecNormal(CornersOf({0, 0, 0}, {1, 1, 1}, {2, 2, 2})),
              Eigen::Vector3f(0, 0, 0));
}

TEST(EigenVecFunc3f, NormalizesInPlace)
{
    Eigen::Vector3f vector(3, 0, -4);
    EigenVecFunc3f::EigenVecNormalize(vector);
    EXPECT_EQ(vector, Eigen::Vector3f(0.6f, 0, -0.8f));
}

TEST(EigenVecFunc3f, NormalizesVectorsOfAnyFiniteLength)
{
    for (const float size : {1e-45f, 1e-30f, 1e30f, std::numeric_limits<float>::max()}) {
        Eigen::Vector3f vector(0, size, 0);
        EigenVecFunc3f::EigenVecNormalize(vector);
        EXPECT_EQ(vector, Eigen::Vector3f(0, 1, 0)) << size;
    }
}

TEST(EigenVecFunc3f, VectorWithoutDirectionBecomesZero)
{
    const Eigen::Vector3f vectors[] = {{0, 0, 0}, {kNaN, 1, 1}, {1, kInfinity, 1}, {1, 1, -kInfinity}};
    for (Eigen::Vector3f vector : vectors) {
        EigenVecFunc3f::EigenVecNormalize(vector);
        EXPECT_EQ(vector, Eigen::Vector3f(0, 0, 0));
    }
}

TEST(EigenVecFunc3f, AreaIsHalfOfBaseTimesHeight)
{
    EXPECT_EQ(EigenVecFunc3f::CalcFaceArea(CornersOf({0, 0, 0}, {4, 0, 0}, {0, 3, 0})), 6.0f);
    EXPECT_EQ(EigenVecFunc3f::CalcFaceArea(CornersOf({0, 0, 0}, {0, 3, 0}, {4, 0, 0})), 6.0f);
    EXPECT_EQ(EigenVecFunc3f::CalcFaceArea(CornersOf({7, 7, 7}, {7, 7, 9}, {7, 8, 7})), 1.0f);
}

TEST(EigenVecFunc3f, AreaOfADegenerateTriangleIsZero)
{
    EXPECT_EQ(EigenVecFunc3f::CalcFaceArea(CornersOf({1, 2, 3}, {1, 2, 3}, {4, 5, 6})), 0.0f);
    EXPECT_EQ(EigenVecFunc3f::CalcFaceArea(CornersOf({0, 0, 0}, {1, 1, 1}, {3, 3, 3})), 0.0f);
}

TEST(EigenVecFunc3f, AreaKeepsSmallTriangles)
{
    // The squares of the edge products lie below the range of a float.
    const float area = EigenVecFunc3f::CalcFaceArea(CornersOf({0, 0, 0}, {2e-18f, 0, 0}, {0, 1e-18f, 0}));
    EXPECT_FLOAT_EQ(area, 1e-36f);
}

TEST(EigenVecFunc3f, AreaIsNotFiniteWhenACornerIsNot)
{
    EXPECT_FALSE(std::isfinite(EigenVecFunc3f::CalcFaceArea(CornersOf({kNaN, 0, 0}, {1, 0, 0}, {0, 1, 0}))));
    EXPECT_FALSE(
        std::isfinite(EigenVecFunc3f::CalcFaceArea(CornersOf({0, 0, 0}, {kInfinity, 0, 0}, {0, 1, 0}))));
}
