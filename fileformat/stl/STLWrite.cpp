#include <algorithm>
#include <cstring>
#include <string_view>

#include <QFile>
#include <QString>
#include <QTextStream>

#include "core/mesh/Mesh.h"
#include "core/utility/Utility.h"
#include "fileformat/common/BlockWriter_p.h"
#include "fileformat/common/PlainFile_p.h"
#include "fileformat/common/TextSink_p.h"
#include "fileformat/stl/STLFile.h"

namespace {

using kr::BlockText;
using kr::BlockWriter;
using kr::NormalOf;
using kr::OpenForWriting;
using kr::StreamText;
using Point = Vector3D<float>;

constexpr std::size_t kNormalAndCorners = 4;
constexpr std::size_t kRecordSize = kNormalAndCorners * sizeof(Point) + sizeof(quint16);

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "numbers are stored as the host holds them");

template<class Line>
void PutPoint(Line& line, std::string_view beginning, const Point& point)
{
    line.Words(beginning);
    kr::EndWithPoint(line, point);
}

template<class Text>
void WriteFacetText(Text& text, const Point& a, const Point& b, const Point& c)
{
    auto line = text.Line();
    PutPoint(line, "  facet normal ", NormalOf(a, b, c));
    line.Words("    outer loop\n");
    for (const Point* const corner : {&a, &b, &c})
        PutPoint(line, "      vertex ", *corner);
    line.Words("    endloop\n  endfacet\n");
}

// 50 bytes, see STLBinary_p.cpp
void FillRecord(char* record, const Point& a, const Point& b, const Point& c, quint16 attribute)
{
    const Point points[kNormalAndCorners] = {NormalOf(a, b, c), a, b, c};
    std::memcpy(record, points, sizeof points);
    std::memcpy(record + sizeof points, &attribute, sizeof attribute);
}

void WriteFacetRecord(BlockWriter& writer, const Point& a, const Point& b, const Point& c)
{
    char* const record = writer.Reserve(kRecordSize);
    FillRecord(record, a, b, c, 0);
    writer.Commit(record + kRecordSize);
}

// Calls visit(a, b, c) for each facet in order.
template<class Visit>
void VisitFacets(const Mesh& mesh, Visit visit)
{
    const std::vector<TriangleFace>& faces = *mesh.GetFacesVecPtr();
    const std::vector<Point>& vertices = *mesh.GetVerticesVecPtr();
    for (int i = 0; i < mesh.GetFaceNum(); ++i) {
        // at(), not []: counts and indices come from the host and std::out_of_range is the promised answer.
        const TriangleFace& face = faces.at(static_cast<std::size_t>(i));
        visit(vertices.at(static_cast<std::size_t>(face[0])), vertices.at(static_cast<std::size_t>(face[1])),
              vertices.at(static_cast<std::size_t>(face[2])));
    }
}

template<class Visit>
void VisitFacets(const std::vector<Point>& corners, Visit visit)
{
    for (std::size_t i = 0; i + 3 <= corners.size(); i += 3)
        visit(corners[i], corners[i + 1], corners[i + 2]);
}

std::int64_t FacetCount(const Mesh& mesh)
{
    return std::max(mesh.GetFaceNum(), 0); // as many as are visited
}

std::int64_t FacetCount(const std::vector<Point>& corners)
{
    return static_cast<std::int64_t>(corners.size() / 3);
}

// The solids are meshes or bare soups; lists of pointers, so that one function serves both.
template<class Solid>
bool SaveText(const QString& fileName, const std::vector<const Solid*>& solids)
{
    QFile file(fileName);
    if (!OpenForWriting(file, QIODevice::Text))
        return false;
    BlockWriter writer(file);
    BlockText text(writer);
    for (const Solid* const solid : solids) {
        kr::WriteWords(text, "solid model\n");
        VisitFacets(*solid,
                    [&](const Point& a, const Point& b, const Point& c) { WriteFacetText(text, a, b, c); });
        kr::WriteWords(text, "endsolid model\n");
    }
    return true;
}

QByteArray HeaderText()
{
    const std::string now =
        Utility::FormatDateString("dd-MM-yyyy") + ' ' + Utility::FormatTimeString("HH:mm:ss");
    return QStringLiteral("STL EXPORTED BY LOFTMAREN. %1").arg(QString::fromStdString(now)).toUtf8();
}

void WriteHeader(BlockWriter& writer, int headerSize)
{
    const auto size = static_cast<std::size_t>(std::max(headerSize, 0));
    const QByteArray text = HeaderText();
    const std::size_t textSize = std::min(size, static_cast<std::size_t>(text.size()));
    writer.Append({text.constData(), textSize});
    writer.AppendZeros(size - textSize);
}

template<class Solid>
void WriteCount(BlockWriter& writer, const std::vector<const Solid*>& solids)
{
    std::int64_t sum = 0;
    for (const Solid* const solid : solids)
        sum += FacetCount(*solid);
    const auto count = static_cast<std::uint32_t>(sum);
    char bytes[sizeof count];
    std::memcpy(bytes, &count, sizeof count);
    writer.Append({bytes, sizeof bytes});
}

template<class Solid>
bool SaveBinary(const QString& fileName, const std::vector<const Solid*>& solids, int headerSize)
{
    QFile file(fileName);
    if (!OpenForWriting(file))
        return false;
    BlockWriter writer(file);
    WriteHeader(writer, headerSize);
    WriteCount(writer, solids);
    for (const Solid* const solid : solids)
        VisitFacets(*solid, [&](const Point& a, const Point& b, const Point& c) {
            WriteFacetRecord(writer, a, b, c);
        });
    return true;
}

template<class Solid>
bool Save(const QString& fileName, const std::vector<const Solid*>& solids, bool ascii, int headerSize)
{
    return ascii ? SaveText(fileName, solids) : SaveBinary(fileName, solids, headerSize);
}

} // namespace

bool STLFile::SaveFile(const QString& fileName, const std::vector<const Mesh*>& meshes, bool ascii,
                       int headerSize)
{
    return Save(fileName, meshes, ascii, headerSize);
}

bool STLFile::SaveFile(const QString& fileName, const Mesh& mesh, bool ascii, int headerSize)
{
    return SaveFile(fileName, std::vector<const Mesh*>{&mesh}, ascii, headerSize);
}

bool STLFile::SaveFile(const QString& fileName, const std::vector<Mesh*>& meshes, bool ascii, int headerSize)
{
    return SaveFile(fileName, std::vector<const Mesh*>(meshes.begin(), meshes.end()), ascii, headerSize);
}

bool STLFile::SaveFile(const QString& fileName, const std::vector<Vector3D<float>>& corners, bool ascii,
                       int headerSize)
{
    return Save(fileName, std::vector<const std::vector<Point>*>{&corners}, ascii, headerSize);
}

bool STLFile::WriteMeshAscii(QTextStream& stream, const Mesh& mesh)
{
    VisitFacets(mesh,
                [&](const Point& a, const Point& b, const Point& c) { WriteFaceAscii(stream, a, b, c); });
    return true;
}

bool STLFile::WriteFaceAscii(QTextStream& stream, const Vector3D<float>& a, const Vector3D<float>& b,
                             const Vector3D<float>& c)
{
    StreamText text(stream);
    WriteFacetText(text, a, b, c);
    return true;
}

bool STLFile::WriteMeshBinary(QFile& file, const Mesh& mesh)
{
    BlockWriter writer(file);
    VisitFacets(mesh,
                [&](const Point& a, const Point& b, const Point& c) { WriteFacetRecord(writer, a, b, c); });
    return true;
}

bool STLFile::WriteFaceBinary(QFile& file, const Vector3D<float>& a, const Vector3D<float>& b,
                              const Vector3D<float>& c, quint16 attribute)
{
    char record[kRecordSize];
    FillRecord(record, a, b, c, attribute);
    file.write(record, kRecordSize);
    return true;
}
