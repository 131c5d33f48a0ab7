#pragma once

#include <vector>

#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"

/// Stitching as it is described, step by step, with lists that are searched from end to end: slow, and plain
/// enough to be checked by eye. The library must give the same faces, vertices and normals bit for bit.
struct PlainStitchResult {
    std::vector<Vector3D<float>> normals;
    std::vector<TriangleFace> faces;
    std::vector<Vector3D<float>> vertices;
    int linkedEdges = 0;   ///< half-edges with a partner
    int tolerantLinks = 0; ///< pairs linked by a tolerant pass
    int reachLinks = 0;    ///< pairs linked across the borders of cells
    int waitingEdges = 0;  ///< edges that found no partner at first when the borders of cells were crossed
    bool wasTurnedOver = false;
    float movedAtMost =
        0; ///< the longest way, on one axis, from where an edge lay when it was filed to where it was snapped
    float tolerance = 0; ///< the largest tolerance used
};

PlainStitchResult StitchPlainly(const std::vector<Vector3D<float>>& corners,
                                const std::vector<Vector3D<float>>& normals);
