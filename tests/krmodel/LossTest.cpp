#include "apps/krmodel/Loss.h"

#include <gtest/gtest.h>

#include "apps/krmodel/CadFormat.h"
#include "tests/common/Directory.h"

namespace {

using krmodel::Encoding;
using krmodel::FindFormat;
using krmodel::Loss;
using krmodel::Model;

using Points = std::vector<Vector3D<float>>;

std::string TextOf(const std::vector<Loss>& losses)
{
    QStringList kinds;
    for (const Loss& loss : losses)
        kinds += loss.kind + QStringLiteral(": ") + QString::number(loss.count);
    return kinds.join(QStringLiteral(", ")).toStdString();
}

/// What an OBJ file loses of one facet.
std::string LossesOf(const Points& corners)
{
    Model model;
    model.meshes.push_back(std::make_unique<Mesh>(0.03F));
    model.meshes[0]->AddVertexAndFaces(corners, {{0, 1, 2}});
    return TextOf(krmodel::FindOutputLosses(model, *FindFormat(QStringLiteral("a.stl")),
                                            *FindFormat(QStringLiteral("a.obj")), Encoding::Text));
}

TEST(Loss, IsAFacetOfWhichAnyTwoCornersFallTogether)
{
    const Vector3D<float> here(1, 1, 1), beside(1.0000002F, 1, 1), there(5, 0, 0), beyond(0, 7, 0);
    EXPECT_EQ(LossesOf({here, beside, there}), "collapsed-facets: 1");
    EXPECT_EQ(LossesOf({there, here, beside}), "collapsed-facets: 1");
    EXPECT_EQ(LossesOf({beside, there, here}), "collapsed-facets: 1");
    EXPECT_EQ(LossesOf({here, there, beyond}), "");
}

TEST(Loss, IsNoFacetThatHadACornerTwiceBefore)
{
    const Vector3D<float> here(1, 1, 1), there(5, 0, 0);
    for (const Points& corners :
         {Points{here, here, there}, Points{there, here, here}, Points{here, there, here}})
        EXPECT_EQ(LossesOf(corners), "");
}

TEST(Loss, IsNotCountedInStatementsWithoutParametersOrNames)
{
    const test::Directory directory;
    const QString fileName =
        directory.Write("#1=STYLED_ITEM;\nSTYLED_ITEM('',(#6),#1);\n"
                        "#2=MANIFOLD_SOLID_BREP($,#3);\n#4=MANIFOLD_SOLID_BREP('It',#3);\n");
    EXPECT_EQ(TextOf(krmodel::cad::ScanStep(fileName, Model())), "solid-names: 1");
}

TEST(Loss, IsNotCountedInLinesThatEndBeforeTheirSection)
{
    const test::Directory directory;
    const QByteArray entry =
        QByteArray("     314       1       1       0       7").leftJustified(72) + "D      1\n";
    EXPECT_EQ(TextOf(krmodel::cad::ScanIges(directory.Write(entry.left(60) + '\n'), Model())), "");
    EXPECT_EQ(TextOf(krmodel::cad::ScanIges(directory.Write("short\n" + entry), Model())), "layers: 1");
}

} // namespace
