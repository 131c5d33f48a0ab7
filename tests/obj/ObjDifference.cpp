#include "tests/obj/ObjDifference.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/mesh/Mesh.h"

namespace test {

namespace {

template<class Float>
bool IsSameNumber(Float a, Float b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

bool IsSame(const Vector3D<float>& a, const Vector3D<float>& b)
{
    return IsSameNumber(a.x, b.x) && IsSameNumber(a.y, b.y) && IsSameNumber(a.z, b.z);
}

bool IsSame(const Vector2D<float>& a, const Vector2D<float>& b)
{
    return IsSameNumber(a.x, b.x) && IsSameNumber(a.y, b.y);
}

bool IsSame(const TriangleFace& a, const TriangleFace& b)
{
    return a == b;
}

bool IsSame(const MeshTextureInfo& a, const MeshTextureInfo& b)
{
    return a.width == b.width && a.height == b.height && a.fileName == b.fileName && a.pixels == b.pixels;
}

bool IsSame(const MeshMaterialInfo& a, const MeshMaterialInfo& b)
{
    return a.name == b.name && a.hasAmbient == b.hasAmbient && a.hasDiffuse == b.hasDiffuse &&
           a.hasSpecular == b.hasSpecular && a.hasEmissive == b.hasEmissive &&
           a.texCoordSet == b.texCoordSet && a.illum == b.illum &&
           IsSameNumber(a.specularExponent, b.specularExponent) &&
           IsSameNumber(a.refractionIndex, b.refractionIndex) && IsSameNumber(a.opacity, b.opacity) &&
           IsSame(a.ambient, b.ambient) && IsSame(a.diffuse, b.diffuse) && IsSame(a.specular, b.specular) &&
           IsSame(a.emissive, b.emissive) && IsSame(a.diffuseTexture, b.diffuseTexture) &&
           IsSame(a.emissiveTexture, b.emissiveTexture) && IsSame(a.opacityTexture, b.opacityTexture) &&
           IsSame(a.bumpTexture, b.bumpTexture);
}

bool IsSame(const MeshTextureGroup& a, const MeshTextureGroup& b)
{
    return a.firstFaceIndex == b.firstFaceIndex && a.faceCount == b.faceCount &&
           IsSame(a.material, b.material);
}

template<class T>
std::string ListDifference(const char* name, const std::vector<T>& list, const std::vector<T>& expected)
{
    if (list.size() != expected.size())
        return std::to_string(list.size()) + ' ' + name + " instead of " + std::to_string(expected.size()) +
               "; ";
    for (std::size_t i = 0; i < list.size(); ++i)
        if (!IsSame(list[i], expected[i]))
            return std::string(name) + " differ at " + std::to_string(i) + "; ";
    return {};
}

std::vector<TriangleFace> FacesInRange(std::vector<TriangleFace> faces, std::size_t vertexCount)
{
    const auto isOutOfRange = [vertexCount](const TriangleFace& face) {
        return std::any_of(std::begin(face.v), std::end(face.v), [vertexCount](int index) {
            return index < 0 || std::size_t(index) >= vertexCount;
        });
    };
    faces.erase(std::remove_if(faces.begin(), faces.end(), isOutOfRange), faces.end());
    return faces;
}

} // namespace

std::string DifferenceOf(const Mesh& mesh, const std::vector<MeshTextureGroup>& groups,
                         const PlainObj& expected)
{
    const std::vector<TriangleFace> faces = FacesInRange(expected.faces, expected.vertices.size());
    std::string difference =
        ListDifference("vertices", *mesh.GetVerticesVecPtr(), expected.vertices) +
        ListDifference("faces", *mesh.GetFacesVecPtr(), faces) +
        ListDifference("texCoords", *mesh.GetTexCoordVecPtr(), expected.texCoords) +
        ListDifference("texture faces", *mesh.GetTextureFacesVecPtr(), expected.textureFaces) +
        ListDifference("groups", groups, expected.groups);
    if (std::size_t(mesh.GetVertexNum()) != expected.vertices.size() ||
        std::size_t(mesh.GetFaceNum()) != faces.size())
        difference += "counts are not those of the lists; ";
    if (!IsSameNumber(mesh.GetVolume(), mesh.CalcuateVolume()))
        difference += "another volume is stored; ";
    return difference;
}

std::string DifferenceOf(const std::vector<MeshMaterialInfo>& materials,
                         const std::vector<MeshMaterialInfo>& expected)
{
    return ListDifference("materials", materials, expected);
}

} // namespace test
