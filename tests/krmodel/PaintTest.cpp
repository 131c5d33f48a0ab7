#include "apps/krmodel/Paint.h"

#include <limits>

#include <gtest/gtest.h>

#include <QImage>

namespace {

using krmodel::Colour;
using krmodel::Paint;

/// Two texels side by side in each of two rows; (0, 0) lies in the lower left one.
MeshMaterialInfo FourTexels(QRgb lowerLeft, QRgb lowerRight, QRgb upperLeft, QRgb upperRight)
{
    QImage image(2, 2, QImage::Format_RGB32);
    image.setPixel(0, 1, lowerLeft);
    image.setPixel(1, 1, lowerRight);
    image.setPixel(0, 0, upperLeft);
    image.setPixel(1, 0, upperRight);
    MeshMaterialInfo material;
    EXPECT_TRUE(material.diffuseTexture.load(image, false, false, false, 0));
    return material;
}

constexpr QRgb kRed = 0xFFFF0000, kGreen = 0xFF00FF00, kBlue = 0xFF0000FF, kWhite = 0xFFFFFFFF;

TEST(Paint, WithoutColourAndTextureIsTheProgramsOwn)
{
    EXPECT_FALSE(Paint().HasTexture());
    EXPECT_TRUE(Paint(MeshMaterialInfo()).GetColour().isApprox(Paint().GetColour()));
}

TEST(Paint, TakesTheDiffuseColourAsItLooksOnAScreen)
{
    MeshMaterialInfo material;
    material.setDiffuse({1, 0.5F, 0});
    const Colour colour = Paint(material).GetColour();
    EXPECT_EQ(colour.x(), 1);
    EXPECT_NEAR(colour.y(), 0.2140F, 0.0001F);
    EXPECT_EQ(colour.z(), 0);
}

TEST(Paint, BringsAnyNumberIntoTheRangeOfColours)
{
    MeshMaterialInfo material;
    material.setDiffuse({1e30F, -5, std::numeric_limits<float>::quiet_NaN()});
    EXPECT_TRUE(Paint(material).GetColour().isApprox(Colour(1, 0, 0)));
}

TEST(Paint, PutsTheTexturesLowerLeftCornerAtZero)
{
    const Paint paint(FourTexels(kRed, kGreen, kBlue, kWhite));
    ASSERT_TRUE(paint.HasTexture());
    EXPECT_TRUE(paint.At(0.25F, 0.25F).isApprox(Colour(1, 0, 0)));
    EXPECT_TRUE(paint.At(0.75F, 0.25F).isApprox(Colour(0, 1, 0)));
    EXPECT_TRUE(paint.At(0.25F, 0.75F).isApprox(Colour(0, 0, 1)));
    EXPECT_TRUE(paint.At(0.75F, 0.75F).isApprox(Colour(1, 1, 1)));
}

TEST(Paint, MixesTexelsBetweenTheirMiddlesAndRepeats)
{
    const Paint paint(FourTexels(kRed, kGreen, kRed, kGreen));
    const Colour mixed(0.5F, 0.5F, 0);
    EXPECT_TRUE(paint.At(0.5F, 0.25F).isApprox(mixed));
    EXPECT_TRUE(paint.At(0, 0.25F).isApprox(mixed));
    EXPECT_TRUE(paint.At(-2.75F, 7.5F).isApprox(Colour(1, 0, 0)));
}

TEST(Paint, MultipliesTextureAndDiffuseColour)
{
    MeshMaterialInfo material = FourTexels(kWhite, kWhite, kWhite, kWhite);
    material.setDiffuse({0, 1, 0});
    EXPECT_TRUE(Paint(material).At(0.3F, 0.3F).isApprox(Colour(0, 1, 0)));
}

TEST(Paint, StaysInTheTextureWhateverTheCoordinates)
{
    const Paint paint(FourTexels(kWhite, kWhite, kWhite, kWhite));
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();
    for (const float u : {1e-30F, -1e-30F, 3e38F, -3e38F, 0.99999994F, kInfinity, -kInfinity, kNotANumber})
        EXPECT_TRUE(paint.At(u, u).isApprox(Colour(1, 1, 1))) << u;
}

} // namespace
