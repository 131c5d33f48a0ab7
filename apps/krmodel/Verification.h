#pragma once

#include <optional>

#include "apps/krmodel/Formats.h"

namespace krmodel {

/// Reads back what was written and compares it with what was to be written, rounded as the format rounds:
/// the number of facets, the bounds and the volume that they enclose together; of a format that keeps objects
/// those of each object, its placement, and how much there is of all else.
///
/// The volume is the sum over the facets, so that it tells of a surface with holes too whether a corner has
/// moved. Facets that fell together to a line by rounding count: they are in the file.
/// @return what differs, in words; nothing when the file is what it should be
std::optional<QString> FindDifference(const Format& format, const QString& fileName, const Model& written,
                                      Encoding encoding);

} // namespace krmodel
