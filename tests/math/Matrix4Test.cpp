#include "core/math/Matrix4.h"

#include <random>

#include <gtest/gtest.h>

namespace {

using Matrix = Matrix4<double>;

Matrix Counting()
{
    Matrix matrix;
    for (int i = 0; i < 16; ++i)
        matrix.m[i] = i;
    return matrix;
}

Matrix Translation(double x, double y, double z)
{
    Matrix matrix;
    matrix.set(0, 3, x);
    matrix.set(1, 3, y);
    matrix.set(2, 3, z);
    return matrix;
}

Matrix Scaling(double factor)
{
    Matrix matrix;
    for (int axis = 0; axis < 3; ++axis)
        matrix.set(axis, axis, factor);
    return matrix;
}

void ExpectEqual(const Matrix& a, const Matrix& b)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(a.m[i], b.m[i]) << "element " << i;
}

// Small whole numbers, so that every product is exact.
Matrix RandomMatrix(std::mt19937& random)
{
    Matrix matrix;
    for (double& element : matrix.m)
        element = std::uniform_int_distribution<int>(-9, 9)(random);
    return matrix;
}

} // namespace

TEST(Matrix4, StartsAsIdentity)
{
    const Matrix identity;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(identity.get(row, column), row == column ? 1 : 0);
}

TEST(Matrix4, StoresElementsRowByRow)
{
    const Matrix matrix = Counting();
    EXPECT_EQ(matrix.get(0, 3), 3);
    EXPECT_EQ(matrix.get(3, 0), 12);
    Matrix written;
    written.set(2, 1, 42);
    EXPECT_EQ(written.m[9], 42);
}

TEST(Matrix4, KeepsTheTranslationInElementsThreeSevenAndEleven)
{
    const Matrix matrix = Translation(10, 20, 30);
    EXPECT_EQ(matrix.m[3], 10);
    EXPECT_EQ(matrix.m[7], 20);
    EXPECT_EQ(matrix.m[11], 30);
    EXPECT_EQ(matrix.m[15], 1);
}

TEST(Matrix4, GivesZeroOutside)
{
    const Matrix matrix = Counting();
    for (const int outside : {-1, 4, 1000000, -2147483647 - 1, 2147483647}) {
        EXPECT_EQ(matrix.get(outside, 1), 0);
        EXPECT_EQ(matrix.get(1, outside), 0);
    }
}

TEST(Matrix4, IgnoresWritesOutside)
{
    Matrix matrix = Counting();
    for (const int outside : {-1, 4, -2147483647 - 1, 2147483647}) {
        matrix.set(outside, 1, 99);
        matrix.set(1, outside, 99);
    }
    ExpectEqual(matrix, Counting());
}

TEST(Matrix4, ProductHasRowsOfTheLeftAndColumnsOfTheRight)
{
    const Matrix product = Counting() * Counting();
    EXPECT_EQ(product.get(0, 0), 0 * 0 + 1 * 4 + 2 * 8 + 3 * 12);
    EXPECT_EQ(product.get(1, 2), 4 * 2 + 5 * 6 + 6 * 10 + 7 * 14);
    EXPECT_EQ(product.get(3, 3), 12 * 3 + 13 * 7 + 14 * 11 + 15 * 15);
}

TEST(Matrix4, ProductAppliesTheRightMatrixFirst)
{
    // Moved by 1, then doubled: by 2. Doubled, then moved: by 1.
    EXPECT_EQ((Scaling(2) * Translation(1, 0, 0)).get(0, 3), 2);
    EXPECT_EQ((Translation(1, 0, 0) * Scaling(2)).get(0, 3), 1);
}

TEST(Matrix4, ProductLeavesItsFactors)
{
    const Matrix left = Counting(), right = Translation(1, 2, 3);
    const Matrix product = left * right;
    ExpectEqual(left, Counting());
    ExpectEqual(right, Translation(1, 2, 3));
    EXPECT_EQ(product.get(0, 3), 0 * 1 + 1 * 2 + 2 * 3 + 3);
}

TEST(Matrix4, CanBeAssignedItsOwnProduct)
{
    Matrix matrix = Counting();
    matrix = matrix * matrix;
    ExpectEqual(matrix, Counting() * Counting());
}

TEST(Matrix4, ProductIsAssociativeWithIdentityAsNeutralElement)
{
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        const Matrix a = RandomMatrix(random), b = RandomMatrix(random), c = RandomMatrix(random);
        ExpectEqual((a * b) * c, a * (b * c));
        ExpectEqual(a * Matrix(), a);
        ExpectEqual(Matrix() * a, a);
    }
}
