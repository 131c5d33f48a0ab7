#include "apps/krmodel/Materials.h"

#include <gtest/gtest.h>

namespace {

using krmodel::GroupOfEachFace;
using krmodel::HoldsTexture;
using krmodel::IsDescribed;
using krmodel::MaterialUse;
using krmodel::Model;
using krmodel::SumUpByName;

MeshTextureGroup Group(const char* name, int firstFaceIndex, int faceCount)
{
    MeshTextureGroup group;
    group.material.name = name;
    group.firstFaceIndex = firstFaceIndex;
    group.faceCount = faceCount;
    return group;
}

Model ModelOf(size_t faceCount, const std::vector<MeshTextureGroup>& groups)
{
    Model model;
    model.meshes.push_back(std::make_unique<Mesh>(0.03F));
    model.meshes[0]->GetFacesVecPtr()->resize(faceCount);
    model.groups = groups;
    return model;
}

TEST(Materials, AreSummedUpByNameInTheirOrder)
{
    const Model model =
        ModelOf(11, {Group("wood", -1, 0), Group("steel", 1, 3), Group("wood", 4, 5), Group("wood", 9, 2)});
    const std::vector<MaterialUse> uses = SumUpByName(model);
    ASSERT_EQ(uses.size(), 2U);
    EXPECT_EQ(uses[0].material, &model.groups[0].material);
    EXPECT_EQ(uses[0].groupCount, 3);
    EXPECT_EQ(uses[0].firstFaceIndex, 4);
    EXPECT_EQ(uses[0].faceCount, 7);
    EXPECT_EQ(uses[1].material->name, "steel");
    EXPECT_EQ(uses[1].firstFaceIndex, 1);
    EXPECT_EQ(uses[1].faceCount, 3);
}

TEST(Materials, FirstFacesCountInTheListOfFaces)
{
    // Two faces without a texture, then two with: the first of these is texture face 0.
    const Model model = ModelOf(4, {Group("plain", 0, 2), Group("textured", 0, 2)});
    EXPECT_EQ(SumUpByName(model)[1].firstFaceIndex, 2);
}

TEST(Materials, FirstFacesAreUnknownWhenCountsDoNotFit)
{
    const std::vector<MaterialUse> uses = SumUpByName(ModelOf(3, {Group("a", 0, 2), Group("b", 2, 2)}));
    EXPECT_EQ(uses[0].firstFaceIndex, std::nullopt);
    EXPECT_EQ(uses[1].firstFaceIndex, std::nullopt);
    EXPECT_EQ(uses[1].faceCount, 2);
}

TEST(Materials, FaceSumsGoBeyondTheRangeOfAGroup)
{
    constexpr int kMost = 2'147'483'647;
    EXPECT_EQ(SumUpByName(ModelOf(1, {Group("a", 0, kMost), Group("a", 0, kMost)}))[0].faceCount,
              2LL * kMost);
}

TEST(Materials, AreDescribedByAnyStatementButTheName)
{
    MeshMaterialInfo material;
    material.name = "wood";
    EXPECT_FALSE(IsDescribed(material));
    MeshMaterialInfo coloured = material, dull = material, bumpy = material;
    coloured.setDiffuse(material.diffuse);
    dull.opacity = 0.5F;
    bumpy.bumpTexture.fileName = QStringLiteral("bumps.png");
    EXPECT_TRUE(IsDescribed(coloured));
    EXPECT_TRUE(IsDescribed(dull));
    EXPECT_TRUE(IsDescribed(bumpy));
}

TEST(Materials, GroupsFollowEachOtherThroughTheFaces)
{
    const Model model = ModelOf(6, {Group("a", 1, 2), Group("none", -1, 0), Group("b", 3, 3)});
    EXPECT_EQ(GroupOfEachFace(model), (std::vector<int>{-1, 0, 0, 2, 2, 2}));
}

TEST(Materials, GroupsThatCountTextureFacesAreFoundByTheirCounts)
{
    // Two faces without a texture, then two with: the first of these is texture face 0.
    const Model model = ModelOf(4, {Group("plain", 0, 2), Group("textured", 0, 2)});
    EXPECT_EQ(GroupOfEachFace(model), (std::vector<int>{0, 0, 1, 1}));
}

TEST(Materials, NobodyKnowsTheGroupsOfFacesWhoseCountsDoNotFit)
{
    const std::vector<int> unknown;
    EXPECT_EQ(GroupOfEachFace(ModelOf(3, {Group("a", 0, 2), Group("b", 2, 2)})), unknown)
        << "a face was dropped";
    EXPECT_EQ(GroupOfEachFace(ModelOf(3, {Group("a", 0, 2)})), unknown) << "faces behind";
    EXPECT_EQ(GroupOfEachFace(ModelOf(3, {Group("a", 0, 5), Group("b", 1, -2)})), unknown) << "negative";
    EXPECT_EQ(GroupOfEachFace(ModelOf(3, {Group("a", -1, 0)})), unknown) << "no face in any group";
    EXPECT_EQ(GroupOfEachFace(ModelOf(3, {})), unknown);
    EXPECT_EQ(GroupOfEachFace(Model()), unknown);
}

struct TextureCase {
    const char* name;
    size_t faceCount;
    std::vector<TriangleFace> textureFaces;
    bool isGood;
};

TEST(Materials, AMeshHoldsATextureWhenEachFaceHasGoodTextureIndices)
{
    const TextureCase cases[] = {
        {"good", 2, {{0, 1, 2}, {2, 1, 0}}, true},
        {"too few", 2, {{0, 1, 2}}, false},
        {"too many", 1, {{0, 1, 2}, {0, 1, 2}}, false},
        {"beyond the list", 1, {{0, 1, 3}}, false},
        {"far beyond the list", 1, {{0, 2'147'483'647, 1}}, false},
        {"negative", 1, {{-1, 1, 2}}, false},
        {"no face", 0, {}, false},
    };
    for (const TextureCase& each : cases) {
        Mesh mesh(0.03F);
        mesh.GetFacesVecPtr()->resize(each.faceCount);
        mesh.GetTexCoordVecPtr()->resize(3);
        *mesh.GetTextureFacesVecPtr() = each.textureFaces;
        EXPECT_EQ(HoldsTexture(mesh), each.isGood) << each.name;
    }
}

} // namespace
