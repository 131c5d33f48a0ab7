#pragma once

#include <QImage>

#include "apps/krmodel/Camera.h"
#include "apps/krmodel/Formats.h"
#include "apps/krmodel/Look.h"

namespace krmodel {

/// Draws a model as a lit, anti-aliased picture, z upwards, standing on a soft shadow. Works in memory alone:
/// no display, no graphics processor. The same model gives the same picture. Faces with an index outside the
/// vertices or a corner that is not finite are left out; the back of an open surface has a colour of its own.
/// Groups show their material's diffuse colour and texture, if it is certain which faces are theirs. Vertices
/// are drawn where they are: PlaceInMillimetres() comes first.
/// Several objects differ in colour: each name has its own, as has each object without a name. They are the
/// package's colours, if it has any, in their order: which one is whose the library does not tell.
/// @param size both sides 1 or more
/// @return QImage::Format_RGB32, or Format_ARGB32 before a transparent background
QImage RenderModel(const Model& model, const View& view, QSize size, const Background& background = {});

} // namespace krmodel
