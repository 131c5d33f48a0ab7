#pragma once

#include <algorithm>
#include <numeric>
#include <vector>

#include <Eigen/Geometry>

#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"

namespace krmodel {

/// Sets of facets, each known by the first of its facets.
class FacetSets {
public:
    explicit FacetSets(size_t count) : m_parents(count) { std::iota(m_parents.begin(), m_parents.end(), 0); }

    int SetOf(int facet)
    {
        while (m_parents[size_t(facet)] != facet) {
            int& parent = m_parents[size_t(facet)];
            parent = m_parents[size_t(parent)];
            facet = parent;
        }
        return facet;
    }

    void Join(int facet, int other)
    {
        const int set = SetOf(facet), otherSet = SetOf(other);
        m_parents[size_t(std::max(set, otherSet))] = std::min(set, otherSet);
    }

private:
    std::vector<int> m_parents;
};

/// Facets that hang together by edges.
struct Piece {
    int firstFacet = 0;
    Eigen::Vector3d corner; ///< one of its corners
    double volume = 0;      ///< signed; positive when the facets face outwards
    Eigen::AlignedBox3d box;
    bool isInOrder = true; ///< each edge has two facets that agree which side is outside

    /// A flat piece may seem to enclose what rounding leaves.
    bool HasVolume() const;
    bool FacesInwards() const { return isInOrder && volume < 0 && HasVolume(); }
};

struct Pieces {
    std::vector<Piece> list;  ///< in the order of their first facets
    std::vector<int> pieceOf; ///< by facet: its place in the list; -1 for a facet that belongs to none
};

/// @param facets    (-1, -1, -1) belongs to no piece
/// @param isBroken  by facet: an edge of it is not in order
Pieces CollectPieces(const std::vector<Vector3D<float>>& vertices, const std::vector<TriangleFace>& facets,
                     FacetSets& sets, const std::vector<bool>& isBroken);

/// The pieces that face inwards, in two lists: those within one of the hundred largest that face outwards,
/// which are cavities, and the others. Pieces do not pass through each other in what is drawn well, so one
/// corner tells for all of a piece.
struct InwardPieces {
    std::vector<const Piece*> cavities;
    std::vector<const Piece*> others;
};
InwardPieces FindInwardPieces(const Pieces& pieces, const std::vector<Vector3D<float>>& vertices,
                              const std::vector<TriangleFace>& facets);

} // namespace krmodel
