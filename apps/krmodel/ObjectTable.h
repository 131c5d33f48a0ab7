#pragma once

#include "apps/krmodel/Formats.h"

namespace krmodel {

/// A line for each of the first objects: id, the components object that it is part of, if any object is part
/// of one, name, facets, placement in the file's unit.
QString ObjectTable(const Model& model);

/// A line for each of the first entries; empty when there is none.
QString MetadataTable(const Model& model);

} // namespace krmodel
