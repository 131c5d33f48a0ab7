#include <cstdint>
#include <string_view>
#include <vector>

#include <QFile>
#include <QString>
#include <QTextStream>

#include "core/common/LargePages_p.h"
#include "core/mesh/Mesh.h"
#include "fileformat/common/BlockWriter_p.h"
#include "fileformat/common/PlainFile_p.h"
#include "fileformat/common/TextSink_p.h"
#include "fileformat/obj/OBJFile.h"

namespace {

using kr::BlockText;
using kr::BlockWriter;
using kr::StreamText;
using Faces = std::vector<TriangleFace>;
using Point = Vector3D<float>;
using TexCoord = Vector2D<float>;

constexpr std::string_view kHeader = "# OBJ Model File\n"
                                     "# Exported by Loftmaren\n"
                                     "# File units = millimeters\n"
                                     "\n"
                                     "g Mesh1\n"
                                     "\n";

// The numbers that the entries of one list of one mesh have in the file. The file counts from 1, over all
// meshes, in the order in which faces first use the entries. Memory is touched where entries are used.
class FileNumbers {
public:
    FileNumbers() = default;
    /// @param written  entries of the same kind that earlier meshes have written
    FileNumbers(std::size_t listSize, std::uint64_t written) : m_places(listSize), m_written(written) {}

    /// True the first time for each entry, which then has a number.
    bool Add(std::size_t entry)
    {
        if (m_places[entry] != 0)
            return false;
        m_places[entry] = ++m_count;
        return true;
    }
    std::uint64_t operator[](int entry) const
    {
        return m_written + m_places[static_cast<std::size_t>(entry)];
    }
    std::uint64_t WrittenAfterwards() const { return m_written + m_count; }

private:
    kr::Scratch<std::uint32_t> m_places; // from 1 among those of this mesh, 0 for what is not used
    std::uint64_t m_written = 0;
    std::uint32_t m_count = 0;
};

// One mesh of the list. The same mesh may be there several times, with numbers of its own each time.
struct Part {
    const Mesh& mesh;
    bool isTextured;
    FileNumbers vertices;
    FileNumbers texCoords;

    int FaceCount() const { return mesh.GetFaceNum(); }
    const TriangleFace& Face(int i) const { return (*mesh.GetFacesVecPtr())[static_cast<std::size_t>(i)]; }
    const TriangleFace& TextureFace(int i) const
    {
        return (*mesh.GetTextureFacesVecPtr())[static_cast<std::size_t>(i)];
    }
    const Point& Corner(const TriangleFace& face, int corner) const
    {
        return (*mesh.GetVerticesVecPtr())[static_cast<std::size_t>(face[corner])];
    }
};

// A negative count is that of no list.
bool HasTextureFaceForEachFace(const Mesh& mesh)
{
    return mesh.GetTextureFacesVecPtr()->size() == static_cast<std::size_t>(mesh.GetFaceNum());
}

std::vector<Part> PartsOf(const std::vector<const Mesh*>& meshes, const std::vector<bool>& textureFlags)
{
    std::vector<Part> parts;
    parts.reserve(meshes.size());
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        const bool isWanted = i < textureFlags.size() && textureFlags[i];
        parts.push_back({*meshes[i], isWanted && HasTextureFaceForEachFace(*meshes[i]), {}, {}});
    }
    return parts;
}

template<class Line>
void PutEntry(Line& line, const Point& position)
{
    line.Words("v ");
    EndWithPoint(line, position);
}

template<class Line>
void PutEntry(Line& line, const TexCoord& coordinate)
{
    line.Words("vt ");
    line.Numbers(coordinate.x, coordinate.y);
    line.Words("\n");
}

// Writes and numbers the entries of a list as faces first use them. at(), not []: counts and indices come
// from the host and std::out_of_range is the promised answer, behind the lines of all entries before.
template<class Text, class Entry>
FileNumbers WriteUsed(Text& text, const Faces& faces, int faceCount, const std::vector<Entry>& entries,
                      std::uint64_t written)
{
    FileNumbers numbers(entries.size(), written);
    for (int i = 0; i < faceCount; ++i) {
        for (const int index : faces.at(static_cast<std::size_t>(i)).v) {
            const auto place = static_cast<std::size_t>(index);
            const Entry& entry = entries.at(place);
            if (numbers.Add(place)) {
                auto line = text.Line();
                PutEntry(line, entry);
            }
        }
    }
    return numbers;
}

template<class Text>
void WriteVertices(Text& text, std::vector<Part>& parts)
{
    std::uint64_t written = 0;
    for (Part& part : parts) {
        const Mesh& mesh = part.mesh;
        part.vertices =
            WriteUsed(text, *mesh.GetFacesVecPtr(), mesh.GetFaceNum(), *mesh.GetVerticesVecPtr(), written);
        written = part.vertices.WrittenAfterwards();
    }
    WriteWords(text, "\n");
}

template<class Text>
void WriteTexCoords(Text& text, std::vector<Part>& parts)
{
    std::uint64_t written = 0;
    for (Part& part : parts) {
        if (!part.isTextured)
            continue;
        const Mesh& mesh = part.mesh;
        part.texCoords = WriteUsed(text, *mesh.GetTextureFacesVecPtr(), mesh.GetFaceNum(),
                                   *mesh.GetTexCoordVecPtr(), written);
        written = part.texCoords.WrittenAfterwards();
    }
    WriteWords(text, "\n");
}

// From here on all counts and indices have been seen to lie within their lists.
template<class Text>
void WriteNormals(Text& text, const std::vector<Part>& parts)
{
    for (const Part& part : parts) {
        for (int i = 0; i < part.FaceCount(); ++i) {
            const TriangleFace& face = part.Face(i);
            auto line = text.Line();
            line.Words("vn ");
            EndWithPoint(line,
                         kr::NormalOf(part.Corner(face, 0), part.Corner(face, 1), part.Corner(face, 2)));
        }
    }
    WriteWords(text, "\n");
}

// "a", "a/b", "a//n" or "a/b/n", each behind a blank
template<class Line>
void PutCorner(Line& line, const Part& part, int face, int corner, std::uint64_t normal)
{
    line.Words(" ");
    line.Integer(part.vertices[part.Face(face)[corner]]);
    if (part.isTextured) {
        line.Words("/");
        line.Integer(part.texCoords[part.TextureFace(face)[corner]]);
    }
    if (normal != 0) {
        line.Words(part.isTextured ? "/" : "//");
        line.Integer(normal);
    }
}

template<class Text>
void WriteFaces(Text& text, const std::vector<Part>& parts, bool withNormals)
{
    // Each face has the normal of its own number.
    std::uint64_t normal = 0;
    for (const Part& part : parts) {
        for (int i = 0; i < part.FaceCount(); ++i) {
            normal += withNormals ? 1 : 0;
            auto line = text.Line();
            line.Words("f");
            for (int corner = 0; corner < 3; ++corner)
                PutCorner(line, part, i, corner, normal);
            line.Words("\n");
        }
    }
}

template<class Text>
void WriteBody(Text text, const std::vector<const Mesh*>& meshes, const std::vector<bool>& textureFlags,
               bool withNormals)
{
    std::vector<Part> parts = PartsOf(meshes, textureFlags);
    WriteVertices(text, parts);
    WriteTexCoords(text, parts);
    if (withNormals)
        WriteNormals(text, parts);
    WriteFaces(text, parts, withNormals);
}

} // namespace

bool OBJFile::SaveFile(const QString& fileName, const std::vector<const Mesh*>& meshes,
                       const std::vector<bool>& textureFlags, bool withNormals)
{
    QFile file(fileName);
    if (!kr::OpenForWriting(file, QIODevice::Text))
        return false;
    BlockWriter writer(file);
    BlockText text(writer);
    WriteWords(text, kHeader);
    WriteBody(text, meshes, textureFlags, withNormals);
    return true;
}

bool OBJFile::SaveFile(const QString& fileName, const Mesh& mesh, bool textured, bool withNormals)
{
    return SaveFile(fileName, std::vector<const Mesh*>{&mesh}, std::vector<bool>{textured}, withNormals);
}

bool OBJFile::SaveFile(const QString& fileName, const std::vector<Mesh*>& meshes,
                       const std::vector<bool>& textureFlags, bool withNormals)
{
    return SaveFile(fileName, std::vector<const Mesh*>(meshes.begin(), meshes.end()), textureFlags,
                    withNormals);
}

void OBJFile::writeMesh(QTextStream& stream, const std::vector<const Mesh*>& meshes,
                        const std::vector<bool>& textureFlags, bool withNormals)
{
    WriteBody(StreamText(stream), meshes, textureFlags, withNormals);
}
