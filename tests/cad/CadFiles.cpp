#include "tests/cad/CadFiles.h"

#include <map>
#include <stdexcept>

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_MakeSolid.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <IGESCAFControl_Writer.hxx>
#include <IGESControl_Controller.hxx>
#include <Interface_Static.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <Standard_Failure.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_CompSolid.hxx>
#include <TopoDS_Compound.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <gp_Circ.hxx>
#include <gp_Pln.hxx>

#include "tests/cad/SilentOpenCascade.h"

namespace test {

namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;

CadShape Share(const TopoDS_Shape& shape)
{
    return std::make_shared<const TopoDS_Shape>(shape);
}

gp_Trsf TransformOf(const CadPlacement& placement)
{
    gp_Trsf turn, move;
    const gp_Dir axis(placement.axisX, placement.axisY, placement.axisZ);
    if (placement.degrees != 0)
        turn.SetRotation(gp_Ax1(gp_Pnt(0, 0, 0), axis), placement.degrees * kRadiansPerDegree);
    move.SetTranslation(gp_Vec(placement.x, placement.y, placement.z));
    return move * turn;
}

TopAbs_ShapeEnum TypeOf(CadPiece piece)
{
    switch (piece) {
    case CadPiece::CompSolid:
        return TopAbs_COMPSOLID;
    case CadPiece::Solid:
        return TopAbs_SOLID;
    case CadPiece::Shell:
        return TopAbs_SHELL;
    case CadPiece::Face:
        return TopAbs_FACE;
    case CadPiece::Wire:
        return TopAbs_WIRE;
    case CadPiece::Edge:
        return TopAbs_EDGE;
    case CadPiece::Vertex:
        break;
    }
    return TopAbs_VERTEX;
}

TopoDS_Wire Circle(double x, double radius)
{
    const gp_Circ circle(gp_Ax2(gp_Pnt(x, 0, 0), gp_Dir(0, 0, 1)), radius);
    return BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(circle).Edge());
}

// A new shape of a kind, filled with others.
template<class Whole>
CadShape PutTogether(void (BRep_Builder::*make)(Whole&) const, const std::vector<CadShape>& pieces)
{
    const BRep_Builder builder;
    Whole whole;
    (builder.*make)(whole);
    for (const CadShape& piece : pieces)
        builder.Add(whole, *piece);
    return Share(whole);
}

// A document of the tests' own. It is closed when it is left.
class Document {
public:
    explicit Document(const std::vector<CadPartPointer>& parts)
    {
        XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", m_document);
        m_tool = XCAFDoc_DocumentTool::ShapeTool(m_document->Main());
        for (const CadPartPointer& part : parts)
            LabelOf(part);
        m_tool->UpdateAssemblies();
    }
    ~Document() { XCAFApp_Application::GetApplication()->Close(m_document); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    const Handle(TDocStd_Document) & Get() const { return m_document; }

private:
    // One label a part, however many instances there are of it.
    TDF_Label LabelOf(const CadPartPointer& part)
    {
        const auto known = m_labels.find(part.get());
        if (known != m_labels.end())
            return known->second;
        const TDF_Label label =
            part->shape != nullptr ? m_tool->AddShape(*part->shape, Standard_False) : m_tool->NewShape();
        for (const CadInstance& instance : part->components)
            m_tool->AddComponent(label, LabelOf(instance.part),
                                 TopLoc_Location(TransformOf(instance.placement)));
        Name(label, part->name);
        m_labels.emplace(part.get(), label);
        return label;
    }

    // The shape tool gives names of its own.
    static void Name(const TDF_Label& label, const QString& name)
    {
        label.ForgetAttribute(TDataStd_Name::GetID());
        if (!name.isEmpty())
            TDataStd_Name::Set(label, TCollection_ExtendedString(name.toUtf8().constData(), Standard_True));
    }

    Handle(TDocStd_Document) m_document;
    Handle(XCAFDoc_ShapeTool) m_tool;
    std::map<const CadPart*, TDF_Label> m_labels;
};

// A setting of OpenCASCADE's, put back when it is left.
class Setting {
public:
    Setting(const char* name, int value) : m_name(name), m_before(Interface_Static::IVal(name))
    {
        Interface_Static::SetIVal(name, value);
    }
    ~Setting() { Interface_Static::SetIVal(m_name, m_before); }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

private:
    const char* m_name;
    int m_before;
};

} // namespace

CadShape Box(double x, double y, double z)
{
    return Share(BRepPrimAPI_MakeBox(x, y, z).Shape());
}

CadShape Cylinder(double radius, double height)
{
    return Share(BRepPrimAPI_MakeCylinder(radius, height).Shape());
}

CadShape Sphere(double radius)
{
    return Share(BRepPrimAPI_MakeSphere(radius).Shape());
}

CadShape Torus(double largeRadius, double smallRadius)
{
    return Share(BRepPrimAPI_MakeTorus(largeRadius, smallRadius).Shape());
}

CadShape PiercedBox(double x, double y, double z, double holeRadius)
{
    const gp_Ax2 axis(gp_Pnt(x / 2, y / 2, -1), gp_Dir(0, 0, 1));
    const TopoDS_Shape hole = BRepPrimAPI_MakeCylinder(axis, holeRadius, z + 2).Shape();
    return PieceOf(Share(BRepAlgoAPI_Cut(BRepPrimAPI_MakeBox(x, y, z).Shape(), hole).Shape()),
                   CadPiece::Solid);
}

CadShape PiercedFace(double side, double holeRadius)
{
    const double half = side / 2;
    BRepBuilderAPI_MakeFace face(gp_Pln(), -half, half, -half, half);
    // Holes run the other way round.
    face.Add(TopoDS::Wire(Circle(-side / 4, holeRadius).Reversed()));
    face.Add(TopoDS::Wire(Circle(side / 4, holeRadius).Reversed()));
    return Share(face.Shape());
}

CadShape CylinderFace(double radius, double height)
{
    const Handle(Geom_CylindricalSurface) surface = new Geom_CylindricalSurface(gp_Ax3(), radius);
    return Share(BRepBuilderAPI_MakeFace(surface, 0, 2, 0, height, 1e-7).Shape());
}

CadShape CollapsedFace()
{
    BRepBuilderAPI_MakePolygon line(gp_Pnt(0, 0, 0), gp_Pnt(5, 0, 0), gp_Pnt(10, 0, 0), Standard_True);
    return Share(BRepBuilderAPI_MakeFace(gp_Pln(), line.Wire(), Standard_False).Shape());
}

CadShape EndlessFace()
{
    return Share(BRepBuilderAPI_MakeFace(gp_Pln()).Shape());
}

CadShape PieceOf(const CadShape& shape, CadPiece piece)
{
    const TopExp_Explorer explorer(*shape, TypeOf(piece));
    if (!explorer.More())
        throw std::logic_error("the shape holds no such piece");
    return Share(explorer.Current());
}

std::vector<CadShape> FacesOf(const CadShape& shape)
{
    std::vector<CadShape> faces;
    for (TopExp_Explorer explorer(*shape, TopAbs_FACE); explorer.More(); explorer.Next())
        faces.push_back(Share(explorer.Current()));
    return faces;
}

CadShape Compound(const std::vector<CadShape>& shapes)
{
    return PutTogether<TopoDS_Compound>(&BRep_Builder::MakeCompound, shapes);
}

CadShape CompSolid(const std::vector<CadShape>& solids)
{
    return PutTogether<TopoDS_CompSolid>(&BRep_Builder::MakeCompSolid, solids);
}

CadShape ShellOf(const std::vector<CadShape>& faces)
{
    return PutTogether<TopoDS_Shell>(&BRep_Builder::MakeShell, faces);
}

CadShape SolidOf(const CadShape& shell)
{
    return Share(BRepBuilderAPI_MakeSolid(TopoDS::Shell(*shell)).Shape());
}

CadShape Reversed(const CadShape& shape)
{
    return Share(shape->Reversed());
}

CadShape Moved(const CadShape& shape, const CadPlacement& placement)
{
    return Share(BRepBuilderAPI_Transform(*shape, TransformOf(placement), Standard_True).Shape());
}

bool EndsInStandardFailure(const std::function<void()>& call)
{
    try {
        call();
    } catch (const Standard_Failure&) {
        return true;
    }
    return false;
}

int OpenDocumentCount()
{
    return XCAFApp_Application::GetApplication()->NbDocuments();
}

CadPartPointer Part(const QString& name, const CadShape& shape)
{
    return std::make_shared<const CadPart>(CadPart{name, shape, {}});
}

CadPartPointer Assembly(const QString& name, const std::vector<CadInstance>& components)
{
    return std::make_shared<const CadPart>(CadPart{name, nullptr, components});
}

SampleParts MakeSampleParts()
{
    SampleParts parts;
    parts.pin = Part(QStringLiteral("Pin"), PiercedBox(20, 10, 5, 3));
    parts.ball = Part(QStringLiteral("Ball"), Sphere(4));
    parts.pair = Part(QStringLiteral("Pair"), Compound({Torus(9, 2), Moved(Cylinder(2, 9), {30, 0, 0})}));
    parts.sheet = Part(QStringLiteral("Sheet"), CylinderFace(3, 5));
    parts.whole = Assembly(
        QStringLiteral("Whole"),
        {{parts.pin, {}}, {parts.pin, {50, 0, 0, 45}}, {parts.ball, {0, 60, 0}}, {parts.pair, {0, 0, 80}}});
    return parts;
}

bool WriteSTEP(const QString& path, const std::vector<CadPartPointer>& parts)
{
    const SilentOpenCascade silence;
    const Document document(parts);
    STEPCAFControl_Writer writer;
    return writer.Transfer(document.Get()) && writer.Write(path.toUtf8().constData()) == IFSelect_RetDone;
}

bool WriteIGES(const QString& path, const std::vector<CadPartPointer>& parts, IGESSolids solids)
{
    const SilentOpenCascade silence;
    const Document document(parts);
    IGESControl_Controller::Init();
    const Setting mode("write.iges.brep.mode", solids == IGESSolids::AsSolids ? 1 : 0);
    IGESCAFControl_Writer writer;
    return writer.Transfer(document.Get()) && writer.Write(path.toUtf8().constData());
}

} // namespace test
