#include "tests/reliability/Digest.h"

#include <QFileInfo>

#include "core/mesh/Mesh.h"
#include "core/mesh/MeshTextureGroup.h"

namespace test {

namespace {

void AddMatrix(Digest& digest, const Matrix4<double>& matrix)
{
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column)
            digest.Add(matrix.get(row, column));
    }
}

void AddPoint(Digest& digest, const Vector3D<float>& point)
{
    digest.Add(point.x).Add(point.y).Add(point.z);
}

void AddPicture(Digest& digest, const MeshTextureInfo& picture)
{
    // Without its directory: the same file in another place is the same result.
    digest.Add(picture.width).Add(picture.height).Add(QFileInfo(picture.fileName).fileName());
    digest.Add(picture.pixels);
}

} // namespace

Digest& Digest::AddBytes(const void* bytes, std::size_t count)
{
    m_hash.addData(static_cast<const char*>(bytes), static_cast<int>(count));
    return *this;
}

Digest& Digest::Add(const Mesh& mesh)
{
    AddList(*mesh.GetVerticesVecPtr()).AddList(*mesh.GetFacesVecPtr());
    AddList(*mesh.GetTexCoordVecPtr()).AddList(*mesh.GetTextureFacesVecPtr());
    Add(mesh.GetVertexNum()).Add(mesh.GetFaceNum()).Add(mesh.GetVolume());
    AddList(mesh.GetFaceNormals()).AddList(mesh.GetVertexNormals()).AddList(mesh.GetFaceNeighbours());
    Add(mesh.GetObjectID()).Add(mesh.GetComponentsId()).Add(mesh.GetObjectName());
    AddMatrix(*this, mesh.GetTransformMatrix());
    return *this;
}

Digest& Digest::Add(const MeshMaterialInfo& material)
{
    Add(material.name).Add(material.illum);
    for (const bool mark :
         {material.hasAmbient, material.hasDiffuse, material.hasSpecular, material.hasEmissive})
        Add(mark);
    Add(material.specularExponent).Add(material.refractionIndex).Add(material.opacity);
    for (const Vector3D<float>& color :
         {material.ambient, material.diffuse, material.specular, material.emissive})
        AddPoint(*this, color);
    for (const MeshTextureInfo* picture : {&material.diffuseTexture, &material.emissiveTexture,
                                           &material.opacityTexture, &material.bumpTexture})
        AddPicture(*this, *picture);
    return *this;
}

Digest& Digest::Add(const MeshTextureGroup& group)
{
    return Add(group.firstFaceIndex).Add(group.faceCount).Add(group.material);
}

} // namespace test
