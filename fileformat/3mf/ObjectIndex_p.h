#pragma once

#include <map>
#include <vector>

class Mesh;

namespace kr::package3mf {

/// Finds meshes by their ids in logarithmic time, all meshes of an id, in their order. Holds as long as
/// nobody else changes the ids.
class ObjectIndex {
public:
    explicit ObjectIndex(const std::vector<Mesh*>& meshes);

    void Add(Mesh& mesh);
    const std::vector<Mesh*>& WithObjectId(int id) const;
    /// Gives the meshes with an object id a components id.
    void SetComponentsId(int objectId, int componentsId);
    /// The meshes with this object id or components id, none twice.
    std::vector<Mesh*> WithEitherId(int id);

private:
    std::vector<Mesh*> m_meshes;
    std::map<int, std::vector<Mesh*>> m_byObjectId;
    std::map<int, std::vector<Mesh*>> m_byComponentsId;
    bool m_componentsChanged = true;
};

} // namespace kr::package3mf
