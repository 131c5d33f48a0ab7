#pragma once

#include <QImage>

#include "apps/krmodel/Camera.h"
#include "apps/krmodel/Formats.h"

namespace krmodel {

/// Draws a model as a lit, anti-aliased picture, z upwards, standing on a soft shadow. Works in memory alone:
/// no display, no graphics processor. The same model gives the same picture. Faces with an index outside the
/// vertices or a corner that is not finite are left out; the back of an open surface has a colour of its own.
/// Groups show their material's diffuse colour and texture, if it is certain which faces are theirs. Vertices
/// are drawn where they are: PlaceInMillimetres() comes first.
/// @param size both sides 1 or more
QImage RenderModel(const Model& model, const View& view, QSize size);

} // namespace krmodel
