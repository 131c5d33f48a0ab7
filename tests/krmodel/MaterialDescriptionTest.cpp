#include <functional>

#include <gtest/gtest.h>

#include "apps/krmodel/Materials.h"

namespace {

using Change = std::function<void(MeshMaterialInfo&)>;

bool IsDescribedBy(const Change& change)
{
    MeshMaterialInfo material;
    material.name = "steel";
    change(material);
    return krmodel::IsDescribed(material);
}

TEST(MaterialDescription, IsMoreThanAName)
{
    EXPECT_FALSE(IsDescribedBy([](MeshMaterialInfo&) {}));
}

TEST(MaterialDescription, IsAnyColourEvenTheUsualOne)
{
    const MeshMaterialInfo usual;
    EXPECT_TRUE(IsDescribedBy([&](MeshMaterialInfo& material) { material.setAmbient(usual.ambient); }));
    EXPECT_TRUE(IsDescribedBy([&](MeshMaterialInfo& material) { material.setDiffuse(usual.diffuse); }));
    EXPECT_TRUE(IsDescribedBy([&](MeshMaterialInfo& material) { material.setSpecular(usual.specular); }));
    EXPECT_TRUE(IsDescribedBy([&](MeshMaterialInfo& material) { material.setEmissive(usual.emissive); }));
}

TEST(MaterialDescription, IsAnyNumberThatIsNotTheUsualOne)
{
    EXPECT_TRUE(IsDescribedBy([](MeshMaterialInfo& material) { material.illum += 1; }));
    EXPECT_TRUE(IsDescribedBy([](MeshMaterialInfo& material) { material.specularExponent += 1; }));
    EXPECT_TRUE(IsDescribedBy([](MeshMaterialInfo& material) { material.refractionIndex += 1; }));
    EXPECT_TRUE(IsDescribedBy([](MeshMaterialInfo& material) { material.opacity -= 0.5F; }));
}

TEST(MaterialDescription, IsAnyPicture)
{
    const QString name = QStringLiteral("a.png");
    EXPECT_TRUE(IsDescribedBy([&](MeshMaterialInfo& material) { material.diffuseTexture.fileName = name; }));
    EXPECT_TRUE(IsDescribedBy([&](MeshMaterialInfo& material) { material.emissiveTexture.fileName = name; }));
    EXPECT_TRUE(IsDescribedBy([&](MeshMaterialInfo& material) { material.opacityTexture.fileName = name; }));
    EXPECT_TRUE(IsDescribedBy([&](MeshMaterialInfo& material) { material.bumpTexture.fileName = name; }));
}

} // namespace
