#include "samples/Bearing.h"

#include <APIHeaderSection_MakeHeader.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <StepData_StepModel.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XSControl_WorkSession.hxx>

#include <QString>

namespace {

struct Place {
    double x, y;
};
constexpr Place kScrews[] = {{-24, -14}, {24, -14}, {24, 14}, {-24, 14}};
constexpr double kPlateHeight = 8;

TopoDS_Shape Cylinder(const Place& place, double z, double radius, double height)
{
    const gp_Ax2 axis(gp_Pnt(place.x, place.y, z), gp_Dir(0, 0, 1));
    return BRepPrimAPI_MakeCylinder(axis, radius, height).Shape();
}

TopoDS_Shape Plate()
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(gp_Pnt(-32, -21, 0), gp_Pnt(32, 21, kPlateHeight)).Shape();
    BRepFilletAPI_MakeFillet rounded(box);
    for (TopExp_Explorer edges(box, TopAbs_EDGE); edges.More(); edges.Next())
        rounded.Add(2, TopoDS::Edge(edges.Current()));
    return rounded.Shape();
}

TopoDS_Shape Block()
{
    TopoDS_Shape block = BRepAlgoAPI_Fuse(Plate(), Cylinder({0, 0}, 2, 16, 26)).Shape();
    block = BRepAlgoAPI_Cut(block, Cylinder({0, 0}, -1, 9, 40)).Shape();
    for (const Place& place : kScrews)
        block = BRepAlgoAPI_Cut(block, Cylinder(place, -1, 2.7, 20)).Shape();
    // What comes of the operations is a compound of one solid.
    return TopExp_Explorer(block, TopAbs_SOLID).Current();
}

TopoDS_Shape Screw()
{
    const TopoDS_Shape screw =
        BRepAlgoAPI_Fuse(Cylinder({0, 0}, -14, 2.5, 15), Cylinder({0, 0}, 0, 4.25, 5)).Shape();
    return TopExp_Explorer(screw, TopAbs_SOLID).Current();
}

void Name(const TDF_Label& label, const char* name)
{
    TDataStd_Name::Set(label, name);
}

void Assemble(XCAFDoc_ShapeTool& shapes)
{
    const TDF_Label assembly = shapes.NewShape();
    Name(assembly, "bearing");
    const TDF_Label block = shapes.AddShape(Block(), false);
    Name(block, "block");
    shapes.AddComponent(assembly, block, TopLoc_Location());
    const TDF_Label screw = shapes.AddShape(Screw(), false);
    Name(screw, "screw");
    for (const Place& place : kScrews) {
        gp_Trsf move;
        move.SetTranslation(gp_Vec(place.x, place.y, kPlateHeight));
        shapes.AddComponent(assembly, screw, TopLoc_Location(move));
    }
    shapes.UpdateAssemblies();
}

/// The same each time.
void SetHeader(const STEPCAFControl_Writer& writer)
{
    APIHeaderSection_MakeHeader header(Handle(StepData_StepModel)::DownCast(writer.Writer().WS()->Model()));
    const auto text = [](const char* bytes) { return new TCollection_HAsciiString(bytes); };
    header.SetName(text("bearing"));
    header.SetTimeStamp(text("2026-01-01T00:00:00"));
    header.SetAuthorValue(1, text(""));
}

} // namespace

bool WriteBearing(const QString& directory)
{
    Message::DefaultMessenger()->ChangePrinters().Clear();
    Handle(TDocStd_Document) document;
    XCAFApp_Application::GetApplication()->NewDocument("bearing", document);
    Assemble(*XCAFDoc_DocumentTool::ShapeTool(document->Main()));
    STEPCAFControl_Writer writer;
    if (!writer.Transfer(document))
        return false;
    SetHeader(writer);
    return writer.Write((directory + QStringLiteral("bearing.step")).toUtf8().constData()) ==
           IFSelect_RetDone;
}
