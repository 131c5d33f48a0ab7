#pragma once

#include "apps/krmodel/Formats.h"

namespace krmodel {

/// What becomes of the objects' transforms.
enum class Placing {
    Apply, ///< they carry the vertices to their places and are the identity then
    Keep,  ///< they stay
    Drop,  ///< they are the identity, the vertices stay
};

/// Gives the model another unit: all lengths are worked out in double precision and rounded once. Volumes,
/// normals and neighbours belong to the new places. Faces of a mesh that its transform mirrors are turned
/// round as it is applied: what was outside stays outside. A mesh that is where it belongs is not touched.
/// @return whether all coordinates that were finite still are
bool Place(Model& model, Placing placing, const Unit& unit);

/// Makes one object of all, with the first one's name. Texture coordinates are kept of a single object alone.
/// @return false, with nothing changed, when it would be larger than a mesh can be
bool MergeObjects(Model& model);

/// Applies all transforms, with the millimetre as unit.
/// @return as Place()
bool PlaceInMillimetres(Model& model);

/// A transform in words, lengths in the file's unit: "none" for the identity, "moved by 1 2 3, rotated by 90°
/// about z, scaled by 2, mirrored".
QString PlacementText(const Matrix4<double>& transform);

} // namespace krmodel
