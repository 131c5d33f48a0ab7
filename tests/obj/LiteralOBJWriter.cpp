#include "tests/obj/LiteralOBJWriter.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "core/mesh/Mesh.h"

namespace test {

namespace {

using Point = Vector3D<float>;

/// Numbers for the entries of one kind: positions or texture coordinates.
struct Numbering {
    std::map<int, int> numbers;
    std::vector<int> largest; // a mesh
    int offset = 0;

    bool Insert(int index)
    {
        const int next = static_cast<int>(numbers.size());
        largest.back() = std::max(largest.back(), index);
        return numbers.emplace(index + offset, next).second;
    }
};

const TriangleFace& At(const std::vector<TriangleFace>* faces, int i)
{
    return faces->at(static_cast<std::size_t>(i));
}

Point PositionOf(const Mesh& mesh, int index)
{
    return mesh.GetVerticesVecPtr()->at(static_cast<std::size_t>(index));
}

bool IsTextured(const Mesh& mesh, bool flag)
{
    return flag && static_cast<int>(mesh.GetTextureFacesVecPtr()->size()) == mesh.GetFaceNum();
}

void WriteVertices(QTextStream& stream, const Mesh& mesh, Numbering& numbering)
{
    numbering.largest.push_back(-1);
    for (int i = 0; i < mesh.GetFaceNum(); ++i) {
        for (const int index : At(mesh.GetFacesVecPtr(), i).v) {
            if (!numbering.Insert(index))
                continue;
            const Point position = PositionOf(mesh, index);
            stream << "v " << position.x << " " << position.y << " " << position.z << "\n";
        }
    }
    numbering.offset += numbering.largest.back() + 1;
}

void WriteTexCoords(QTextStream& stream, const Mesh& mesh, bool flag, Numbering& numbering)
{
    numbering.largest.push_back(-1);
    if (!IsTextured(mesh, flag) || mesh.GetTextureFacesVecPtr()->empty())
        return;
    for (const TriangleFace& face : *mesh.GetTextureFacesVecPtr()) {
        for (const int index : face.v) {
            if (!numbering.Insert(index))
                continue;
            const Vector2D<float> uv = mesh.GetTexCoordVecPtr()->at(static_cast<std::size_t>(index));
            stream << "vt " << uv.x << " " << uv.y << "\n";
        }
    }
    numbering.offset += numbering.largest.back() + 1;
}

void WriteNormals(QTextStream& stream, const Mesh& mesh)
{
    for (int i = 0; i < mesh.GetFaceNum(); ++i) {
        const TriangleFace& face = At(mesh.GetFacesVecPtr(), i);
        Point normal;
        Point::CalcNormal(PositionOf(mesh, face[0]), PositionOf(mesh, face[1]), PositionOf(mesh, face[2]),
                          normal);
        stream << "vn " << normal.x << " " << normal.y << " " << normal.z << "\n";
    }
}

struct Offsets {
    int vertex = 0;
    int texture = 0;
};

void WriteFaces(QTextStream& stream, const Mesh& mesh, bool textured, bool withNormals,
                const Numbering& vertices, const Numbering& texCoords, const Offsets& offsets,
                int& faceNumber)
{
    for (int i = 0; i < mesh.GetFaceNum(); ++i, ++faceNumber) {
        stream << "f";
        for (int c = 0; c < 3; ++c) {
            stream << " " << vertices.numbers.at(At(mesh.GetFacesVecPtr(), i)[c] + offsets.vertex) + 1;
            if (textured)
                stream << "/"
                       << texCoords.numbers.at(At(mesh.GetTextureFacesVecPtr(), i)[c] + offsets.texture) + 1;
            if (withNormals)
                stream << (textured ? "/" : "//") << faceNumber;
        }
        stream << "\n";
    }
}

} // namespace

void WriteLiterally(QTextStream& stream, const std::vector<const Mesh*>& meshes,
                    const std::vector<bool>& textureFlags, bool withNormals)
{
    Numbering vertices, texCoords;
    for (const Mesh* const mesh : meshes)
        WriteVertices(stream, *mesh, vertices);
    stream << "\n";
    for (std::size_t i = 0; i < meshes.size(); ++i)
        WriteTexCoords(stream, *meshes[i], textureFlags.at(i), texCoords);
    stream << "\n";
    if (withNormals) {
        for (const Mesh* const mesh : meshes)
            WriteNormals(stream, *mesh);
        stream << "\n";
    }
    Offsets offsets;
    int faceNumber = 1;
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        WriteFaces(stream, *meshes[i], IsTextured(*meshes[i], textureFlags.at(i)), withNormals, vertices,
                   texCoords, offsets, faceNumber);
        offsets.vertex += vertices.largest[i] + 1;
        offsets.texture += texCoords.largest[i] + 1;
    }
}

QByteArray LiteralOBJ(const std::vector<const Mesh*>& meshes, const std::vector<bool>& textureFlags,
                      bool withNormals)
{
    QByteArray bytes;
    QTextStream stream(&bytes);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
    stream.setRealNumberPrecision(6);
    stream << "# OBJ Model File\n# Exported by Loftmaren\n# File units = millimeters\n\ng Mesh1\n\n";
    try {
        WriteLiterally(stream, meshes, textureFlags, withNormals);
    } catch (const std::out_of_range&) {
        // What was written before stays.
    }
    stream.flush();
    return bytes;
}

} // namespace test
