#pragma once

#include <vector>

#include "core/mesh/Mesh.h"

namespace krmodel {

/// What a format does to the coordinates that it is given.
enum class Rounding {
    None,        ///< keeps all bits
    SixDecimals, ///< six digits behind the point
    SixDigits,   ///< six significant digits
};

/// The number that comes back, ties being rounded away from zero; what is not finite stays.
float Rounded(float value, Rounding rounding);

/// The mesh's vertices as they come back.
std::vector<Vector3D<float>> RoundedVertices(const Mesh& mesh, Rounding rounding);

} // namespace krmodel
