#pragma once

#include "core/math/Vector4D.h"
#include "core/mesh/MeshMaterialMatrix.h"

/// How a texture picture is laid on a surface. Plain value.
struct MeshMaterialParameters {
    /// What texture coordinates beyond the picture show.
    enum Wrap : int {
        Repeat = 0,        ///< the picture again
        Mirror = 1,        ///< the picture again, every other one mirrored
        ClampToEdge = 2,   ///< the nearest pixel of the picture's edge
        ClampToBorder = 3, ///< the border colour
    };

    int wrapS = Repeat; ///< along u
    int wrapT = Repeat; ///< along v
    /// r, g, b, a, each 0..1; transparent black shows the surface itself.
    Vector4D<float> borderColor;
    MeshMaterialMatrix matrix; ///< where on the surface the picture lies
};
