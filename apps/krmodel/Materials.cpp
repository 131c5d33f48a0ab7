#include "apps/krmodel/Materials.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace krmodel {

namespace {

bool HasFaces(const MeshTextureGroup& group)
{
    return group.firstFaceIndex >= 0;
}

/// Where the groups begin in the list of faces; none when they do not end where it does. A group's own first
/// index may count in the list of texture faces instead: only the first group's is looked at, before which
/// there are faces of one kind as a rule.
std::optional<qint64> BeginOfGroups(const Model& model)
{
    std::optional<qint64> begin;
    qint64 count = 0;
    for (const MeshTextureGroup& group : model.groups) {
        if (!HasFaces(group))
            continue;
        if (group.faceCount < 0)
            return std::nullopt;
        begin = begin.value_or(group.firstFaceIndex);
        count += group.faceCount;
    }
    const qint64 end = model.meshes.empty() ? 0 : qint64(model.meshes[0]->GetFacesVecPtr()->size());
    return begin && *begin + count == end ? begin : std::nullopt;
}

void Add(MaterialUse& use, const MeshTextureGroup& group, std::optional<qint64> firstFaceIndex)
{
    ++use.groupCount;
    if (!HasFaces(group))
        return;
    use.faceCount += group.faceCount;
    if (!use.firstFaceIndex)
        use.firstFaceIndex = firstFaceIndex;
}

} // namespace

std::vector<MaterialUse> SumUpByName(const Model& model)
{
    std::vector<MaterialUse> uses;
    std::unordered_map<std::string_view, size_t> indexOfName;
    std::optional<qint64> face = BeginOfGroups(model);
    for (const MeshTextureGroup& group : model.groups) {
        const auto [found, isNew] = indexOfName.try_emplace(group.material.name, uses.size());
        if (isNew)
            uses.emplace_back().material = &group.material;
        Add(uses[found->second], group, face);
        if (face && HasFaces(group))
            *face += group.faceCount;
    }
    return uses;
}

bool IsDescribed(const MeshMaterialInfo& material)
{
    const MeshMaterialInfo silent;
    return material.hasAmbient || material.hasDiffuse || material.hasSpecular || material.hasEmissive ||
           material.illum != silent.illum || material.specularExponent != silent.specularExponent ||
           material.refractionIndex != silent.refractionIndex || material.opacity != silent.opacity ||
           !TexturesOf(material).empty();
}

std::vector<MaterialTexture> TexturesOf(const MeshMaterialInfo& material)
{
    const MaterialTexture all[] = {{"diffuse", &material.diffuseTexture},
                                   {"emissive", &material.emissiveTexture},
                                   {"opacity", &material.opacityTexture},
                                   {"bump", &material.bumpTexture}};
    std::vector<MaterialTexture> textures;
    for (const MaterialTexture& texture : all)
        if (!texture.texture->fileName.isEmpty())
            textures.push_back(texture);
    return textures;
}

std::vector<int> GroupOfEachFace(const Model& model)
{
    const std::optional<qint64> begin = BeginOfGroups(model);
    if (!begin)
        return {};
    std::vector<int> groupOfFace(size_t(*begin), -1);
    groupOfFace.reserve(model.meshes[0]->GetFacesVecPtr()->size());
    for (size_t i = 0; i < model.groups.size(); ++i)
        if (HasFaces(model.groups[i]))
            groupOfFace.insert(groupOfFace.end(), size_t(model.groups[i].faceCount), int(i));
    return groupOfFace;
}

bool HoldsTexture(const Mesh& mesh)
{
    const std::vector<TriangleFace>& textureFaces = *mesh.GetTextureFacesVecPtr();
    const size_t coordinates = mesh.GetTexCoordVecPtr()->size();
    const auto isGood = [coordinates](int index) { return index >= 0 && size_t(index) < coordinates; };
    return !textureFaces.empty() && textureFaces.size() == mesh.GetFacesVecPtr()->size() &&
           std::all_of(textureFaces.begin(), textureFaces.end(), [&](const TriangleFace& face) {
               return std::all_of(std::begin(face.v), std::end(face.v), isGood);
           });
}

} // namespace krmodel
