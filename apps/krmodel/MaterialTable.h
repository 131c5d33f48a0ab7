#pragma once

#include "apps/krmodel/Formats.h"

namespace krmodel {

/// A line for each material name that the model's groups have: what it takes of the faces and how it looks.
/// Of very many only the first are shown and the others counted. Empty for a model without groups.
/// @param fileName  the model's; pictures are named as seen from its directory
QString MaterialTable(const Model& model, const QString& fileName);

} // namespace krmodel
