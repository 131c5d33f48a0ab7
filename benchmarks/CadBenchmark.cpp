#include <algorithm>
#include <memory>
#include <vector>

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <BRepBuilderAPI_Transform.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <Poly_Triangulation.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <tbb/global_control.h>

#include "core/mesh/Mesh.h"
#include "fileformat/cad/CadDocument_p.h"
#include "fileformat/cad/STEPAndIGESFile.h"
#include "fileformat/cad/ShapeWalk_p.h"
#include "fileformat/cad/Silence_p.h"
#include "fileformat/cad/Tessellation_p.h"
#include "tests/cad/CadFiles.h"

// The steps of a load of 200 solids beside the same work done by OpenCASCADE alone, in processor time of all
// threads.

namespace {

using kr::cad::Format;
using kr::cad::PlacedShape;

constexpr int kSolidCount = 200;
constexpr double kDeflection = 2;
constexpr double kAngle = 10;

test::CadShape SolidNumber(int i)
{
    const double size = 5 + 0.1 * i;
    const test::CadPlacement place = {100.0 * (i % 20), 100.0 * (i / 20), 0};
    switch (i % 4) {
    case 0:
        return test::Moved(test::Torus(size, size / 3), place);
    case 1:
        return test::Moved(test::PiercedBox(2 * size, size, size / 2, size / 4), place);
    case 2:
        return test::Moved(test::Sphere(size), place);
    default:
        return test::Moved(test::Cylinder(size, 2 * size), place);
    }
}

/// The same solids in both formats.
class Files {
public:
    Files()
    {
        std::vector<test::CadPartPointer> parts;
        for (int i = 0; i < kSolidCount; ++i)
            parts.push_back(test::Part(QStringLiteral("Part %1").arg(i), SolidNumber(i)));
        m_areWritten =
            test::WriteSTEP(NameOf(Format::Step), parts) && test::WriteIGES(NameOf(Format::Iges), parts);
    }
    bool AreWritten() const { return m_areWritten; }
    QString NameOf(Format format) const
    {
        return m_directory.filePath(format == Format::Step ? QStringLiteral("parts.step")
                                                           : QStringLiteral("parts.iges"));
    }

private:
    QTemporaryDir m_directory;
    bool m_areWritten = false;
};

const Files& TheFiles()
{
    static const Files kFiles;
    return kFiles;
}

std::vector<TopoDS_Shape> CopiesOfFreeShapes(const Handle(TDocStd_Document) & document)
{
    TDF_LabelSequence labels;
    XCAFDoc_DocumentTool::ShapeTool(document->Main())->GetFreeShapes(labels);
    std::vector<TopoDS_Shape> copies;
    for (const TDF_Label& label : labels)
        copies.push_back(
            BRepBuilderAPI_Transform(XCAFDoc_ShapeTool::GetShape(label), gp_Trsf(), Standard_True).Shape());
    return copies;
}

template<class Reader>
std::size_t ReadByOpenCascade(Reader& reader, const QString& fileName)
{
    const Handle(TDocStd_Application) application = XCAFApp_Application::GetApplication();
    Handle(TDocStd_Document) document;
    application->NewDocument("alone", document);
    std::size_t count = 0;
    if (reader.ReadFile(fileName.toUtf8().constData()) == IFSelect_RetDone && reader.Transfer(document))
        count = CopiesOfFreeShapes(document).size();
    application->Close(document);
    return count;
}

std::size_t ReadByOpenCascade(Format format)
{
    const QString fileName = TheFiles().NameOf(format);
    if (format == Format::Iges) {
        IGESCAFControl_Reader reader;
        return ReadByOpenCascade(reader, fileName);
    }
    STEPCAFControl_Reader reader;
    reader.SetNameMode(true);
    return ReadByOpenCascade(reader, fileName);
}

std::vector<PlacedShape> ReadByLibrary(Format format)
{
    const QString fileName = TheFiles().NameOf(format);
    kr::cad::CadDocument document(fileName);
    if (!document.Read(format, fileName))
        return {};
    return kr::cad::CollectShapes(document.FreeShapes(), QStringLiteral("parts"));
}

void ReadAlone(benchmark::State& state, Format format)
{
    const kr::cad::Silence silence;
    for (auto _ : state)
        if (ReadByOpenCascade(format) != kSolidCount)
            return state.SkipWithError("solids are missing");
}

void Read(benchmark::State& state, Format format)
{
    const kr::cad::Silence silence;
    for (auto _ : state)
        if (ReadByLibrary(format).size() != kSolidCount)
            return state.SkipWithError("solids are missing");
}

void Load(benchmark::State& state, Format format)
{
    const QString fileName = TheFiles().NameOf(format);
    for (auto _ : state) {
        std::vector<Mesh*> meshes;
        if (!STEPAndIGESFile::LoadFile(fileName, meshes, kDeflection, kAngle))
            return state.SkipWithError("cannot load");
        for (Mesh* const mesh : meshes)
            delete mesh;
    }
}

void TakeTrianglesAway(const std::vector<PlacedShape>& shapes)
{
    for (const PlacedShape& placed : shapes)
        BRepTools::Clean(placed.shape);
}

int TriangleCount(const kr::cad::MeshList& meshes)
{
    int count = 0;
    for (const std::unique_ptr<Mesh>& mesh : meshes)
        count += mesh ? mesh->GetFaceNum() : 0;
    return count;
}

/// @param threadCount  0 for one a core
void Tessellate(benchmark::State& state, std::size_t threadCount)
{
    const kr::cad::Silence silence;
    std::unique_ptr<tbb::global_control> limit;
    if (threadCount > 0)
        limit =
            std::make_unique<tbb::global_control>(tbb::global_control::max_allowed_parallelism, threadCount);
    const std::vector<PlacedShape> shapes = ReadByLibrary(Format::Step);
    for (auto _ : state) {
        const kr::cad::MeshList meshes = kr::cad::TessellateShapes(shapes, {kDeflection, kAngle});
        kr::cad::FinishMeshes(meshes);
        state.PauseTiming();
        state.counters["triangles"] = TriangleCount(meshes);
        TakeTrianglesAway(shapes);
        state.ResumeTiming();
    }
}

// The mesher alone, one shape after another on one thread.
void TessellateAlone(benchmark::State& state)
{
    const std::vector<PlacedShape> shapes = ReadByLibrary(Format::Step);
    for (auto _ : state) {
        for (const PlacedShape& placed : shapes) {
            IMeshTools_Parameters parameters;
            parameters.Deflection = kr::cad::ComputeShapeSize(placed.shape) * kDeflection / 1000;
            parameters.Angle = kAngle * 0.017453292519943295;
            const BRepMesh_IncrementalMesh mesher(placed.shape, parameters);
        }
        state.PauseTiming();
        TakeTrianglesAway(shapes);
        state.ResumeTiming();
    }
}

void AppendFace(const TopoDS_Face& face, Mesh& mesh)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation) triangulation = BRep_Tool::Triangulation(face, location);
    std::vector<Vector3D<float>>& vertices = *mesh.GetVerticesVecPtr();
    const int base = static_cast<int>(vertices.size()) - 1;
    for (int i = 1; i <= triangulation->NbNodes(); ++i) {
        const gp_Pnt p = triangulation->Node(i);
        vertices.emplace_back(static_cast<float>(p.X()), static_cast<float>(p.Y()),
                              static_cast<float>(p.Z()));
    }
    for (int i = 1; i <= triangulation->NbTriangles(); ++i) {
        int a = 0, b = 0, c = 0;
        triangulation->Triangle(i).Get(a, b, c);
        mesh.GetFacesVecPtr()->emplace_back(base + a, base + b, base + c);
    }
}

// Meshes with each vertex as often as it has faces of the solid.
std::vector<Mesh> RawMeshes()
{
    std::vector<Mesh> meshes;
    const std::vector<PlacedShape> shapes = ReadByLibrary(Format::Step);
    kr::cad::TessellateShapes(shapes, {kDeflection, kAngle});
    for (const PlacedShape& placed : shapes) {
        Mesh& mesh = meshes.emplace_back(0.03f);
        for (TopExp_Explorer faces(placed.shape, TopAbs_FACE); faces.More(); faces.Next())
            AppendFace(TopoDS::Face(faces.Current()), mesh);
    }
    return meshes;
}

void MergeAndFinish(benchmark::State& state)
{
    const kr::cad::Silence silence;
    const std::vector<Mesh> raw = RawMeshes();
    double triangleCount = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<Mesh> meshes = raw;
        state.ResumeTiming();
        for (Mesh& mesh : meshes) {
            mesh.PostProcessMergeRawVertexBuffer();
            kr::cad::FinishMesh(mesh);
            triangleCount += mesh.GetFaceNum();
        }
    }
    state.counters["triangle"] =
        benchmark::Counter(triangleCount, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

} // namespace

// All threads count in the processor time.
#define KRCORE_CAD_BENCHMARK(...)                                                                            \
    BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime()

KRCORE_CAD_BENCHMARK(ReadAlone, STEP, Format::Step);
KRCORE_CAD_BENCHMARK(Read, STEP, Format::Step);
KRCORE_CAD_BENCHMARK(ReadAlone, IGES, Format::Iges);
KRCORE_CAD_BENCHMARK(Read, IGES, Format::Iges);
KRCORE_CAD_BENCHMARK(Tessellate, OneThread, 1);
KRCORE_CAD_BENCHMARK(Tessellate, AllCores, 0);
BENCHMARK(TessellateAlone)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(MergeAndFinish)->Unit(benchmark::kMillisecond);
KRCORE_CAD_BENCHMARK(Load, STEP, Format::Step);
KRCORE_CAD_BENCHMARK(Load, IGES, Format::Iges);

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (!TheFiles().AreWritten())
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
