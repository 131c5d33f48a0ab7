#pragma once

#include <set>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"

namespace test {

/// A model that deletes its meshes in the end, as its host has to.
class OwnedModel : public Model3MF {
public:
    OwnedModel() = default;
    OwnedModel(const OwnedModel&) = delete;
    OwnedModel& operator=(const OwnedModel&) = delete;
    ~OwnedModel()
    {
        const std::vector<Mesh*> objects = GetObjects();
        for (Mesh* const mesh : std::set<Mesh*>(objects.begin(), objects.end()))
            delete mesh;
    }

    const Mesh& Object(std::size_t i) const { return *GetObjects().at(i); }
};

} // namespace test
