#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "core/math/TriangleFace.h"
#include "core/math/Vector2D.h"
#include "core/math/Vector3D.h"
#include "core/math/Vector4D.h"

namespace {

template<class Value>
std::vector<unsigned char> BytesOf(const Value& value)
{
    std::vector<unsigned char> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

} // namespace

TEST(Vector3D, OfFloatsIsTwelveLittleEndianBytes)
{
    const std::vector<unsigned char> expected = {0x00, 0x00, 0x80, 0x3f,  // 1
                                                 0x00, 0x00, 0x00, 0xc0,  // -2
                                                 0x00, 0x00, 0x00, 0x3f}; // 0.5
    EXPECT_EQ(BytesOf(Vector3D<float>(1, -2, 0.5f)), expected);
}

TEST(Vector3D, RoundTripsThroughTwelveRawBytes)
{
    const Vector3D<float> source(1.5f, -3.25e20f, 1e-40f);
    Vector3D<float> copy;
    std::memcpy(&copy, BytesOf(source).data(), 12);
    EXPECT_EQ(copy, source);
}

TEST(Vector3D, ListIsAPackedArrayOfTriples)
{
    const std::vector<Vector3D<float>> points = {{1, 2, 3}, {4, 5, 6}};
    float numbers[6];
    std::memcpy(numbers, points.data(), sizeof numbers);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(numbers[i], float(i + 1));
}

TEST(Vector3D, StartsAtZero)
{
    EXPECT_EQ(Vector3D<float>(), Vector3D<float>(0, 0, 0));
    EXPECT_EQ(Vector3D<double>(), Vector3D<double>(0, 0, 0));
}

TEST(Vector3D, AddsComponentWise)
{
    Vector3D<float> sum(1, 2, 3);
    Vector3D<float>& result = sum += Vector3D<float>(10, 20, 30);
    EXPECT_EQ(sum, Vector3D<float>(11, 22, 33));
    EXPECT_EQ(&result, &sum);
    sum += sum;
    EXPECT_EQ(sum, Vector3D<float>(22, 44, 66));
}

TEST(Vector3D, EqualityIsThatOfNumbers)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Vector3D<float>(0, 0, 0), Vector3D<float>(-0.0f, 0, -0.0f));
    EXPECT_NE(Vector3D<float>(nan, 0, 0), Vector3D<float>(nan, 0, 0));
    EXPECT_NE(Vector3D<float>(1, 2, 3), Vector3D<float>(9, 2, 3));
    EXPECT_NE(Vector3D<float>(1, 2, 3), Vector3D<float>(1, 9, 3));
    EXPECT_NE(Vector3D<float>(1, 2, 3), Vector3D<float>(1, 2, 9));
}

TEST(Vector2D, HoldsItsTwoNumbersInOrder)
{
    const Vector2D<float> coordinate(0.25f, 0.75f);
    EXPECT_EQ(coordinate.x, 0.25f);
    EXPECT_EQ(coordinate.y, 0.75f);
    EXPECT_EQ(Vector2D<double>(), Vector2D<double>(0, 0));
    EXPECT_NE(coordinate, Vector2D<float>(0.25f, 0));
    EXPECT_NE(coordinate, Vector2D<float>(0, 0.75f));
}

TEST(Vector4D, HoldsItsFourNumbersInOrder)
{
    Vector4D<float> color;
    EXPECT_EQ(color, Vector4D<float>(0, 0, 0, 0));
    color = Vector4D<float>(1, 0.5f, 0.25f, 0.125f);
    float numbers[4];
    std::memcpy(numbers, &color, sizeof numbers);
    EXPECT_EQ(numbers[0], 1);
    EXPECT_EQ(numbers[1], 0.5f);
    EXPECT_EQ(numbers[2], 0.25f);
    EXPECT_EQ(numbers[3], 0.125f);
    EXPECT_NE(color, Vector4D<float>(0, 0.5f, 0.25f, 0.125f));
    EXPECT_NE(color, Vector4D<float>(1, 0, 0.25f, 0.125f));
    EXPECT_NE(color, Vector4D<float>(1, 0.5f, 0, 0.125f));
    EXPECT_NE(color, Vector4D<float>(1, 0.5f, 0.25f, 0));
}

TEST(TriangleFace, RoundTripsThroughTwelveRawBytes)
{
    const TriangleFace source(1, -1, 0x01020304);
    const std::vector<unsigned char> expected = {1, 0, 0, 0, 0xff, 0xff, 0xff, 0xff, 4, 3, 2, 1};
    EXPECT_EQ(BytesOf(source), expected);
    TriangleFace copy;
    std::memcpy(&copy, expected.data(), 12);
    EXPECT_EQ(copy, source);
}

TEST(TriangleFace, GivesItsCornersByNumber)
{
    TriangleFace face(4, 5, 6);
    face[1] = 9;
    EXPECT_EQ(face[0], 4);
    EXPECT_EQ(face[1], 9);
    EXPECT_EQ(face[2], 6);
    EXPECT_EQ(face.v[1], 9);
    EXPECT_EQ(TriangleFace(), TriangleFace(0, 0, 0));
}

TEST(TriangleFace, OrderOfCornersTellsFacesApart)
{
    EXPECT_NE(TriangleFace(1, 2, 3), TriangleFace(2, 3, 1));
    EXPECT_EQ(TriangleFace(1, 2, 3), TriangleFace(1, 2, 3));
}

TEST(TriangleFace, EachCornerTellsFacesApart)
{
    EXPECT_NE(TriangleFace(1, 2, 3), TriangleFace(9, 2, 3));
    EXPECT_NE(TriangleFace(1, 2, 3), TriangleFace(1, 9, 3));
    EXPECT_NE(TriangleFace(1, 2, 3), TriangleFace(1, 2, 9));
}
