#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "core/mesh/MeshMaterialInfo.h"
#include "core/mesh/MeshMaterialMatrix.h"
#include "core/mesh/MeshMaterialParameters.h"
#include "core/mesh/MeshTextureGroup.h"
#include "core/mesh/MeshTextureInfo.h"

namespace {

using Color = Vector3D<float>;
using Place = Vector3D<double>;

MeshMaterialMatrix Mapping(const Place& translation, const Place& rotation, const Place& repeat)
{
    MeshMaterialMatrix mapping;
    mapping.translation = translation;
    mapping.rotation = rotation;
    mapping.repeat = repeat;
    mapping.updateMatrix();
    return mapping;
}

Place Mapped(const MeshMaterialMatrix& mapping, const Place& p)
{
    const Matrix4<double>& m = mapping.matrix;
    const auto row = [&](int r) {
        return m.get(r, 0) * p.x + m.get(r, 1) * p.y + m.get(r, 2) * p.z + m.get(r, 3);
    };
    return {row(0), row(1), row(2)};
}

// Turns (x, y) counter-clockwise.
void Turn(double& x, double& y, double degrees)
{
    const double angle = degrees * 3.14159265358979323846 / 180;
    const double turnedX = x * std::cos(angle) - y * std::sin(angle);
    y = x * std::sin(angle) + y * std::cos(angle);
    x = turnedX;
}

Place MappedStepByStep(const MeshMaterialMatrix& mapping, Place p)
{
    p += Place(-0.5, -0.5, 0);
    Turn(p.y, p.z, mapping.rotation.x);
    Turn(p.z, p.x, mapping.rotation.y);
    Turn(p.x, p.y, mapping.rotation.z);
    p += Place(0.5, 0.5, 0);
    p = {p.x * mapping.repeat.x, p.y * mapping.repeat.y, p.z * mapping.repeat.z};
    p += mapping.translation;
    return p;
}

template<class... Fields>
bool StandInOrder(const Fields&... fields)
{
    const void* const addresses[] = {&fields...};
    for (std::size_t i = 1; i < sizeof...(fields); ++i)
        if (!std::less<const void*>()(addresses[i - 1], addresses[i]))
            return false;
    return true;
}

void ExpectIdentity(const Matrix4<double>& matrix)
{
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(matrix.get(row, column), row == column ? 1 : 0);
}

} // namespace

TEST(MeshMaterialInfo, StartsAsAMaterialOfWhichNothingIsSaid)
{
    const MeshMaterialInfo material;
    EXPECT_FALSE(material.hasAmbient || material.hasDiffuse || material.hasSpecular || material.hasEmissive);
    EXPECT_EQ(material.texCoordSet, 0);
    EXPECT_EQ(material.illum, 2);
    EXPECT_EQ(material.specularExponent, 0);
    EXPECT_EQ(material.refractionIndex, 1);
    EXPECT_EQ(material.opacity, 1);
    EXPECT_EQ(material.ambient, Color(0.2f, 0.2f, 0.2f));
    EXPECT_EQ(material.diffuse, Color(0.8f, 0.8f, 0.8f));
    EXPECT_EQ(material.specular, Color(0, 0, 0));
    EXPECT_EQ(material.emissive, Color(0, 0, 0));
    EXPECT_EQ(material.wrapS, 0);
    EXPECT_EQ(material.wrapT, 0);
    EXPECT_EQ(material.borderColor, Vector4D<float>(0, 0, 0, 0));
    EXPECT_EQ(material.translation, Place(0, 0, 0));
    EXPECT_EQ(material.rotation, Place(0, 0, 0));
    EXPECT_EQ(material.repeat, Place(1, 1, 1));
    ExpectIdentity(material.matrix);
    EXPECT_TRUE(material.name.empty());
    EXPECT_FALSE(material.diffuseTexture.isValidSize());
    EXPECT_FALSE(material.emissiveTexture.isValidSize());
    EXPECT_FALSE(material.opacityTexture.isValidSize());
    EXPECT_FALSE(material.bumpTexture.isValidSize());
}

TEST(MeshMaterialInfo, SettersSetTheirColorAlone)
{
    MeshMaterialInfo material;
    material.setDiffuse({0.8f, 0.1f, 0.1f});
    EXPECT_EQ(material.diffuse, Color(0.8f, 0.1f, 0.1f));
    EXPECT_TRUE(material.hasDiffuse);
    EXPECT_FALSE(material.hasAmbient || material.hasSpecular || material.hasEmissive);
    EXPECT_EQ(material.ambient, Color(0.2f, 0.2f, 0.2f));

    material.setAmbient({1, 2, 3});
    material.setSpecular({4, 5, 6});
    material.setEmissive({7, 8, 9});
    EXPECT_EQ(material.ambient, Color(1, 2, 3));
    EXPECT_EQ(material.diffuse, Color(0.8f, 0.1f, 0.1f));
    EXPECT_EQ(material.specular, Color(4, 5, 6));
    EXPECT_EQ(material.emissive, Color(7, 8, 9));
    EXPECT_TRUE(material.hasAmbient && material.hasSpecular && material.hasEmissive);
}

TEST(MeshMaterialInfo, MarksAreOneByteEach)
{
    const MeshMaterialInfo material;
    const auto offset = [&](const void* field) {
        return static_cast<const char*>(field) - reinterpret_cast<const char*>(&material);
    };
    EXPECT_EQ(offset(&material.hasAmbient), 0);
    EXPECT_EQ(offset(&material.hasEmissive), 3);
    EXPECT_EQ(offset(&material.texCoordSet), 4);
    EXPECT_EQ(offset(&material.illum), 8);
}

TEST(MeshMaterialInfo, FieldsKeepTheirOrder)
{
    const MeshMaterialInfo m;
    EXPECT_TRUE(StandInOrder(m.illum, m.specularExponent, m.refractionIndex, m.opacity, m.ambient, m.diffuse,
                             m.specular, m.emissive, m.wrapS, m.wrapT, m.borderColor, m.translation,
                             m.rotation, m.repeat, m.matrix, m.name, m.diffuseTexture, m.emissiveTexture,
                             m.opacityTexture, m.bumpTexture));
}

TEST(MeshTextureInfo, FieldsKeepTheirOrder)
{
    const MeshTextureInfo t;
    EXPECT_TRUE(StandInOrder(t.width, t.height, t.fileName, t.pixels));
}

TEST(MeshMaterialParameters, FieldsKeepTheirOrder)
{
    const MeshMaterialParameters p;
    EXPECT_TRUE(StandInOrder(p.wrapS, p.wrapT, p.borderColor, p.matrix));
}

TEST(MeshMaterialMatrix, FieldsKeepTheirOrder)
{
    const MeshMaterialMatrix m;
    EXPECT_TRUE(StandInOrder(m.translation, m.rotation, m.repeat, m.matrix));
}

TEST(MeshMaterialInfo, CopyIsAWholeMaterial)
{
    MeshMaterialInfo source;
    source.name = "oak";
    source.setEmissive({1, 0, 0});
    source.bumpTexture.fileName = QStringLiteral("oak.png");
    const MeshMaterialInfo copy = source;
    EXPECT_EQ(copy.name, "oak");
    EXPECT_EQ(copy.emissive, Color(1, 0, 0));
    EXPECT_TRUE(copy.hasEmissive);
    EXPECT_EQ(copy.bumpTexture.fileName, QStringLiteral("oak.png"));
}

TEST(MeshTextureGroup, StartsWithoutFaces)
{
    const MeshTextureGroup group;
    EXPECT_LT(group.firstFaceIndex, 0);
    EXPECT_EQ(group.faceCount, 0);
    EXPECT_FALSE(group.isHidden || group.isSelected);
    EXPECT_TRUE(group.material.name.empty());
    EXPECT_TRUE(StandInOrder(group.isHidden, group.isSelected, group.firstFaceIndex, group.faceCount,
                             group.material));
}

TEST(MeshMaterialParameters, StartAsRepeatedPicture)
{
    const MeshMaterialParameters parameters;
    EXPECT_EQ(parameters.wrapS, 0);
    EXPECT_EQ(parameters.wrapT, 0);
    EXPECT_EQ(parameters.borderColor, Vector4D<float>(0, 0, 0, 0));
    EXPECT_EQ(parameters.matrix.repeat, Place(1, 1, 1));
    ExpectIdentity(parameters.matrix.matrix);
}

TEST(MeshMaterialParameters, WrapModesHaveTheirNumbers)
{
    EXPECT_EQ(MeshMaterialParameters::Repeat, 0);
    EXPECT_EQ(MeshMaterialParameters::Mirror, 1);
    EXPECT_EQ(MeshMaterialParameters::ClampToEdge, 2);
    EXPECT_EQ(MeshMaterialParameters::ClampToBorder, 3);
}

TEST(MeshMaterialMatrix, OfDefaultsIsIdentity)
{
    MeshMaterialMatrix mapping;
    ExpectIdentity(mapping.matrix);
    mapping.updateMatrix();
    ExpectIdentity(mapping.matrix);
}

TEST(MeshMaterialMatrix, IsRebuiltOnlyWhenUpdated)
{
    MeshMaterialMatrix mapping;
    mapping.translation = {1, 2, 3};
    ExpectIdentity(mapping.matrix);
    mapping.updateMatrix();
    EXPECT_EQ(Mapped(mapping, {0, 0, 0}), Place(1, 2, 3));
    mapping.translation = {};
    mapping.updateMatrix();
    ExpectIdentity(mapping.matrix);
}

TEST(MeshMaterialMatrix, RepeatScalesFromTheOrigin)
{
    EXPECT_EQ(Mapped(Mapping({}, {}, {2, 3, 4}), {1, 1, 1}), Place(2, 3, 4));
    EXPECT_EQ(Mapped(Mapping({}, {}, {2, 3, 4}), {0, 0, 0}), Place(0, 0, 0));
}

TEST(MeshMaterialMatrix, TranslationIsInPicturesWhateverTheRepeat)
{
    EXPECT_EQ(Mapped(Mapping({0.5, 1, 0}, {}, {4, 4, 1}), {0, 0, 0}), Place(0.5, 1, 0));
}

TEST(MeshMaterialMatrix, QuarterTurnMapsTheUnitSquareOntoItself)
{
    const MeshMaterialMatrix mapping = Mapping({}, {0, 0, 90}, {1, 1, 1});
    EXPECT_EQ(Mapped(mapping, {0, 0, 0}), Place(1, 0, 0));
    EXPECT_EQ(Mapped(mapping, {1, 0, 0}), Place(1, 1, 0));
    EXPECT_EQ(Mapped(mapping, {1, 1, 0}), Place(0, 1, 0));
    EXPECT_EQ(Mapped(mapping, {0, 1, 0}), Place(0, 0, 0));
    EXPECT_EQ(Mapped(mapping, {0.5, 0.5, 0}), Place(0.5, 0.5, 0));
}

TEST(MeshMaterialMatrix, QuarterTurnsAreExact)
{
    for (int quarters = -8; quarters <= 8; ++quarters) {
        const MeshMaterialMatrix mapping = Mapping({}, {0, 0, 90.0 * quarters}, {1, 1, 1});
        for (const double element : mapping.matrix.m)
            EXPECT_TRUE(element == 0 || element == 1 || element == -1) << element;
    }
    ExpectIdentity(Mapping({}, {360, -720, 3600000}, {1, 1, 1}).matrix);
}

TEST(MeshMaterialMatrix, PictureIsTurnedBeforeItIsRepeated)
{
    // Turned by a quarter, the v axis runs along the six repeats.
    const MeshMaterialMatrix mapping = Mapping({}, {0, 0, 90}, {6, 1, 1});
    EXPECT_EQ(Mapped(mapping, {0, 0, 0}), Place(6, 0, 0));
    EXPECT_EQ(Mapped(mapping, {0, 1, 0}), Place(0, 0, 0));
}

TEST(MeshMaterialMatrix, MatchesTheStepsDoneOneByOne)
{
    std::mt19937 random(31);
    std::uniform_real_distribution<double> number(-5, 5), degrees(-1000, 1000);
    const auto place = [&](auto& distribution) {
        const double x = distribution(random), y = distribution(random);
        return Place(x, y, distribution(random));
    };
    for (int round = 0; round < 1000; ++round) {
        const Place translation = place(number), rotation = place(degrees), repeat = place(number);
        const MeshMaterialMatrix mapping = Mapping(translation, rotation, repeat);
        const Place point = place(number);
        const Place actual = Mapped(mapping, point), expected = MappedStepByStep(mapping, point);
        EXPECT_NEAR(actual.x, expected.x, 1e-9);
        EXPECT_NEAR(actual.y, expected.y, 1e-9);
        EXPECT_NEAR(actual.z, expected.z, 1e-9);
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(mapping.matrix.get(3, column), column == 3 ? 1 : 0);
    }
}

TEST(MeshMaterialMatrix, ToleratesParametersThatAreNotFinite)
{
    const double nan = std::nan(""), infinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(std::isnan(Mapping({}, {0, 0, nan}, {1, 1, 1}).matrix.get(0, 0)));
    EXPECT_TRUE(std::isnan(Mapping({}, {0, infinity, 0}, {1, 1, 1}).matrix.get(0, 0)));
}
