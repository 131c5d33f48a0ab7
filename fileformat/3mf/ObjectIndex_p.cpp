#include "fileformat/3mf/ObjectIndex_p.h"

#include <algorithm>

#include "core/mesh/Mesh.h"

namespace kr::package3mf {

namespace {

const std::vector<Mesh*>& Find(const std::map<int, std::vector<Mesh*>>& meshes, int id)
{
    static const std::vector<Mesh*> kNone;
    const auto found = meshes.find(id);
    return found == meshes.end() ? kNone : found->second;
}

} // namespace

ObjectIndex::ObjectIndex(const std::vector<Mesh*>& meshes)
{
    for (Mesh* const mesh : meshes)
        Add(*mesh);
}

void ObjectIndex::Add(Mesh& mesh)
{
    m_meshes.push_back(&mesh);
    m_byObjectId[mesh.GetObjectID()].push_back(&mesh);
    m_componentsChanged = true;
}

const std::vector<Mesh*>& ObjectIndex::WithObjectId(int id) const
{
    return Find(m_byObjectId, id);
}

void ObjectIndex::SetComponentsId(int objectId, int componentsId)
{
    for (Mesh* const mesh : WithObjectId(objectId)) {
        mesh->SetComponentsId(componentsId);
        m_componentsChanged = true;
    }
}

std::vector<Mesh*> ObjectIndex::WithEitherId(int id)
{
    // Components ids change while resources are read, and are asked for while the build is.
    if (m_componentsChanged) {
        m_byComponentsId.clear();
        for (Mesh* const mesh : m_meshes)
            m_byComponentsId[mesh->GetComponentsId()].push_back(mesh);
        m_componentsChanged = false;
    }
    std::vector<Mesh*> meshes = Find(m_byComponentsId, id);
    for (Mesh* const mesh : WithObjectId(id)) {
        if (mesh->GetComponentsId() != id)
            meshes.push_back(mesh);
    }
    return meshes;
}

} // namespace kr::package3mf
