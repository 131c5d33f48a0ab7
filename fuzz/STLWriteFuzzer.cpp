#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

#include <QByteArray>
#include <QList>
#include <QtEndian>

#include "fileformat/stl/STLFile.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/MeshFromBytes.h"
#include "fuzz/Require.h"

// STLFile::SaveFile of any meshes: the file is as a plain reading expects it, line by line or record by
// record, with normals of length 1 or 0; and a whole binary file is read.

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
    for (std::size_t i = 0; i < std::size_t(std::max(mesh.GetFaceNum(), 0)); ++i) {
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

bool IsFinite(const Point& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

void RequireNormal(const Point& normal, const Point* corners)
{
    const double length = std::hypot(double(normal.x), double(normal.y), double(normal.z));
    const bool areFinite = std::all_of(corners, corners + 3, IsFinite);
    Require(length == 0 || std::abs(length - 1) < 1e-5 || (!areFinite && !std::isfinite(length)));
}

// Three numbers after single spaces, six decimals each.
Point PointIn(const QByteArray& text)
{
    const QList<QByteArray> words = text.split(' ');
    Require(words.size() == 3);
    Point point;
    float* const numbers[] = {&point.x, &point.y, &point.z};
    for (int i = 0; i < 3; ++i) {
        bool isNumber = false;
        const double value = words[i].toDouble(&isNumber);
        Require(isNumber);
        Require(!std::isfinite(value) || words[i].size() - words[i].indexOf('.') == 1 + 6);
        *numbers[i] = float(value);
    }
    return point;
}

QByteArray VertexLine(const Point& point)
{
    QByteArray text = "      vertex";
    for (const float value : {point.x, point.y, point.z})
        text += ' ' + QByteArray::number(double(value), 'f', 6);
    return text;
}

void RequireText(const QByteArray& text, const Corners& corners)
{
    const QList<QByteArray> lines = text.split('\n');
    int next = 0;
    const auto line = [&] {
        Require(next < lines.size());
        return lines[next++];
    };
    const QByteArray normal = "  facet normal ";
    Require(line() == "solid model");
    for (std::size_t i = 0; i < corners.points.size(); i += 3) {
        const QByteArray first = line();
        Require(first.startsWith(normal));
        RequireNormal(PointIn(first.mid(normal.size())), &corners.points[i]);
        Require(line() == "    outer loop");
        for (std::size_t k = 0; k < 3; ++k)
            Require(line() == VertexLine(corners.points[i + k]));
        Require(line() == "    endloop");
        Require(line() == "  endfacet");
    }
    if (corners.isWhole)
        Require(line() == "endsolid model");
    Require(line().isEmpty() && next == lines.size());
}

void RequireRecords(const QByteArray& bytes, const Mesh& mesh, const Corners& corners, std::size_t headerSize)
{
    constexpr std::size_t kRecordSize = 50;
    const std::size_t facets = corners.points.size() / 3;
    Require(std::size_t(bytes.size()) == headerSize + 4 + facets * kRecordSize);
    Require(qFromLittleEndian<int>(bytes.constData() + headerSize) == std::max(mesh.GetFaceNum(), 0));
    for (std::size_t i = 0; i < facets; ++i) {
        const char* const record = bytes.constData() + headerSize + 4 + i * kRecordSize;
        Point normal;
        std::memcpy(static_cast<void*>(&normal), record, sizeof normal);
        RequireNormal(normal, &corners.points[3 * i]);
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
        RequireText(written, corners);
    else
        RequireRecords(written, mesh, corners, std::size_t(std::max(headerSize, 0)));
    Mesh read(0.03f);
    const bool isRead = STLFile::LoadFile(kName, read, false, headerSize, !isText);
    const bool isReadable = !corners.points.empty() && headerSize >= 0 && headerSize <= 1024;
    // Text may hold numbers that are none, and a file that was left unfinished may be refused or not.
    Require(isRead == isReadable || isText || !isWhole);
    fuzz::RequireWhole(read);
    return 0;
}
