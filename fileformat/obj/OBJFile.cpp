#include "fileformat/obj/OBJFile.h"

#include <algorithm>

#include <QFile>

#include "core/mesh/Mesh.h"
#include "core/utility/Utility.h"
#include "fileformat/common/PlainFile_p.h"
#include "fileformat/obj/OBJText_p.h"

namespace {

using kr::obj::Content;
using Materials = std::vector<MeshMaterialInfo>;

// The materials by their names; the first of equal names wins.
class MaterialIndex {
public:
    explicit MaterialIndex(const Materials& materials)
    {
        m_sorted.reserve(materials.size());
        for (const MeshMaterialInfo& material : materials)
            m_sorted.push_back(&material);
        std::stable_sort(m_sorted.begin(), m_sorted.end(),
                         [](const auto* a, const auto* b) { return a->name < b->name; });
    }
    const MeshMaterialInfo* Find(const std::string& name) const
    {
        const auto found = std::lower_bound(
            m_sorted.begin(), m_sorted.end(), name,
            [](const auto* material, const std::string& key) { return material->name < key; });
        return found != m_sorted.end() && (*found)->name == name ? *found : nullptr;
    }

private:
    std::vector<const MeshMaterialInfo*> m_sorted;
};

// Of several libraries only the last one counts, so the others need not be read.
void AddMaterials(Content& content, const QString& fileName, int textureLoadOption)
{
    Materials materials;
    if (content.materialLibrary.isEmpty() ||
        !OBJFile::LoadMTLFile(Utility::GetFilePath(fileName) + content.materialLibrary, materials,
                              textureLoadOption))
        return;
    const MaterialIndex index(materials);
    for (MeshTextureGroup& group : content.groups) {
        if (const MeshMaterialInfo* const material = index.Find(group.material.name))
            group.material = *material;
    }
}

void FillMesh(Mesh& mesh, Content& content, bool provideSurfaceData)
{
    mesh.GetVerticesVecPtr()->swap(content.vertices);
    mesh.GetFacesVecPtr()->swap(content.faces);
    mesh.GetTexCoordVecPtr()->swap(content.texCoords);
    mesh.GetTextureFacesVecPtr()->swap(content.textureFaces);
    Mesh::ValidateVertexAndFaces(*mesh.GetFacesVecPtr(), *mesh.GetVerticesVecPtr());
    mesh.PostProcessFromVertexBuffer(nullptr, false, false, provideSurfaceData, provideSurfaceData, nullptr,
                                     nullptr);
    mesh.SetVolume(mesh.CalcuateVolume());
}

} // namespace

bool OBJFile::LoadFile(const QString& fileName, Mesh& mesh, std::vector<MeshTextureGroup>& textureGroups,
                       bool clearPostProcessFlags, int textureLoadOption)
{
    textureGroups.clear();
    QFile file(fileName);
    if (!kr::OpenForReading(file))
        return false;
    mesh.Cleanup();
    Content content = kr::obj::ReadText(file);
    file.close();
    AddMaterials(content, fileName, textureLoadOption);
    FillMesh(mesh, content, !clearPostProcessFlags);
    textureGroups.swap(content.groups);
    return true;
}
