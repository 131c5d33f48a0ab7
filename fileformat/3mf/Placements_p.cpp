#include "fileformat/3mf/Placements_p.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "core/mesh/Mesh.h"

namespace kr::package3mf {

Placements::~Placements()
{
    for (const Lot& lot : m_lots) {
        for (Mesh* const mesh : lot.meshes) {
            mesh->SetComponentsId(lot.componentsId);
            mesh->SetTransformMatrix(lot.matrix);
        }
    }
}

void Placements::PutIntoComponents(int objectId, int componentsId, const Matrix4<double>* transform)
{
    TakeNewMeshes();
    const auto named = m_byObjectId.find(objectId);
    if (named == m_byObjectId.end())
        return;
    for (Lot* const lot : named->second) {
        SetComponentsId(*lot, componentsId);
        if (transform)
            lot->matrix = *transform;
    }
    JoinAlike(named->second);
}

void Placements::Multiply(int id, const Matrix4<double>& transform)
{
    TakeNewMeshes();
    if (const auto named = m_byComponentsId.find(id); named != m_byComponentsId.end()) {
        for (Lot* const lot : named->second)
            MultiplyLot(*lot, transform);
    }
    if (const auto named = m_byObjectId.find(id); named != m_byObjectId.end()) {
        for (Lot* const lot : named->second) {
            if (lot->componentsId != id)
                MultiplyLot(*lot, transform);
        }
    }
}

// Equal matrices are not enough: 0 equals -0, but does not stay what it is in the same products.
bool Placements::AreAlike(const Lot& a, const Lot& b)
{
    return a.componentsId == b.componentsId && a.listings == b.listings &&
           std::memcmp(a.matrix.m, b.matrix.m, sizeof a.matrix.m) == 0;
}

void Placements::MultiplyLot(Lot& lot, const Matrix4<double>& transform)
{
    for (std::size_t i = 0; i < lot.listings; ++i)
        lot.matrix = lot.matrix * transform;
}

// Only a host lists a mesh twice, in front of all that are read.
void Placements::TakeNewMeshes()
{
    std::map<Mesh*, std::size_t> listings;
    for (std::size_t i = m_taken; i < m_meshes.size(); ++i)
        ++listings[m_meshes[i]];
    for (; m_taken < m_meshes.size(); ++m_taken) {
        const auto listed = listings.find(m_meshes[m_taken]);
        if (listed == listings.end())
            continue;
        Take(*listed->first, listed->second);
        listings.erase(listed);
    }
}

void Placements::Take(Mesh& mesh, std::size_t listings)
{
    Lots& lots = m_byObjectId[mesh.GetObjectID()];
    m_lots.push_back({mesh.GetComponentsId(), listings, mesh.GetTransformMatrix(), {}});
    Lot& lot = m_lots.back();
    if (!lots.empty() && AreAlike(*lots.back(), lot)) {
        lots.back()->meshes.push_back(&mesh);
        m_lots.pop_back();
        return;
    }
    lot.meshes.push_back(&mesh);
    lots.push_back(&lot);
    m_byComponentsId[lot.componentsId].insert(&lot);
}

void Placements::SetComponentsId(Lot& lot, int componentsId)
{
    if (lot.componentsId == componentsId)
        return;
    m_byComponentsId[componentsId].insert(&lot);
    m_byComponentsId[lot.componentsId].erase(&lot);
    lot.componentsId = componentsId;
}

// Looks at neighbours only: a component with a transform makes all lots of its object id alike, and hardly
// anything else makes two so.
void Placements::JoinAlike(Lots& lots)
{
    std::size_t kept = 0;
    for (std::size_t i = 1; i < lots.size(); ++i) {
        Lot& last = *lots[kept];
        Lot& next = *lots[i];
        if (!AreAlike(last, next)) {
            lots[++kept] = &next;
            continue;
        }
        last.meshes.insert(last.meshes.end(), next.meshes.begin(), next.meshes.end());
        next.meshes = {};
        m_byComponentsId[next.componentsId].erase(&next);
    }
    lots.resize(std::min(lots.size(), kept + 1));
}

} // namespace kr::package3mf
