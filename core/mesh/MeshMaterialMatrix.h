#pragma once

#include "core/math/Matrix4.h"
#include "core/math/Vector3D.h"
#include "core/mesh/KRCoreMeshExport.h"

/// How texture coordinates (u, v, w) become places in a picture, whose unit square is one whole picture.
struct KRCORE_MESH_EXPORT MeshMaterialMatrix {
    Vector3D<double> translation;              ///< in pictures
    Vector3D<double> rotation;                 ///< about the axes u, v, w, in degrees
    Vector3D<double> repeat = {1.0, 1.0, 1.0}; ///< pictures in one unit of the coordinates
    Matrix4<double> matrix;                    ///< as updateMatrix() last built it

    /// Builds the matrix from the other fields. A coordinate is turned about the picture's middle (1/2, 1/2,
    /// 0), about the first axis first, then multiplied by the repeat and last moved by the translation:
    ///
    ///     matrix = Translation * Scaling(repeat) * Middle * Rw * Rv * Ru * Middle^-1
    ///
    /// It is the coordinates that turn, counter-clockwise about w for positive degrees; the picture on the
    /// surface seems to turn the other way. It is never distorted, as it is turned before it is repeated.
    /// Multiples of 90 degrees are exact.
    void updateMatrix();
};
