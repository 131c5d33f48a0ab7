#pragma once

#include "apps/krmodel/Formats.h"

namespace krmodel {

/// Moves the vertices of each mesh to where its transform and the model's unit put them, in millimetres. They
/// are worked out in double precision and rounded once. Transforms are the identity then, the unit is the
/// millimetre; volumes, normals and neighbours belong to the new places. Faces of a mesh that its transform
/// mirrors are turned round: what was outside stays outside. A mesh that is where it belongs is not touched.
/// @return whether all coordinates that were finite still are
bool PlaceInMillimetres(Model& model);

/// A transform in words, lengths in the file's unit: "none" for the identity, "moved by 1 2 3, rotated by 90°
/// about z, scaled by 2, mirrored".
QString PlacementText(const Matrix4<double>& transform);

} // namespace krmodel
