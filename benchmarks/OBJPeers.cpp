#include "benchmarks/Peers.h"

#include <QFile>

#include "benchmarks/BenchmarkData.h"
#include "core/mesh/MeshTextureGroup.h"
#include "fileformat/obj/OBJFile.h"
#include "fileformat/stl/STLFile.h"

#ifdef HAVE_TINYOBJ
#include <tiny_obj_loader.h>
#endif
#ifdef HAVE_OCCT
#include <Poly_Triangulation.hxx>
#include <RWObj.hxx>
#endif
#ifdef HAVE_VTK
#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkOBJWriter.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#endif

namespace peers {

namespace {

Outcome LoadHere(const QString& path)
{
    return Measure([&] {
        Mesh mesh(0.03f);
        std::vector<MeshTextureGroup> groups;
        return OBJFile::LoadFile(path, mesh, groups, false, 0) ? long(mesh.GetVertexNum()) : -1;
    });
}

Outcome ReadBytes(const QString& path)
{
    return Measure([&] {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return -1L;
        std::vector<char> block(std::size_t(128) * 1024);
        qint64 total = 0;
        for (qint64 size; (size = file.read(block.data(), qint64(block.size()))) > 0;)
            total += size;
        return long(total);
    });
}

// Runs the save on the mesh of a binary STL file.
template<class Save>
Outcome MeasureSave(const QString& path, Save save)
{
    Mesh mesh(0.03f);
    if (!STLFile::LoadFile(path, mesh, true, 80, false))
        return {};
    return Measure([&] { return save(mesh) ? 1L : -1L; });
}

Outcome SaveHere(const QString& path)
{
    return MeasureSave(
        path, [&](const Mesh& mesh) { return OBJFile::SaveFile(OutputOf(path), mesh, false, false); });
}

Outcome SaveByTextStream(const QString& path)
{
    return MeasureSave(path, [&](const Mesh& mesh) {
        QFile file(OutputOf(path));
        const bool isOpen = file.open(QIODevice::WriteOnly);
        bench::WriteOBJByTextStream(file, mesh);
        return isOpen;
    });
}

#ifdef HAVE_TINYOBJ
Outcome LoadWithTinyobjloader(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    return Measure([&] {
        tinyobj::attrib_t attributes;
        std::vector<tinyobj::shape_t> shapes;
        std::vector<tinyobj::material_t> materials;
        std::string warning, error;
        return tinyobj::LoadObj(&attributes, &shapes, &materials, &warning, &error, name.constData())
                   ? long(attributes.vertices.size() / 3)
                   : -1L;
    });
}
#endif

#ifdef HAVE_OCCT
Outcome LoadWithOpenCASCADE(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    return Measure([&] {
        const Handle(Poly_Triangulation) mesh = RWObj::ReadFile(name.constData());
        return mesh.IsNull() ? -1L : long(mesh->NbNodes());
    });
}
#endif

#ifdef HAVE_VTK
vtkNew<vtkPolyData> PolyDataOf(const Mesh& mesh)
{
    vtkNew<vtkPoints> points;
    for (const Vector3D<float>& p : *mesh.GetVerticesVecPtr())
        points->InsertNextPoint(double(p.x), double(p.y), double(p.z));
    vtkNew<vtkCellArray> cells;
    for (const TriangleFace& face : *mesh.GetFacesVecPtr())
        cells->InsertNextCell({face[0], face[1], face[2]});
    vtkNew<vtkPolyData> data;
    data->SetPoints(points);
    data->SetPolys(cells);
    return data;
}

Outcome SaveWithVTK(const QString& path)
{
    Mesh mesh(0.03f);
    if (!STLFile::LoadFile(path, mesh, true, 80, false))
        return {};
    const vtkNew<vtkPolyData> data = PolyDataOf(mesh);
    return Measure([&] {
        vtkNew<vtkOBJWriter> writer;
        writer->SetFileName(QFile::encodeName(OutputOf(path)).constData());
        writer->SetInputData(data);
        return writer->Write() == 1 ? 1L : -1L;
    });
}
#endif

} // namespace

std::vector<Entry> OBJEntries()
{
    return {
        {Job::LoadOBJ, "this library", LoadHere},
        {Job::LoadOBJ, "read bytes", ReadBytes},
        {Job::SaveOBJ, "this library", SaveHere},
        {Job::SaveOBJ, "text stream", SaveByTextStream},
#ifdef HAVE_TINYOBJ
        {Job::LoadOBJ, "tinyobjloader", LoadWithTinyobjloader},
#endif
#ifdef HAVE_OCCT
        {Job::LoadOBJ, "OpenCASCADE", LoadWithOpenCASCADE},
#endif
#ifdef HAVE_VTK
        {Job::SaveOBJ, "VTK", SaveWithVTK},
#endif
    };
}

} // namespace peers
