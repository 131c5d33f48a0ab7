#pragma once

#include <string>
#include <vector>

#include "core/mesh/Mesh.h"
#include "fileformat/obj/OBJFile.h"
#include "tests/common/Directory.h"

namespace test {

using Point = Vector3D<float>;
using TexCoord = Vector2D<float>;
using Points = std::vector<Point>;
using TexCoords = std::vector<TexCoord>;
using Faces = std::vector<TriangleFace>;
using Groups = std::vector<MeshTextureGroup>;
using Materials = std::vector<MeshMaterialInfo>;

struct LoadedObj {
    bool isLoaded = false;
    Mesh mesh{0.03f};
    Groups groups;

    const Points& Vertices() const { return *mesh.GetVerticesVecPtr(); }
    const Faces& ReadFaces() const { return *mesh.GetFacesVecPtr(); }
    const TexCoords& ReadTexCoords() const { return *mesh.GetTexCoordVecPtr(); }
    const Faces& TextureFaces() const { return *mesh.GetTextureFacesVecPtr(); }
    std::vector<std::string> GroupNames() const
    {
        std::vector<std::string> names;
        for (const MeshTextureGroup& group : groups)
            names.push_back(group.material.name);
        return names;
    }
};

inline LoadedObj LoadObjFile(const QString& path, int textureLoadOption = 0)
{
    LoadedObj obj;
    obj.isLoaded = OBJFile::LoadFile(path, obj.mesh, obj.groups, false, textureLoadOption);
    return obj;
}

inline LoadedObj LoadObj(const QByteArray& text)
{
    const Directory directory;
    LoadedObj obj = LoadObjFile(directory.Write(text));
    EXPECT_TRUE(obj.isLoaded);
    return obj;
}

/// An OBJ file with a library "lib.mtl" beside it.
inline LoadedObj LoadObj(const QByteArray& text, const QByteArray& library)
{
    const Directory directory;
    (void)directory.Write(library, QStringLiteral("lib.mtl"));
    LoadedObj obj = LoadObjFile(directory.Write(text));
    EXPECT_TRUE(obj.isLoaded);
    return obj;
}

inline Materials LoadMtl(const QByteArray& text)
{
    const Directory directory;
    Materials materials;
    EXPECT_TRUE(OBJFile::LoadMTLFile(directory.Write(text), materials, 0));
    return materials;
}

/// Vertices 1 to @p count, (i, 0, 0) each, for faces to use.
inline QByteArray VertexLines(int count)
{
    QByteArray text;
    for (int i = 1; i <= count; ++i)
        text += "v " + QByteArray::number(i) + " 0 0\n";
    return text;
}

} // namespace test
