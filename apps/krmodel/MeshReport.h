#pragma once

#include "apps/krmodel/Formats.h"
#include "apps/krmodel/Topology.h"

namespace krmodel {

/// What can be said of a model's surface.
struct MeshReport {
    qint64 facets = 0;
    qint64 vertices = 0;
    qint64 textureCoordinates = 0;
    qint64 textureFaces = 0;
    bool isTextureGood = true; ///< each mesh with texture faces holds a texture, see HoldsTexture()
    MeshBoundingBox bounds;
    double volume = 0; ///< of all meshes together, in cubed units of the file
    Topology topology;
};

MeshReport Measure(const Model& model);

} // namespace krmodel
