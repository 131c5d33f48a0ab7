#include "fileformat/cad/Tessellation_p.h"

#include <algorithm>
#include <utility>

#include <BRepBndLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <IMeshTools_Parameters.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include "fileformat/cad/SharedParts_p.h"
#include "fileformat/cad/TaskOrder_p.h"

namespace kr::cad {

namespace {

constexpr float kMergeDistanceMm = 0.03f;
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kSmallestFaceDeflection = 0.0001;
constexpr double kDeflectionTolerance = 1e-7;

struct TriangulatedFace {
    Handle(Poly_Triangulation) triangulation;
    TopLoc_Location location;
    bool isReversed;
};

TriangulatedFace TriangulationOf(const TopoDS_Face& face)
{
    TriangulatedFace result;
    result.triangulation = BRep_Tool::Triangulation(face, result.location);
    result.isReversed = face.Orientation() == TopAbs_REVERSED;
    return result;
}

std::vector<TriangulatedFace> TriangulationsOf(const TopoDS_Shape& shape)
{
    std::vector<TriangulatedFace> faces;
    for (TopExp_Explorer explorer(shape, TopAbs_FACE); explorer.More(); explorer.Next()) {
        TriangulatedFace face = TriangulationOf(TopoDS::Face(explorer.Current()));
        if (!face.triangulation.IsNull())
            faces.push_back(std::move(face));
    }
    return faces;
}

void AppendVertices(const TriangulatedFace& face, std::vector<Vector3D<float>>& vertices)
{
    const gp_Trsf placement = face.location.Transformation();
    const int count = face.triangulation->NbNodes();
    for (int i = 1; i <= count; ++i) {
        const gp_Pnt node = face.triangulation->Node(i).Transformed(placement);
        vertices.emplace_back(float(node.X()), float(node.Y()), float(node.Z()));
    }
}

void AppendTriangles(const TriangulatedFace& face, int base, std::vector<TriangleFace>& triangles)
{
    const int first = base - 1; // nodes count from 1
    const int count = face.triangulation->NbTriangles();
    for (int i = 1; i <= count; ++i) {
        int a = 0, b = 0, c = 0;
        face.triangulation->Triangle(i).Get(a, b, c);
        if (face.isReversed)
            std::swap(b, c);
        triangles.emplace_back(first + a, first + b, first + c);
    }
}

void Reserve(const std::vector<TriangulatedFace>& faces, Mesh& mesh)
{
    std::size_t vertexCount = 0, triangleCount = 0;
    for (const TriangulatedFace& face : faces) {
        vertexCount += std::size_t(face.triangulation->NbNodes());
        triangleCount += std::size_t(face.triangulation->NbTriangles());
    }
    mesh.GetVerticesVecPtr()->reserve(vertexCount);
    mesh.GetFacesVecPtr()->reserve(triangleCount);
}

// Face after face, so that a node on an edge comes once for each face that ends there.
std::unique_ptr<Mesh> RawMesh(const std::vector<TriangulatedFace>& faces)
{
    auto mesh = std::make_unique<Mesh>(kMergeDistanceMm);
    std::vector<Vector3D<float>>& vertices = *mesh->GetVerticesVecPtr();
    Reserve(faces, *mesh);
    for (const TriangulatedFace& face : faces) {
        const int base = int(vertices.size());
        AppendVertices(face, vertices);
        AppendTriangles(face, base, *mesh->GetFacesVecPtr());
    }
    return mesh;
}

// The mesh with its counts set, or null if it has no vertices.
std::unique_ptr<Mesh> Counted(std::unique_ptr<Mesh> mesh)
{
    mesh->SetVertexNum(int(mesh->GetVerticesVecPtr()->size()));
    mesh->SetFaceNum(int(mesh->GetFacesVecPtr()->size()));
    return mesh->GetVertexNum() > 0 ? std::move(mesh) : nullptr;
}

IMeshTools_Parameters MeshParameters(const TopoDS_Shape& shape, const Fineness& fineness)
{
    IMeshTools_Parameters parameters;
    parameters.MeshAlgo = IMeshTools_MeshAlgoType_DEFAULT;
    parameters.Angle = fineness.angle * kRadiansPerDegree;
    parameters.Deflection = ComputeShapeSize(shape) * fineness.deflection / 1000;
    parameters.AngleInterior = -1; // the mesher derives these three
    parameters.DeflectionInterior = -1;
    parameters.MinSize = -1;
    parameters.InParallel = true;
    parameters.Relative = false;
    parameters.InternalVerticesMode = true;
    parameters.ControlSurfaceDeflection = true;
    parameters.CleanModel = true;
    parameters.AdjustMinSize = false;
    parameters.ForceFaceDeflection = false;
    parameters.AllowQualityDecrease = false;
    return parameters;
}

std::unique_ptr<Mesh> TessellateSolidOrShell(const TopoDS_Shape& shape, const Fineness& fineness)
{
    // A thread that waits for the faces of this shape must not begin another one meanwhile: shapes would
    // stand on each other on its stack, all their memory in use.
    tbb::this_task_arena::isolate([&] { BRepMesh_IncrementalMesh(shape, MeshParameters(shape, fineness)); });
    std::unique_ptr<Mesh> mesh = RawMesh(TriangulationsOf(shape));
    mesh->PostProcessMergeRawVertexBuffer();
    return Counted(std::move(mesh));
}

bool IsFineEnough(const TriangulatedFace& face, double deflection)
{
    return !face.triangulation.IsNull() &&
           face.triangulation->Deflection() <= deflection + kDeflectionTolerance;
}

// Shapes differ greatly in cost, so each is a task of its own.
template<class Body>
void ForEachInParallel(std::size_t count, Body body)
{
    TaskOrder order;
    tbb::task_group_context context;
    tbb::parallel_for(
        tbb::blocked_range<std::size_t>(0, count, 1),
        [&](const tbb::blocked_range<std::size_t>& range) {
            const TaskOrder::Task task(order);
            for (std::size_t i = range.begin(); i != range.end(); ++i)
                body(i);
        },
        tbb::auto_partitioner(), context);
}

} // namespace

double ComputeShapeSize(const TopoDS_Shape& shape)
{
    Bnd_Box box;
    BRepBndLib::Add(shape, box, false);
    if (box.IsVoid() || !box.HasFinitePart())
        return 1;
    if (box.IsOpen())
        box = box.FinitePart();
    double xMin = 0, yMin = 0, zMin = 0, xMax = 0, yMax = 0, zMax = 0;
    box.Get(xMin, yMin, zMin, xMax, yMax, zMax);
    return 4 * std::max({xMax - xMin, yMax - yMin, zMax - zMin});
}

std::unique_ptr<Mesh> TessellateFace(const TopoDS_Face& face, const Fineness& fineness)
{
    if (face.IsNull())
        return nullptr;
    const double deflection = std::max(kSmallestFaceDeflection, fineness.deflection);
    if (!IsFineEnough(TriangulationOf(face), deflection))
        BRepMesh_IncrementalMesh(face, deflection, false, fineness.angle, false);
    return Counted(RawMesh(TriangulationsOf(face)));
}

std::unique_ptr<Mesh> TessellateShape(const PlacedShape& placed, const Fineness& fineness)
{
    std::unique_ptr<Mesh> mesh = placed.shape.ShapeType() == TopAbs_FACE
                                     ? TessellateFace(TopoDS::Face(placed.shape), fineness)
                                     : TessellateSolidOrShell(placed.shape, fineness);
    if (mesh)
        mesh->SetObjectName(placed.name);
    return mesh;
}

MeshList TessellateShapes(const std::vector<PlacedShape>& shapes, const Fineness& fineness)
{
    MeshList meshes(shapes.size());
    const std::vector<ShapeGroup> groups = GroupsWithoutSharedParts(shapes);
    ForEachInParallel(groups.size(), [&](std::size_t group) {
        for (const std::size_t i : groups[group])
            meshes[i] = TessellateShape(shapes[i], fineness);
    });
    return meshes;
}

void FinishMesh(Mesh& mesh)
{
    mesh.PostProcessFromVertexBuffer(nullptr, false, false, true, true, nullptr, nullptr);
    mesh.SetVolume(mesh.CalcuateVolume());
}

void FinishMeshes(const MeshList& meshes)
{
    ForEachInParallel(meshes.size(), [&](std::size_t i) { FinishMesh(*meshes[i]); });
}

} // namespace kr::cad
