#include <limits>

#include <gtest/gtest.h>

#include "apps/krmodel/MeshReport.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/Texts.h"

namespace {

using krmodel::Model;
using krmodel::NameText;
using krmodel::Place;
using krmodel::Placing;

void AddTriangle(Model& model, float size)
{
    model.meshes.push_back(std::make_unique<Mesh>(0.03F));
    model.meshes.back()->AddVertexAndFaces({{0, 0, 0}, {size, 0, 0}, {0, size, 0}}, {{0, 1, 2}});
}

TEST(Objects, AreOutOfReachWhenAnyOfThemIs)
{
    for (const bool isLargeFirst : {false, true}) {
        Model model;
        AddTriangle(model, isLargeFirst ? 3e38F : 1.0F);
        AddTriangle(model, isLargeFirst ? 1.0F : 3e38F);
        model.unit = {QStringLiteral("inch"), 25.4};
        EXPECT_FALSE(Place(model, Placing::Apply, {QStringLiteral("millimeter"), 1}));
    }
}

TEST(Objects, StayAsTheyAreWhenThereIsButOneToMerge)
{
    Model model;
    AddTriangle(model, 1);
    model.meshes[0]->SetObjectName(QStringLiteral("part"));
    const Mesh* const before = model.meshes[0].get();
    EXPECT_TRUE(krmodel::MergeObjects(model));
    ASSERT_EQ(model.meshes.size(), 1U);
    EXPECT_EQ(model.meshes[0].get(), before);
    EXPECT_EQ(model.meshes[0]->GetFaceNum(), 1);
}

TEST(Objects, HaveNoGoodTextureWhenOneHasABadOne)
{
    Model model;
    for (const int index : {0, 9, 0}) {
        AddTriangle(model, 1);
        *model.meshes.back()->GetTexCoordVecPtr() = {{0, 0}};
        *model.meshes.back()->GetTextureFacesVecPtr() = {{index, 0, 0}};
    }
    EXPECT_FALSE(krmodel::Measure(model).isTextureGood);
    model.meshes.erase(model.meshes.begin() + 1);
    EXPECT_TRUE(krmodel::Measure(model).isTextureGood);
}

TEST(Objects, DoNotBreakTheLineByTheirNames)
{
    EXPECT_EQ(NameText(QString::fromUtf8("a\u2028b\u2029c\u200bd")), QStringLiteral("a?b?c?d"));
}

} // namespace
