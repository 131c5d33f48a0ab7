#include <BRepPrimAPI_MakeBox.hxx>
#include <BRep_Builder.hxx>
#include <TDF_ChildIterator.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS_CompSolid.hxx>
#include <TopoDS_Compound.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <gtest/gtest.h>

#include "fileformat/cad/ShapeWalk_p.h"

// What documents hold that the files of the tests cannot: labels by themselves.

namespace {

using namespace kr::cad;

class ShapeWalk : public testing::Test {
protected:
    ShapeWalk()
    {
        XCAFApp_Application::GetApplication()->NewDocument("walk", m_document);
        m_tool = XCAFDoc_DocumentTool::ShapeTool(m_document->Main());
    }
    ~ShapeWalk() override { XCAFApp_Application::GetApplication()->Close(m_document); }

    TDF_Label Add(const TopoDS_Shape& shape, const char16_t* name)
    {
        const TDF_Label label = m_tool->AddShape(shape, false);
        TDataStd_Name::Set(label, name);
        return label;
    }

    static std::vector<PlacedShape> Walk(const TDF_Label& label, const QString& rootName = {})
    {
        std::vector<PlacedShape> shapes;
        CollectLabelShapes(TopLoc_Location(), label, rootName, shapes);
        return shapes;
    }

    static TopoDS_Shape Box() { return BRepPrimAPI_MakeBox(1, 2, 3).Shape(); }

    Handle(TDocStd_Document) m_document;
    Handle(XCAFDoc_ShapeTool) m_tool;
};

TEST_F(ShapeWalk, PassesOverALabelWithoutAShape)
{
    EXPECT_TRUE(Walk(m_document->Main().FindChild(1000)).empty());
}

TEST_F(ShapeWalk, PassesOverAShapeLowerThanAFace)
{
    const TopoDS_Shape box = Box();
    for (const TopAbs_ShapeEnum kind : {TopAbs_WIRE, TopAbs_EDGE, TopAbs_VERTEX})
        EXPECT_TRUE(Walk(Add(TopExp_Explorer(box, kind).Current(), u"Piece")).empty()) << kind;
}

TEST_F(ShapeWalk, TakesBlanksOffALabel)
{
    const std::vector<PlacedShape> shapes = Walk(Add(Box(), u" \t Lid 1 \n"), QStringLiteral("root"));
    ASSERT_EQ(shapes.size(), 1u);
    EXPECT_EQ(shapes[0].name, QStringLiteral("root - Lid 1"));
}

TEST_F(ShapeWalk, ABlankLabelIsNone)
{
    EXPECT_TRUE(Walk(Add(Box(), u"  "), QStringLiteral("root")).at(0).name.isEmpty());
    EXPECT_TRUE(Walk(Add(Box(), u"  ")).at(0).name.isEmpty());
}

TEST_F(ShapeWalk, ALabelWithoutANameHasNone)
{
    const TDF_Label label = Add(Box(), u"");
    label.ForgetAttribute(TDataStd_Name::GetID());
    EXPECT_TRUE(Walk(label, QStringLiteral("root")).at(0).name.isEmpty());
    EXPECT_TRUE(Walk(label).at(0).name.isEmpty());
}

TEST_F(ShapeWalk, SolidsOfACompoundWithoutANameAreNumbersAlone)
{
    TopoDS_Compound compound;
    BRep_Builder().MakeCompound(compound);
    BRep_Builder().Add(compound, Box());
    BRep_Builder().Add(compound, Box());
    const TDF_Label label = Add(compound, u"");
    label.ForgetAttribute(TDataStd_Name::GetID());
    for (const QString& rootName : {QStringLiteral("root"), QString()}) {
        const std::vector<PlacedShape> shapes = Walk(label, rootName);
        ASSERT_EQ(shapes.size(), 2u);
        EXPECT_EQ(shapes[0].name, QStringLiteral("1"));
        EXPECT_EQ(shapes[1].name, QStringLiteral("2"));
    }
}

TEST_F(ShapeWalk, SolidsThatHangTogetherAreTakenOneByOne)
{
    TopoDS_CompSolid row;
    BRep_Builder().MakeCompSolid(row);
    BRep_Builder().Add(row, Box());
    BRep_Builder().Add(row, Box());
    const std::vector<PlacedShape> shapes = Walk(Add(row, u"Row"));
    ASSERT_EQ(shapes.size(), 2u);
    EXPECT_EQ(shapes[0].shape.ShapeType(), TopAbs_SOLID);
    EXPECT_EQ(shapes[0].name, QStringLiteral("Row-1"));
    EXPECT_EQ(shapes[1].name, QStringLiteral("Row-2"));
}

TEST_F(ShapeWalk, ComparesALabelWithoutItsBlanksWithTheRoot)
{
    EXPECT_TRUE(Walk(Add(Box(), u" root "), QStringLiteral("root")).at(0).name.isEmpty());
    EXPECT_EQ(Walk(Add(Box(), u"Root"), QStringLiteral("root")).at(0).name, QStringLiteral("root - Root"));
}

TEST_F(ShapeWalk, KeepsCharactersOfTwoUnits)
{
    EXPECT_EQ(Walk(Add(Box(), u"\U0001F4E6")).at(0).name, QString::fromUtf8("\xf0\x9f\x93\xa6"));
}

TEST_F(ShapeWalk, CopiesTheGeometryOfEachInstance)
{
    const TDF_Label label = Add(Box(), u"Box");
    EXPECT_FALSE(Walk(label).at(0).shape.IsPartner(Walk(label).at(0).shape));
    EXPECT_FALSE(Walk(label).at(0).shape.IsPartner(XCAFDoc_ShapeTool::GetShape(label)));
}

} // namespace
