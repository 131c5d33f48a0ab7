#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>

#include <QByteArray>
#include <QFile>

#include "fileformat/stl/STLFile.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/MeshFromBytes.h"
#include "fuzz/Require.h"

// STLFile::SaveFile of any meshes: the bytes are those of a plain writer, but for normals, which must be of
// length 1 or 0; and what was written is read.

namespace {

using fuzz::Require;
using Point = Vector3D<float>;

/// Corners of the facets that come before the first wrong index, or the end of the list.
struct Corners {
    std::vector<Point> points;
    bool isWhole = true;
};

Corners CornersOf(const Mesh& mesh)
{
    Corners corners;
    const std::vector<TriangleFace>& faces = *mesh.GetFacesVecPtr();
    const std::vector<Point>& vertices = *mesh.GetVerticesVecPtr();
    for (std::size_t i = 0; i < std::size_t(mesh.GetFaceNum()); ++i) {
        if (i >= faces.size())
            return {corners.points, false};
        for (const int index : faces[i].v) {
            if (index < 0 || std::size_t(index) >= vertices.size())
                return {corners.points, false};
        }
        for (const int index : faces[i].v)
            corners.points.push_back(vertices[std::size_t(index)]);
    }
    return corners;
}

QByteArray PointText(const char* word, const Point& point)
{
    QByteArray text = word;
    for (const float value : {point.x, point.y, point.z})
        text += ' ' + QByteArray::number(double(value), 'f', 6);
    return text + '\n';
}

// Without the lines of normals.
QByteArray TextOf(const Corners& corners)
{
    QByteArray text = "solid model\n";
    for (std::size_t i = 0; i < corners.points.size(); i += 3) {
        text += "    outer loop\n";
        for (std::size_t k = 0; k < 3; ++k)
            text += PointText("      vertex", corners.points[i + k]);
        text += "    endloop\n  endfacet\n";
    }
    return text + (corners.isWhole ? "endsolid model\n" : "");
}

void RequireUnitOrZero(const Point& normal)
{
    const double length = std::hypot(double(normal.x), double(normal.y), double(normal.z));
    Require(length == 0 || std::abs(length - 1) < 1e-5 || std::isnan(length));
}

QByteArray WithoutNormals(const QByteArray& text)
{
    QByteArray rest;
    for (const QByteArray& line : text.split('\n')) {
        if (!line.startsWith("  facet normal "))
            rest += line + '\n';
    }
    rest.chop(1);
    return rest;
}

void RequireRecords(const QByteArray& bytes, const Corners& corners, std::size_t headerSize)
{
    constexpr std::size_t kRecordSize = 50;
    const std::size_t facets = corners.points.size() / 3;
    Require(std::size_t(bytes.size()) == headerSize + 4 + facets * kRecordSize);
    for (std::size_t i = 0; i < facets; ++i) {
        const char* const record = bytes.constData() + headerSize + 4 + i * kRecordSize;
        Point normal;
        std::memcpy(static_cast<void*>(&normal), record, sizeof normal);
        RequireUnitOrZero(normal);
        Require(std::memcmp(record + sizeof normal, &corners.points[3 * i], 3 * sizeof(Point)) == 0);
        Require(record[48] == 0 && record[49] == 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile kFile;
    static const QString kName = kFile.Name();
    FuzzedDataProvider bytes(data, size);
    const bool isText = bytes.ConsumeBool();
    const int headerSize = bytes.ConsumeBool() ? 80 : bytes.ConsumeIntegralInRange<int>(-2, 1200);
    Mesh mesh(0.03f);
    fuzz::MeshFromBytes(bytes).Fill(mesh, bytes.ConsumeBool() ? 0 : -1);
    const Corners corners = CornersOf(mesh);
    kFile.Write(nullptr, 0);
    bool isWhole = true;
    try {
        Require(STLFile::SaveFile(kName, mesh, isText, headerSize));
    } catch (const std::out_of_range&) {
        isWhole = false;
    }
    Require(isWhole == corners.isWhole);
    const QByteArray written = kFile.Read();
    if (isText)
        Require(WithoutNormals(written) == TextOf(corners));
    else
        RequireRecords(written, corners, std::size_t(std::max(headerSize, 0)));
    Mesh read(0.03f);
    const bool isRead = STLFile::LoadFile(kName, read, false, headerSize, !isText);
    // Without facets there is nothing to read, and a text without a corner is taken for a binary file.
    Require(isRead == (isWhole && !corners.points.empty() && headerSize >= 0 && headerSize <= 1024) ||
            isText || !isWhole);
    fuzz::RequireWhole(read);
    return 0;
}
