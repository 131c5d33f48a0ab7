#pragma once

#include <vector>

#include <QtGlobal>

#include "core/mesh/Mesh.h"

namespace krmodel {

/// How often something was found, and where first: two points for an edge, three for a facet, one for a
/// vertex or a piece.
struct Finding {
    qint64 count = 0;
    std::vector<Vector3D<float>> first;
    size_t object = 0; ///< that holds the first one, counted from 0

    /// Counts @p more; where it is first is kept when this is the first one.
    void Add(qint64 more, std::vector<Vector3D<float>> where, size_t inObject = 0);
};

/// How the facets of a model hang together. Corners in the same place are one, whatever their numbers, but
/// facets of different objects have nothing to do with each other. A facet that has a corner twice has no
/// edges and belongs to no piece.
struct Topology {
    Finding openEdges;        ///< of one facet
    Finding crowdedEdges;     ///< of more than two facets
    Finding twistedEdges;     ///< of two facets that do not agree which side is outside
    Finding degenerateFacets; ///< a corner twice, or corners on one line
    Finding inwardPieces;     ///< all edges in order, but the outside is within; cavities are others
    Finding cavities;         ///< the same, within one of the hundred largest pieces that face outwards
    Finding strayVertices;    ///< not finite, and the corner of a facet
    Finding emptyObjects;     ///< without facets
    qint64 pieces = 0;        ///< sets of facets that hang together by edges
};

/// Looks through one object. Linear, but that the edges which end in one vertex are sorted. Facets with an
/// index outside the vertices count nowhere.
Topology Examine(const Mesh& mesh);

/// Takes up what was found in a further object.
void Add(Topology& topology, const Topology& other, size_t object);

} // namespace krmodel
