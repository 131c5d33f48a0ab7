#include "benchmarks/Peers.h"

#include <cstring>

#include <QFile>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"

#ifdef HAVE_ADMESH
#include <admesh/stl.h>
#endif
#ifdef HAVE_OCCT
#include <Poly_Triangulation.hxx>
#include <RWStl.hxx>
#endif

namespace peers {

namespace {

using Point = Vector3D<float>;

Outcome LoadHere(const QString& path)
{
    return Measure([&] {
        Mesh mesh(0.03f);
        return STLFile::LoadFile(path, mesh, false, 80, false) ? long(mesh.GetVertexNum()) : -1;
    });
}

Outcome SaveHere(const QString& path, bool ascii)
{
    Mesh mesh(0.03f);
    if (!STLFile::LoadFile(path, mesh, true, 80, false))
        return {};
    return Measure([&] { return STLFile::SaveFile(OutputOf(path), mesh, ascii, 80) ? 1L : -1; });
}

Outcome SaveBinaryHere(const QString& path)
{
    return SaveHere(path, false);
}

Outcome SaveTextHere(const QString& path)
{
    return SaveHere(path, true);
}

Outcome CopyCorners(const QString& path)
{
    return Measure([&] {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !file.seek(84))
            return -1L;
        std::vector<Point> corners;
        corners.reserve(std::size_t(file.size()) / 50 * 3);
        std::vector<char> block(std::size_t(50) * 2048);
        for (qint64 size; (size = file.read(block.data(), qint64(block.size()))) > 0;)
            for (qint64 at = 0; at + 50 <= size; at += 50) {
                Point facet[3];
                std::memcpy(facet, &block[std::size_t(at) + 12], sizeof facet);
                corners.insert(corners.end(), facet, facet + 3);
            }
        return long(corners.size());
    });
}

#ifdef HAVE_ADMESH
Outcome LoadWithADMesh(const QString& path)
{
    QByteArray name = QFile::encodeName(path);
    return Measure([&] {
        stl_file stl;
        stl_open(&stl, name.data());
        stl_check_facets_exact(&stl);
        float tolerance = stl.stats.shortest_edge;
        for (int i = 0; i < 2 && stl.stats.connected_facets_3_edge < stl.stats.number_of_facets; ++i) {
            stl_check_facets_nearby(&stl, tolerance);
            tolerance += stl.stats.bounding_diameter / 10000;
        }
        stl_fix_normal_directions(&stl);
        stl_fix_normal_values(&stl);
        stl_calculate_volume(&stl);
        stl_generate_shared_vertices(&stl);
        const long vertices = stl.stats.shared_vertices;
        stl_close(&stl);
        return vertices;
    });
}
#endif

#ifdef HAVE_OCCT
Outcome LoadWithOpenCASCADE(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    return Measure([&] {
        const Handle(Poly_Triangulation) mesh = RWStl::ReadFile(name.constData());
        return mesh.IsNull() ? -1L : long(mesh->NbNodes());
    });
}

Outcome SaveWithOpenCASCADE(const QString& path, bool ascii)
{
    const Handle(Poly_Triangulation) mesh = RWStl::ReadFile(QFile::encodeName(path).constData());
    const OSD_Path out(QFile::encodeName(OutputOf(path)).constData());
    return Measure(
        [&] { return (ascii ? RWStl::WriteAscii(mesh, out) : RWStl::WriteBinary(mesh, out)) ? 1L : -1L; });
}

Outcome SaveBinaryWithOpenCASCADE(const QString& path)
{
    return SaveWithOpenCASCADE(path, false);
}

Outcome SaveTextWithOpenCASCADE(const QString& path)
{
    return SaveWithOpenCASCADE(path, true);
}
#endif

} // namespace

std::vector<Entry> STLEntries()
{
    return {
        {Job::LoadBinarySTL, "this library", LoadHere},
        {Job::LoadBinarySTL, "copy", CopyCorners},
        {Job::LoadTextSTL, "this library", LoadHere},
        {Job::SaveBinarySTL, "this library", SaveBinaryHere},
        {Job::SaveTextSTL, "this library", SaveTextHere},
#ifdef HAVE_ADMESH
        {Job::LoadBinarySTL, "ADMesh", LoadWithADMesh},
        {Job::LoadTextSTL, "ADMesh", LoadWithADMesh},
#endif
#ifdef HAVE_OCCT
        {Job::LoadBinarySTL, "OpenCASCADE", LoadWithOpenCASCADE},
        {Job::LoadTextSTL, "OpenCASCADE", LoadWithOpenCASCADE},
        {Job::SaveBinarySTL, "OpenCASCADE", SaveBinaryWithOpenCASCADE},
        {Job::SaveTextSTL, "OpenCASCADE", SaveTextWithOpenCASCADE},
#endif
    };
}

} // namespace peers
