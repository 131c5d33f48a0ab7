#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <set>
#include <vector>

#include "core/math/Matrix4.h"

class Mesh;

namespace kr::package3mf {

/// Gives meshes the components ids and matrices that components and items of builds say.
///
/// Each of these names all meshes of an id, and a document of one megabyte may do so 50,000 times for 50,000
/// meshes. So meshes of one object id that have the same components id and matrix make a lot, which is placed
/// as one; lots that become alike are joined. The meshes themselves get what has come together when this
/// object ends: until then nobody else may look at their ids and matrices, or change them.
class Placements {
public:
    /// @param meshes  may grow at its end meanwhile
    explicit Placements(const std::vector<Mesh*>& meshes) : m_meshes(meshes) {}
    Placements(const Placements&) = delete;
    Placements& operator=(const Placements&) = delete;
    ~Placements();

    /// Makes the meshes with an object id part of components.
    /// @param transform  replaces their matrices; null leaves them as they are
    void PutIntoComponents(int objectId, int componentsId, const Matrix4<double>* transform);
    /// Multiplies the matrices of all meshes with this object id or components id from the right.
    void Multiply(int id, const Matrix4<double>& transform);

private:
    struct Lot {
        int componentsId;
        std::size_t listings; ///< how often the host lists each of the meshes
        Matrix4<double> matrix;
        std::vector<Mesh*> meshes;
    };
    using Lots = std::vector<Lot*>;

    static bool AreAlike(const Lot& a, const Lot& b);
    static void MultiplyLot(Lot& lot, const Matrix4<double>& transform);
    void TakeNewMeshes();
    void Take(Mesh& mesh, std::size_t listings);
    void SetComponentsId(Lot& lot, int componentsId);
    void JoinAlike(Lots& lots);

    const std::vector<Mesh*>& m_meshes;
    std::size_t m_taken = 0;
    std::deque<Lot> m_lots;
    std::map<int, Lots> m_byObjectId;
    std::map<int, std::set<Lot*>> m_byComponentsId;
};

} // namespace kr::package3mf
