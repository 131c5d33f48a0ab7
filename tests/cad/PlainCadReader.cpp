#include "tests/cad/PlainCadReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepGProp.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <Poly_Triangulation.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include "core/mesh/Mesh.h"
#include "core/utility/Utility.h"
#include "tests/cad/SilentOpenCascade.h"

namespace test {

namespace {

struct PlacedShape {
    TopoDS_Shape shape;
    QString name;
};

using PlacedShapes = std::vector<PlacedShape>;

bool EndsWithAny(const QString& name, std::initializer_list<const char*> ends)
{
    return std::any_of(ends.begin(), ends.end(), [&](const char* end) {
        return name.endsWith(QString::fromLatin1(end), Qt::CaseInsensitive);
    });
}

QString NameOfLabel(const TDF_Label& label)
{
    Handle(TDataStd_Name) name;
    if (!label.FindAttribute(TDataStd_Name::GetID(), name))
        return {};
    const TCollection_ExtendedString text = name->Get();
    return QString(reinterpret_cast<const QChar*>(text.ToExtString()), text.Length()).trimmed();
}

QString DisplayName(const QString& labelName, const QString& root)
{
    if (labelName.isEmpty() || labelName == root)
        return {};
    return root.isEmpty() ? labelName : root + QStringLiteral(" - ") + labelName;
}

void AddSolids(const TopoDS_Shape& compound, const QString& name, PlacedShapes& placed)
{
    int number = 0;
    for (TopExp_Explorer explorer(compound, TopAbs_SOLID); explorer.More(); explorer.Next()) {
        const QString count = QString::number(++number);
        placed.push_back({explorer.Current(), name.isEmpty() ? count : name + QStringLiteral("-") + count});
    }
}

void Walk(const TopLoc_Location& parent, const TDF_Label& label, const QString& root, PlacedShapes& placed)
{
    TDF_Label shapeLabel = label;
    if (XCAFDoc_ShapeTool::IsReference(label))
        XCAFDoc_ShapeTool::GetReferredShape(label, shapeLabel);
    const TopLoc_Location location = parent.Multiplied(XCAFDoc_ShapeTool::GetLocation(label));
    TDF_LabelSequence components;
    XCAFDoc_ShapeTool::GetComponents(shapeLabel, components, Standard_False);
    for (int i = 1; i <= components.Length(); ++i)
        Walk(location, components.Value(i), root, placed);
    if (!components.IsEmpty())
        return;

    const QString labelName = NameOfLabel(shapeLabel);
    const QString name = DisplayName(labelName, root);
    const TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(shapeLabel);
    const TopAbs_ShapeEnum type = shape.ShapeType();
    const TopoDS_Shape copy = BRepBuilderAPI_Transform(shape, location.Transformation(), Standard_True);
    if (type == TopAbs_COMPOUND || type == TopAbs_COMPSOLID)
        AddSolids(copy, name.isEmpty() ? labelName : name, placed);
    else if (type == TopAbs_SOLID || type == TopAbs_SHELL || type == TopAbs_FACE)
        placed.push_back({copy, name});
}

template<class Reader>
bool ReadInto(Reader& reader, const QString& fileName, Handle(TDocStd_Document) document)
{
    return reader.ReadFile(fileName.toUtf8().constData()) == IFSelect_RetDone && reader.Transfer(document);
}

bool ReadDocument(const QString& fileName, const Handle(TDocStd_Document) & document)
{
    STEPCAFControl_Reader step;
    step.SetNameMode(Standard_True);
    IGESCAFControl_Reader iges;
    return EndsWithAny(fileName, {".stp", ".step"}) ? ReadInto(step, fileName, document)
                                                    : ReadInto(iges, fileName, document);
}

double SizeOf(const TopoDS_Shape& shape)
{
    Bnd_Box box;
    BRepBndLib::Add(shape, box, Standard_False);
    if (box.IsVoid())
        return 1;
    if (box.IsOpen()) {
        if (!box.HasFinitePart())
            return 1;
        box = box.FinitePart();
    }
    double x0 = 0, y0 = 0, z0 = 0, x1 = 0, y1 = 0, z1 = 0;
    box.Get(x0, y0, z0, x1, y1, z1);
    return 4 * std::max({x1 - x0, y1 - y0, z1 - z0});
}

IMeshTools_Parameters ParametersFor(double size, double deflection, double angle)
{
    IMeshTools_Parameters parameters;
    parameters.Angle = angle * 0.017453292519943295;
    parameters.Deflection = size * deflection / 1000;
    parameters.AngleInterior = -1;
    parameters.DeflectionInterior = -1;
    parameters.MinSize = -1;
    parameters.InParallel = Standard_True;
    parameters.Relative = Standard_False;
    parameters.InternalVerticesMode = Standard_True;
    parameters.ControlSurfaceDeflection = Standard_True;
    parameters.CleanModel = Standard_True;
    parameters.AdjustMinSize = Standard_False;
    parameters.ForceFaceDeflection = Standard_False;
    parameters.AllowQualityDecrease = Standard_False;
    return parameters;
}

void AddTriangles(const TopoDS_Face& face, PlainCadMesh& mesh)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation) triangulation = BRep_Tool::Triangulation(face, location);
    if (triangulation.IsNull())
        return;
    const std::size_t base = mesh.vertices.size();
    for (int i = 1; i <= triangulation->NbNodes(); ++i) {
        const gp_Pnt p = triangulation->Node(i).Transformed(location.Transformation());
        mesh.vertices.emplace_back(static_cast<float>(p.X()), static_cast<float>(p.Y()),
                                   static_cast<float>(p.Z()));
    }
    PlainCadFace piece;
    piece.isReversed = face.Orientation() == TopAbs_REVERSED;
    const int before = static_cast<int>(base) - 1;
    for (int i = 1; i <= triangulation->NbTriangles(); ++i) {
        int a = 0, b = 0, c = 0;
        triangulation->Triangle(i).Get(a, b, c);
        const auto corner = [&](int node) {
            return mesh.vertices[base + static_cast<std::size_t>(node) - 1];
        };
        piece.triangles.push_back({corner(a), corner(b), corner(c)});
        if (piece.isReversed)
            std::swap(b, c);
        mesh.faces.emplace_back(before + a, before + b, before + c);
    }
    mesh.pieces.push_back(piece);
}

void MergeVertices(PlainCadMesh& mesh)
{
    std::map<std::array<float, 3>, int> numbers;
    std::vector<Vector3D<float>> merged;
    std::vector<int> numberOf;
    for (const Vector3D<float>& vertex : mesh.vertices) {
        const int next = static_cast<int>(merged.size());
        // A sum with 0 makes -0 the same as 0.
        const std::array<float, 3> key = {vertex.x + 0, vertex.y + 0, vertex.z + 0};
        const bool isFinite = std::isfinite(vertex.x) && std::isfinite(vertex.y) && std::isfinite(vertex.z);
        const int number = isFinite ? numbers.emplace(key, next).first->second : next;
        if (number == next)
            merged.push_back(vertex);
        numberOf.push_back(number);
    }
    for (TriangleFace& face : mesh.faces)
        for (int& index : face.v)
            index = numberOf[static_cast<std::size_t>(index)];
    mesh.vertices = merged;
}

PlainCadMesh MeshOfSolidOrShell(const TopoDS_Shape& shape, double deflection, double angle)
{
    PlainCadMesh mesh;
    mesh.kind = shape.ShapeType() == TopAbs_SOLID ? PlacedKind::Solid : PlacedKind::Shell;
    mesh.size = SizeOf(shape);
    const BRepMesh_IncrementalMesh mesher(shape, ParametersFor(mesh.size, deflection, angle));
    for (TopExp_Explorer explorer(shape, TopAbs_FACE); explorer.More(); explorer.Next())
        AddTriangles(TopoDS::Face(explorer.Current()), mesh);
    mesh.rawVertices = mesh.vertices;
    MergeVertices(mesh);
    return mesh;
}

PlainCadMesh MeshOfFace(const TopoDS_Face& face, double deflection, double angle)
{
    PlainCadMesh mesh;
    mesh.kind = PlacedKind::Face;
    mesh.size = SizeOf(face);
    const double distance = std::max(0.0001, deflection);
    TopLoc_Location location;
    const Handle(Poly_Triangulation) known = BRep_Tool::Triangulation(face, location);
    if (known.IsNull() || known->Deflection() > distance + 1e-7)
        const BRepMesh_IncrementalMesh mesher(face, distance, Standard_False, angle, Standard_False);
    AddTriangles(face, mesh);
    mesh.rawVertices = mesh.vertices;
    return mesh;
}

PlainCadMesh MeshOf(const PlacedShape& placed, double deflection, double angle)
{
    const TopoDS_Shape& shape = placed.shape;
    PlainCadMesh mesh = shape.ShapeType() == TopAbs_FACE ? MeshOfFace(TopoDS::Face(shape), deflection, angle)
                                                         : MeshOfSolidOrShell(shape, deflection, angle);
    mesh.name = placed.name;
    GProp_GProps volume, surface;
    BRepGProp::VolumeProperties(shape, volume);
    BRepGProp::SurfaceProperties(shape, surface);
    mesh.exactVolume = volume.Mass();
    mesh.exactArea = surface.Mass();
    return mesh;
}

PlacedShapes ShapesOf(const Handle(TDocStd_Document) & document, const QString& root)
{
    PlacedShapes placed;
    TDF_LabelSequence freeShapes;
    XCAFDoc_DocumentTool::ShapeTool(document->Main())->GetFreeShapes(freeShapes);
    for (int i = 1; i <= freeShapes.Length(); ++i)
        Walk(TopLoc_Location(), freeShapes.Value(i), root, placed);
    return placed;
}

// Closes a document whatever happens.
class OpenDocument {
public:
    OpenDocument() { XCAFApp_Application::GetApplication()->NewDocument("plain", m_document); }
    ~OpenDocument() { XCAFApp_Application::GetApplication()->Close(m_document); }
    OpenDocument(const OpenDocument&) = delete;
    OpenDocument& operator=(const OpenDocument&) = delete;
    const Handle(TDocStd_Document) & Get() const { return m_document; }

private:
    Handle(TDocStd_Document) m_document;
};

template<class Element>
bool SameBits(const std::vector<Element>& a, const std::vector<Element>& b)
{
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Element)) == 0);
}

std::string DifferenceOfMesh(const PlainCadMesh& plain, const Mesh& mesh)
{
    if (mesh.GetObjectName() != plain.name)
        return "is named \"" + mesh.GetObjectName().toStdString() + "\", not \"" + plain.name.toStdString() +
               "\"";
    if (!SameBits(*mesh.GetVerticesVecPtr(), plain.vertices))
        return "has other vertices: " + std::to_string(mesh.GetVerticesVecPtr()->size()) + " of " +
               std::to_string(plain.vertices.size());
    if (!SameBits(*mesh.GetFacesVecPtr(), plain.faces))
        return "has other faces: " + std::to_string(mesh.GetFacesVecPtr()->size()) + " of " +
               std::to_string(plain.faces.size());
    if (mesh.GetVertexNum() != static_cast<int>(plain.vertices.size()) ||
        mesh.GetFaceNum() != static_cast<int>(plain.faces.size()))
        return "has other counts than lists";
    Mesh volume(0.03f);
    volume.AddVertexAndFaces(plain.vertices, plain.faces);
    return mesh.GetVolume() == volume.CalcuateVolume() ? std::string() : "has another volume";
}

} // namespace

std::vector<const PlainCadMesh*> PlainCad::Meshes() const
{
    std::vector<const PlainCadMesh*> meshes;
    for (const PlainCadMesh& mesh : placed)
        if (!mesh.vertices.empty())
            meshes.push_back(&mesh);
    return meshes;
}

PlainCad ReadPlainCad(const QString& fileName, double deflection, double angle, bool prefixFileName)
{
    PlainCad result;
    const QString baseName = Utility::GetFileNameNoComplexExtension(fileName);
    if (!EndsWithAny(fileName, {".stp", ".step", ".igs", ".iges"}) || baseName.isEmpty())
        return result;
    const SilentOpenCascade silence;
    const OpenDocument document;
    if (!ReadDocument(fileName, document.Get()))
        return result;
    for (const PlacedShape& placed : ShapesOf(document.Get(), prefixFileName ? baseName : QString()))
        result.placed.push_back(MeshOf(placed, deflection, angle));
    result.isLoaded = !result.placed.empty();
    return result;
}

std::string Difference(const PlainCad& plain, const std::vector<Mesh*>& meshes)
{
    const std::vector<const PlainCadMesh*> expected = plain.Meshes();
    if (meshes.size() != expected.size())
        return std::to_string(meshes.size()) + " meshes, not " + std::to_string(expected.size());
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        const std::string difference = DifferenceOfMesh(*expected[i], *meshes[i]);
        if (!difference.empty())
            return "mesh " + std::to_string(i) + " " + difference;
    }
    return {};
}

} // namespace test
